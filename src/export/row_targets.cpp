#include "export/row_targets.h"

#include <algorithm>

namespace vtk_export {

namespace {

// The rows of one block, whose first stored row has the number `offset`.
void addBlock(const odbstore::StoredBlock& block, std::int64_t offset, const inspect::ModelMesh& mesh,
              Association association, std::optional<int> point, RowTargets& targets) {
  const odbstore::StoredLocation& location = *block.location();
  const bool isAtPoints = association == Association::points;
  const std::vector<int>& labels = isAtPoints ? location.nodeLabels() : location.elementLabels();
  const std::vector<int>* const points = point ? &location.integrationPoints() : nullptr;
  const inspect::MeshPart* const part = mesh.partOf(location.info().instance);
  const auto begin = static_cast<std::int64_t>(part == nullptr ? 0 : isAtPoints ? part->firstPoint : part->firstCell);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (points != nullptr && (*points)[i] != *point) continue;
    const int place = part == nullptr ? -1 : (isAtPoints ? part->nodes : part->elements).placeOf(labels[i]);
    if (place < 0) {
      ++targets.lost;
      continue;
    }
    const std::int64_t row = offset + (location.isIndexed() ? location.rowOf()[i] : static_cast<std::int64_t>(i));
    std::int64_t& first = targets.first[static_cast<std::size_t>(begin + place)];
    if (first < 0) {
      first = row;
    } else if (first != row) {
      targets.others.emplace_back(begin + place, row);
    }
  }
}

}  // namespace

Association associationOf(odbstore::Position position) {
  return odbstore::hasNodeLabels(position) ? Association::points : Association::cells;
}

RowTargets rowTargets(const std::vector<const odbstore::StoredBlock*>& blocks, const inspect::ModelMesh& mesh,
                      Association association, std::optional<int> point) {
  RowTargets targets;
  targets.first.assign(association == Association::points ? mesh.nodeLabels.size() : mesh.elementLabels.size(), -1);
  std::int64_t offset = 0;
  for (const odbstore::StoredBlock* block : blocks) {
    addBlock(*block, offset, mesh, association, point, targets);
    offset += block->storedRows();
  }
  std::sort(targets.others.begin(), targets.others.end());
  targets.others.erase(std::unique(targets.others.begin(), targets.others.end()), targets.others.end());
  return targets;
}

}  // namespace vtk_export
