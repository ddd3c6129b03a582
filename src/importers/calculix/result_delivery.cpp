#include "importers/calculix/result_delivery.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <span>
#include <tuple>

#include "base/label_index.h"
#include "importers/calculix/deck/element_kinds.h"
#include "importers/calculix/frd/element_codes.h"

namespace importers::calculix {

namespace {

using Rows = base::UnfilledVector<float>;

// A row is read before any of it is written over, so that `out` may be the block's own values. The compiler makes a
// loop of a few instructions of a width that it knows.
template <std::size_t kColumns>
void takeColumns(const FrdResult& block, const std::vector<int>& columns, float* out) {
  std::array<int, kColumns> from{};
  std::copy_n(columns.begin(), kColumns, from.begin());
  const std::size_t width = block.components.size();
  const float* row = block.values.data();
  for (std::size_t i = 0; i < block.labels.size(); ++i, row += width, out += kColumns) {
    std::array<float, kColumns> taken;
    for (std::size_t column = 0; column < kColumns; ++column) taken[column] = row[from[column]];
    std::copy(taken.begin(), taken.end(), out);
  }
}

void takeColumns(const FrdResult& block, const std::vector<int>& columns, float* out) {
  switch (columns.size()) {
    case 1:
      return takeColumns<1>(block, columns, out);
    case 3:
      return takeColumns<3>(block, columns, out);
    case 6:
      return takeColumns<6>(block, columns, out);
    default:
      break;
  }
  const std::size_t width = block.components.size();
  std::vector<float> taken(columns.size());
  for (std::size_t i = 0; i < block.labels.size(); ++i, out += columns.size()) {
    const float* const row = block.values.data() + i * width;
    std::transform(columns.begin(), columns.end(), taken.begin(), [&](int column) { return row[column]; });
    std::copy(taken.begin(), taken.end(), out);
  }
}

bool areAllInPlace(const FrdResult& block, const std::vector<int>& columns) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] != static_cast<int>(i)) return false;
  }
  return columns.size() == block.components.size();
}

// The chosen columns of all rows of a block, in `room` where they are not all that the block has.
std::span<const float> takenColumns(const FrdResult& block, const std::vector<int>& columns, Rows& room) {
  if (areAllInPlace(block, columns)) return block.values;
  room.resize(block.labels.size() * columns.size());
  takeColumns(block, columns, room.data());
  return room;
}

// Elements by the deck's names for their types, where it has one and the solver has not turned the element into another
// (shells and beams are written as solids).
class GroupsByType {
 public:
  explicit GroupsByType(const DeckMesh& mesh) : mesh_(mesh), ofDeck_(mesh.elementLabels) {}

  std::vector<ElementGroup> of(const FrdElementGroup& source) const {
    std::vector<ElementGroup> groups;
    const auto width = static_cast<std::size_t>(source.nodesPerElement);
    for (std::size_t i = 0; i < source.labels.size(); ++i) {
      ElementGroup& group = groupOf(groups, source, source.labels[i]);
      group.labels.push_back(source.labels[i]);
      const auto first = source.connectivity.begin() + static_cast<std::ptrdiff_t>(i * width);
      group.connectivity.insert(group.connectivity.end(), first, first + source.nodesPerElement);
    }
    return groups;
  }

 private:
  ElementGroup& groupOf(std::vector<ElementGroup>& groups, const FrdElementGroup& source, int label) const {
    std::string type = elementCode(source.code).name;
    bool hasTensors = true;
    if (const int place = ofDeck_.placeOf(label); place >= 0) {
      const int number = mesh_.typeOfElement[static_cast<std::size_t>(place)];
      const std::string& name = mesh_.elementTypes[static_cast<std::size_t>(number)];
      const ElementKind kind = elementKind(name);
      if (kind.nodes == source.nodesPerElement) {
        type = name;
        hasTensors = kind.hasTensors();
      }
    }
    const auto known =
        std::find_if(groups.rbegin(), groups.rend(), [&](const ElementGroup& group) { return group.type == type; });
    if (known != groups.rend()) return *known;
    groups.push_back({type, source.nodesPerElement, hasTensors, {}, {}});
    return groups.back();
  }

  const DeckMesh& mesh_;
  base::LabelIndex ofDeck_;
};

}  // namespace

ResultDelivery::ResultDelivery(const std::string& path, const Deck& deck, const Plan& plan,
                               const std::set<std::size_t>& leftOut, Sink& sink)
    : path_(path), deck_(deck), plan_(plan), leftOut_(leftOut), sink_(sink) {
  for (const PeakTarget& peak : plan.peaks) {
    if (!sink.takes(peak.rows)) continue;
    peaksOf_.emplace(peak.real, &peak);
    peaksOf_.emplace(peak.imaginary, &peak);
  }
}

void ResultDelivery::run(const ProgressSink& progress) {
  FrdReader reader(path_);
  const ResultFilter isWanted = [this](const FrdResult& result) { return startResult(result.ordinal); };
  const LeaveOut leaveOut = [this](std::size_t ordinal, const ImportError&) { return leftOut_.contains(ordinal); };
  while (std::optional<FrdBlock> block = reader.next(isWanted, leaveOut)) {
    std::visit([this](auto& content) { take(content); }, *block);
    if (progress) progress(reader.offset(), reader.size());
  }
}

void ResultDelivery::take(const FrdNodes& nodes) { sink_.nodes(nodes.labels, nodes.coordinates, {path_, nodes.line}); }

void ResultDelivery::take(const FrdElements& elements) {
  if (sink_.hasElements()) throw ImportError(path_, elements.line, "a second model in one file cannot be imported");
  const GroupsByType groups(deck_.mesh);
  for (const FrdElementGroup& source : elements.groups) {
    for (const ElementGroup& group : groups.of(source)) sink_.elements(group, {path_, elements.line});
  }
}

bool ResultDelivery::startResult(std::size_t ordinal) {
  targets_.clear();
  if (const auto targets = plan_.results.find(ordinal); targets != plan_.results.end()) {
    for (const Target& target : targets->second) {
      if (sink_.takes(target.rows)) targets_.push_back(&target);
    }
  }
  return !targets_.empty() || peaksOf_.contains(ordinal);
}

std::span<const float> ResultDelivery::rowsFor(const Target& target, FrdResult& block) {
  const std::vector<int>& columns = target.field->columns;
  const bool isNeededOnce = targets_.size() == 1 && !peaksOf_.contains(block.ordinal);
  if (!isNeededOnce || columns.size() > block.components.size()) return takenColumns(block, columns, rows_);
  if (!areAllInPlace(block, columns)) takeColumns(block, columns, block.values.data());
  return std::span<const float>(block.values).first(block.labels.size() * columns.size());
}

void ResultDelivery::take(FrdResult& block) {
  if (!sink_.hasNodes()) throw ImportError(path_, block.line, "results come before the nodes that they belong to");
  if (block.labels.empty()) return;
  for (const Target* const target : targets_) {
    std::span<const int> labels = block.labels;
    std::span<const float> rows = rowsFor(*target, block);
    if (target->at != RowsAt::allNodes) std::tie(labels, rows) = keptRows(*target, labels, rows);
    sink_.rows(target->rows, odbstore::Position::nodal, {labels, {}, {}}, rows, {path_, block.line});
  }
  takePeaks(block);
}

std::pair<std::span<const int>, std::span<const float>> ResultDelivery::keptRows(const Target& target,
                                                                                 std::span<const int> labels,
                                                                                 std::span<const float> rows) {
  const std::vector<int>& local = deck_.localAxes.nodes;
  const std::size_t width = target.field->columns.size();
  keptLabels_.clear();
  kept_.clear();
  for (std::size_t row = 0; row < labels.size(); ++row) {
    const bool isLocal = std::binary_search(local.begin(), local.end(), labels[row]);
    if (isLocal != (target.at == RowsAt::nodesWithLocalAxes)) continue;
    const auto values = rows.subspan(row * width, width);
    keptLabels_.push_back(labels[row]);
    kept_.insert(kept_.end(), values.begin(), values.end());
  }
  return {keptLabels_, kept_};
}

void ResultDelivery::takePeaks(const FrdResult& block) {
  const std::size_t ordinal = block.ordinal;
  const auto [first, last] = peaksOf_.equal_range(ordinal);
  for (auto at = first; at != last; ++at) {
    const PeakTarget& target = *at->second;
    if (target.real == ordinal) {
      real_.insert_or_assign(ordinal, block);
      continue;
    }
    const FrdResult& real = real_.at(target.real);
    if (real.labels != block.labels) {
      throw ImportError(path_, block.line, fmt::format("{} has rows for other nodes than {}", block.name, real.name));
    }
    const std::vector<float> largest =
        peaks(target.peak.kind, takenColumns(real, target.peak.columns, rows_),
              takenColumns(block, target.peak.columns, imaginaryRows_), target.peak.columns.size());
    sink_.rows(target.rows, odbstore::Position::nodal, {block.labels, {}, {}}, std::span<const float>(largest),
               {path_, block.line});
  }
  std::erase_if(real_, [&](const auto& known) {
    return std::none_of(peaksOf_.begin(), peaksOf_.end(), [&](const auto& peak) {
      return peak.second->real == known.first && peak.second->imaginary > ordinal;
    });
  });
}

void checkAllRows(const std::string& path, const LeaveOut& leaveOut) {
  FrdReader reader(path);
  while (const std::optional<FrdBlock> block = reader.next({}, leaveOut)) {
    const auto* const result = std::get_if<FrdResult>(&*block);
    if (result == nullptr) continue;
    const std::optional<int> twice = base::LabelIndex(result->labels).repeated();
    if (!twice) continue;
    const ImportError error(path, result->line, fmt::format("{} has two rows for the node {}", result->name, *twice));
    if (!leaveOut(result->ordinal, error)) throw ImportError(error);
  }
}

}  // namespace importers::calculix
