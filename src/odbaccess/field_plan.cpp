#include "odbaccess/field_plan.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>

namespace odb_detail {

namespace {

// The place of a component label among the canonical components, by its last two characters; -1 for another.
int tensorPlace(std::string_view label) {
  const std::string_view ending = label.substr(label.size() - std::min<std::size_t>(label.size(), 2));
  const auto& known = odbstore::kTensorComponents;
  const auto found = std::find(known.begin(), known.end(), ending);
  return found == known.end() ? -1 : static_cast<int>(found - known.begin());
}

int placeOf(const std::vector<std::string>& labels, const std::string& label) {
  const auto found = std::find(labels.begin(), labels.end(), label);
  return found == labels.end() ? -1 : static_cast<int>(found - labels.begin());
}

std::vector<int> firstColumns(int count) {
  std::vector<int> columns(static_cast<std::size_t>(count));
  std::iota(columns.begin(), columns.end(), 0);
  return columns;
}

odb_Sequence<odb_String> textsOf(const std::vector<std::string>& stored) {
  std::vector<odb_String> texts;
  texts.reserve(stored.size());
  for (const std::string& text : stored) texts.emplace_back(text);
  return odb_Sequence<odb_String>(std::move(texts));
}

odb_Sequence<odb_InvariantEnum> invariantsOf(const std::vector<int>& stored) {
  std::vector<odb_InvariantEnum> invariants;
  for (const int code : stored) {
    // A code of a later program is none that could be asked for.
    if (code >= odb_Enum::maxPrincipal && code <= odb_Enum::outOfPlanePrincipal) {
      invariants.push_back(static_cast<odb_InvariantEnum>(code));
    }
  }
  return odb_Sequence<odb_InvariantEnum>(std::move(invariants));
}

odb_Enum::odb_ResultPositionEnum positionCode(odbstore::Position position) {
  switch (position) {
    case odbstore::Position::nodal:
      return odb_Enum::nodal;
    case odbstore::Position::integrationPoint:
      return odb_Enum::integrationPoint;
    case odbstore::Position::elementNodal:
      return odb_Enum::elementNodal;
    case odbstore::Position::centroid:
      return odb_Enum::centroid;
    default:
      return odb_Enum::wholeElement;
  }
}

}  // namespace

BlockPlan::BlockPlan(const odbstore::StoredBlock& block, const odbstore::FieldInfo& field,
                     std::shared_ptr<LocationStorage> location)
    : block_(block), location_(std::move(location)), componentLabels_(textsOf(block.componentLabels())) {
  findColumnsOfField(field.componentLabels);
  findColumnsOfTensor();
  findBulkColumns();
  locations_ = locationsOf({this});
}

void BlockPlan::findColumnsOfField(const std::vector<std::string>& labels) {
  if (labels.empty()) columnsOfField_ = firstColumns(width());
  for (const std::string& label : labels) columnsOfField_.push_back(placeOf(block_.componentLabels(), label));
  inFieldOrder_ = columnsOfField_ == firstColumns(static_cast<int>(columnsOfField_.size()));
}

void BlockPlan::findColumnsOfTensor() {
  columnsOfTensor_.fill(-1);
  if (!isTensor()) return;
  const std::vector<std::string>& labels =
      block_.componentLabels().empty() ? odbstore::defaultTensorLabels(block_.type()) : block_.componentLabels();
  for (int column = 0; column < width(); ++column) {
    const int component = tensorPlace(labels[static_cast<std::size_t>(column)]);
    if (component < 0) continue;
    int& kept = columnsOfTensor_[static_cast<std::size_t>(component)];
    if (kept < 0) kept = column;
  }
  isCanonical_ = true;
  for (int c = 0; c < static_cast<int>(columnsOfTensor_.size()); ++c) {
    if (columnsOfTensor_[static_cast<std::size_t>(c)] != (c < width() ? c : -1)) isCanonical_ = false;
  }
}

void BlockPlan::findBulkColumns() {
  const std::vector<int> asStored = firstColumns(width());
  const bool isElementBased = odbstore::hasElementLabels(location_->info().position) && location_->rows() > 0;
  if (isElementBased && isTensor()) {
    bulkColumns_.assign(columnsOfTensor_.begin(), columnsOfTensor_.end());
    while (!bulkColumns_.empty() && bulkColumns_.back() < 0) bulkColumns_.pop_back();
  } else {
    bulkColumns_ = asStored;
  }
  isWholeRow_ = bulkColumns_ == asStored;
}

FieldPlan::FieldPlan(std::shared_ptr<const odbstore::StoredStep> step, const odbstore::StoredField& field,
                     std::shared_ptr<const odbstore::FieldInfo> info, LocationCache& locations)
    : step_(std::move(step)),
      info_(std::move(info)),
      name_(field.name),
      description_(info_->description),
      componentLabels_(textsOf(info_->componentLabels)),
      validInvariants_(invariantsOf(info_->validInvariants)) {
  blocks_.reserve(field.blocks.size());
  for (const odbstore::StoredBlock& block : field.blocks) {
    blocks_.emplace_back(block, *info_, locations.of(block.location()));
  }
}

odb_SequenceFieldLocation locationsOf(const std::vector<const BlockPlan*>& blocks) {
  struct Place {
    odbstore::Position position;
    std::vector<odb_SectionPoint> sectionPoints;
  };
  std::vector<Place> places;
  for (const BlockPlan* block : blocks) {
    const odbstore::LocationInfo& info = block->location().info();
    auto place =
        std::find_if(places.begin(), places.end(), [&](const Place& p) { return p.position == info.position; });
    if (place == places.end()) place = places.insert(places.end(), {info.position, {}});
    std::vector<odb_SectionPoint>& points = place->sectionPoints;
    const bool known = std::any_of(points.begin(), points.end(),
                                   [&](const odb_SectionPoint& p) { return p.number() == info.sectionPoint; });
    if (info.sectionPoint != 0 && !known) {
      points.emplace_back(info.sectionPoint, odb_String(info.sectionPointDescription));
    }
  }
  std::vector<odb_FieldLocation> locations;
  for (Place& place : places) {
    locations.emplace_back(positionCode(place.position),
                           odb_Sequence<odb_SectionPoint>(std::move(place.sectionPoints)));
  }
  return odb_SequenceFieldLocation(std::move(locations));
}

}  // namespace odb_detail
