#include "export/field_arrays.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <set>

namespace vtk_export {

namespace {

using odbstore::FieldType;
using odbstore::StoredBlock;

// What columns are called where the database does not say.
std::vector<std::string> usualLabels(int type, std::size_t width) {
  static const std::vector<std::string> vector = {"1", "2", "3"};
  static const std::vector<std::string> full = {"11", "22", "33", "12", "13", "23"};
  static const std::vector<std::string> surface = {"11", "22", "12"};
  std::vector<std::string> labels;
  if (FieldType{type} == FieldType::vector) labels = vector;
  if (odbstore::isTensorType(type)) {
    const bool isSurface =
        FieldType{type} == FieldType::tensor3dSurface || FieldType{type} == FieldType::tensor2dSurface;
    labels = isSurface ? surface : full;
  }
  for (std::size_t i = labels.size(); i < width; ++i) labels.push_back(std::to_string(i + 1));
  labels.resize(width);
  return labels;
}

std::vector<std::string> labelsOf(const StoredBlock& block) {
  const auto width = static_cast<std::size_t>(block.width());
  if (block.componentLabels().size() == width) return block.componentLabels();
  return usualLabels(block.type(), width);
}

std::string lastTwo(const std::string& label) { return label.size() < 2 ? label : label.substr(label.size() - 2); }

// The order of a full tensor in VTK (vtkDataSetAttributes: XX, YY, ZZ, XY, YZ, XZ); others stay as they are.
void orderTensor(std::vector<std::string>& labels) {
  static constexpr std::array<const char*, 6> kOrder = {"11", "22", "33", "12", "23", "13"};
  if (labels.size() != kOrder.size()) return;
  std::vector<std::string> ordered;
  for (const char* const end : kOrder) {
    const auto found =
        std::find_if(labels.begin(), labels.end(), [&](const std::string& l) { return lastTwo(l) == end; });
    if (found == labels.end()) return;
    ordered.push_back(*found);
  }
  labels = ordered;
}

bool sameBits(const double* a, const double* b, std::size_t count) {
  return std::memcmp(a, b, count * sizeof(double)) == 0;
}

}  // namespace

FieldArrays::FieldArrays(const odbstore::StoredField& field, const inspect::ModelMesh& mesh,
                         const std::vector<int>& frames, bool withEachPoint)
    : field_(field), mesh_(mesh) {
  makeGroups(withEachPoint);
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    infos_.push_back(infoOf(groups_[i]));
    infos_[i].isMean = differs(i, frames);
    if (infos_[i].isMean) infos_[i].name += " (mean)";
    if (!groups_[i].point) lost_ += groups_[i].targets.lost;
  }
}

void FieldArrays::makeGroups(bool withEachPoint) {
  const auto groupOf = [&](const StoredBlock& block, std::optional<int> point) -> Group& {
    const odbstore::LocationInfo info = block.location()->info();
    for (Group& group : groups_) {
      if (group.position == info.position && group.sectionPoint == info.sectionPoint &&
          group.sectionPointDescription == info.sectionPointDescription && group.point == point)
        return group;
    }
    return groups_.emplace_back(
        Group{info.position, info.sectionPoint, info.sectionPointDescription, point, {}, {}, {}});
  };
  for (std::size_t i = 0; i < field_.blocks.size(); ++i) {
    const StoredBlock& block = field_.blocks[i];
    groupOf(block, {}).blocks.push_back(i);
    if (!withEachPoint || !odbstore::hasIntegrationPoints(block.location()->position())) continue;
    const std::vector<int>& all = block.location()->integrationPoints();
    for (const int point : std::set<int>(all.begin(), all.end())) groupOf(block, point).blocks.push_back(i);
  }
}

std::string FieldArrays::nameOf(const Group& group) const {
  std::string name = field_.name;
  const auto isOther = [&](const Group& other) {
    return other.sectionPoint != group.sectionPoint || other.sectionPointDescription != group.sectionPointDescription;
  };
  if (std::any_of(groups_.begin(), groups_.end(), isOther)) {
    name += group.sectionPointDescription.empty() ? fmt::format(" [section point {}]", group.sectionPoint)
                                                  : fmt::format(" [{}]", group.sectionPointDescription);
  }
  const auto hasItsPlace = [&](const Group& other) {
    return other.position != group.position && associationOf(other.position) == associationOf(group.position);
  };
  if (std::any_of(groups_.begin(), groups_.end(), hasItsPlace))
    name += fmt::format(" at {}", odbstore::positionWord(group.position));
  if (group.point) name += fmt::format(" point {}", *group.point);
  return name;
}

ArrayInfo FieldArrays::infoOf(const Group& group) const {
  ArrayInfo info = {nameOf(group), associationOf(group.position), {}, false, false};
  for (const std::size_t i : group.blocks) {
    const StoredBlock& block = field_.blocks[i];
    info.isDouble = info.isDouble || block.isDouble();
    for (const std::string& label : labelsOf(block)) {
      const bool isKnown = std::find(info.components.begin(), info.components.end(), label) != info.components.end();
      if (!isKnown) info.components.push_back(label);
    }
  }
  if (odbstore::isTensorType(field_.info.type)) orderTensor(info.components);
  if (info.components.size() == 1) info.components.clear();
  return info;
}

void FieldArrays::turnTo(Group& group, int frame) {
  std::vector<const StoredBlock*> present;
  for (const std::size_t i : group.blocks) {
    if (field_.blocks[i].existsIn(frame)) present.push_back(&field_.blocks[i]);
  }
  if (present == group.present && !group.targets.first.empty()) return;
  group.present = std::move(present);
  group.targets = rowTargets(group.present, mesh_, associationOf(group.position), group.point);
}

std::vector<double> FieldArrays::rowsOf(const Group& group, const ArrayInfo& info, int frame) const {
  std::int64_t rows = 0;
  for (const StoredBlock* block : group.present) rows += block->storedRows();
  const std::size_t width = info.width();
  std::vector<double> all(static_cast<std::size_t>(rows) * width, std::numeric_limits<double>::quiet_NaN());
  double* out = all.data();
  for (const StoredBlock* block : group.present) {
    const auto columns = static_cast<std::size_t>(block->width());
    const auto count = static_cast<std::size_t>(block->storedRows());
    std::vector<double> stored(count * columns);
    block->readStored(frame, stored.data());
    const std::vector<std::string> labels = labelsOf(*block);
    for (std::size_t column = columns; column-- > 0;) {  // of two columns of one name the first counts
      const auto at = std::find(info.components.begin(), info.components.end(), labels[column]);
      const auto to = static_cast<std::size_t>(info.components.empty() ? 0 : at - info.components.begin());
      for (std::size_t row = 0; row < count; ++row) out[row * width + to] = stored[row * columns + column];
    }
    out += count * width;
  }
  return all;
}

bool FieldArrays::differs(std::size_t array, const std::vector<int>& frames) {
  Group& group = groups_[array];
  const std::size_t width = infos_[array].width();
  for (const int frame : frames) {
    turnTo(group, frame);
    if (group.targets.others.empty()) continue;
    const std::vector<double> rows = rowsOf(group, infos_[array], frame);
    for (const auto& [place, row] : group.targets.others) {
      const std::int64_t first = group.targets.first[static_cast<std::size_t>(place)];
      if (!sameBits(&rows[static_cast<std::size_t>(first) * width], &rows[static_cast<std::size_t>(row) * width],
                    width))
        return true;
    }
  }
  return false;
}

std::vector<double> FieldArrays::values(std::size_t array, int frame) {
  Group& group = groups_[array];
  turnTo(group, frame);
  const ArrayInfo& info = infos_[array];
  const std::size_t width = info.width();
  const std::vector<double> rows = rowsOf(group, info, frame);
  const RowTargets& targets = group.targets;
  std::vector<double> values(targets.first.size() * width, std::numeric_limits<double>::quiet_NaN());
  for (std::size_t place = 0; place < targets.first.size(); ++place) {
    if (targets.first[place] < 0) continue;
    std::copy_n(&rows[static_cast<std::size_t>(targets.first[place]) * width], width, &values[place * width]);
  }
  if (!info.isMean) return values;
  const auto& others = targets.others;
  for (std::size_t i = 0; i < others.size();) {
    double* const mean = &values[static_cast<std::size_t>(others[i].first) * width];
    std::size_t end = i;
    for (; end < others.size() && others[end].first == others[i].first; ++end) {
      for (std::size_t k = 0; k < width; ++k) mean[k] += rows[static_cast<std::size_t>(others[end].second) * width + k];
    }
    for (std::size_t k = 0; k < width; ++k) mean[k] /= static_cast<double>(end - i + 1);
    i = end;
  }
  return values;
}

}  // namespace vtk_export
