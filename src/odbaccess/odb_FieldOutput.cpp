#include "odbaccess/odb_FieldOutput.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "odbaccess/field_storage.h"
#include "odbaccess/set_storage.h"

namespace odb_detail {

namespace {

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

odb_SequenceFieldLocation locationsOf(const Blocks& blocks) {
  struct Place {
    odbstore::Position position;
    std::vector<odb_SectionPoint> sectionPoints;
  };
  std::vector<Place> places;
  for (const auto& block : blocks) {
    const odbstore::LocationInfo& info = block->content()->location().info();
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

}  // namespace

}  // namespace odb_detail

odb_String odb_FieldOutput::name() const { return odb_String(storage_->name()); }
odb_String odb_FieldOutput::description() const { return odb_String(storage_->info().description); }
int odb_FieldOutput::type() const { return storage_->info().type; }
bool odb_FieldOutput::hasEngineeringShear() const { return storage_->info().engineeringShear; }

odb_Sequence<odb_String> odb_FieldOutput::componentLabels() const {
  const std::vector<std::string>& stored = storage_->info().componentLabels;
  std::vector<odb_String> labels;
  labels.reserve(stored.size());
  for (const std::string& label : stored) labels.emplace_back(label);
  return odb_Sequence<odb_String>(std::move(labels));
}

odb_Sequence<odb_InvariantEnum> odb_FieldOutput::validInvariants() const {
  const std::vector<int>& stored = storage_->info().validInvariants;
  std::vector<odb_InvariantEnum> invariants;
  invariants.reserve(stored.size());
  for (const int code : stored) {
    // A code of a later program is none that could be asked for.
    if (code >= odb_Enum::maxPrincipal && code <= odb_Enum::outOfPlanePrincipal) {
      invariants.push_back(static_cast<odb_InvariantEnum>(code));
    }
  }
  return odb_Sequence<odb_InvariantEnum>(std::move(invariants));
}

const odb_detail::FieldContent& odb_FieldOutput::content() const {
  if (!content_) {
    auto content = std::make_shared<odb_detail::FieldContent>();
    content->blocks = storage_->blocks();
    content->values = odb_SequenceFieldValue(content->blocks);
    content->locations = odb_detail::locationsOf(content->blocks);
    for (const auto& block : content->blocks) content->bulk.append(odb_FieldBulkData(block));
    content_ = std::move(content);
  }
  return *content_;
}

const odb_SequenceFieldValue& odb_FieldOutput::values() const { return content().values; }
const odb_SequenceFieldBulkData& odb_FieldOutput::bulkDataBlocks() const { return content().bulk; }
const odb_SequenceFieldLocation& odb_FieldOutput::locations() const { return content().locations; }

odb_FieldOutput odb_FieldOutput::getSubset(const odb_Set& set) const {
  odb_detail::Blocks subset;
  if (set.storage()) {
    for (const auto& block : content().blocks) {
      if (auto rows = block->subset(set.storage())) subset.push_back(std::move(rows));
    }
  }
  return odb_FieldOutput(std::make_shared<const odb_detail::FieldStorage>(*storage_, std::move(subset)));
}
