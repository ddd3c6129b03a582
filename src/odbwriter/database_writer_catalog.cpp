// The third part of the writer: the catalog of what it has written.
#include <algorithm>
#include <map>

#include "odbstore/layout.h"
#include "odbstore/names.h"
#include "odbwriter/database_writer_impl.h"

namespace odbstore {

namespace {

std::int32_t reference(std::size_t array) { return array == kNoArray ? kNone : static_cast<std::int32_t>(array); }

}  // namespace

std::vector<std::byte> DatabaseWriter::Impl::makeCatalog() {
  CatalogBuilder catalog(kNewestLayout);
  arrays_->describe(catalog);
  describeModel(catalog);
  describeSets(catalog);
  describeLocations(catalog);
  describeSteps(catalog);
  return catalog.build();
}

void DatabaseWriter::Impl::describeModel(CatalogBuilder& catalog) const {
  catalog.setModel(model_.names, model_.symmetryAxis);
  for (const std::string& part : model_.parts) catalog.addPart(part);
  std::size_t place = 0;
  for (const auto& [name, instance] : model_.instances) {
    const ModelArrays::Mesh& mesh = structure_->places().meshes.at(name);
    catalog.addInstance(name, instance.part, reference(mesh.nodes), reference(mesh.coordinates));
    for (const auto& [type, arrays] : mesh.elements) {
      catalog.addElements(place, type, reference(arrays.first), reference(arrays.second));
    }
    ++place;
  }
}

void DatabaseWriter::Impl::describeSets(CatalogBuilder& catalog) const {
  // The keys of the model's sets are in the order of the catalog's, because its owners are ascending by name too.
  for (const auto& [key, sets] : model_.sets) {
    const auto& [ownerKind, owner, kind] = key;
    const ModelArrays::Sets& places = structure_->places().sets.at(key);
    std::vector<SetEntry> entries;
    std::int64_t first = 0;
    for (const auto& [name, members] : sets) {
      SetEntry entry{name, {}};
      for (const SetMembers& member : members) {
        const auto count = static_cast<std::int64_t>(member.labels.size());
        MemberEntry labels;
        if (ownerKind == OwnerKind::assembly) labels.instance = member.instance;
        const bool isOfPacked = isPacked(name, members);
        labels.labels = reference(isOfPacked ? places.packed : places.single.at({name, member.instance}));
        labels.first = isOfPacked ? first : 0;
        labels.count = count;
        if (isOfPacked) first += count;
        entry.members.push_back(std::move(labels));
      }
      entries.push_back(std::move(entry));
    }
    std::int32_t place = kNone;
    if (ownerKind == OwnerKind::instance) {
      place = static_cast<std::int32_t>(std::distance(model_.instances.begin(), model_.instances.find(owner)));
    } else if (ownerKind == OwnerKind::part) {
      place = static_cast<std::int32_t>(std::distance(model_.parts.begin(), model_.parts.find(owner)));
    }
    catalog.addSets(ownerKind, place, kind, std::move(entries));
  }
}

void DatabaseWriter::Impl::describeLocations(CatalogBuilder& catalog) {
  // Sorted as text, like all names.
  std::map<std::string, std::size_t> order;
  for (std::size_t i = 0; i < model_.locations.size(); ++i) order.emplace(std::to_string(i), i);
  locationPlaces_.resize(order.size());
  std::size_t place = 0;
  for (const auto& [id, i] : order) {
    locationPlaces_[i] = place++;
    const DeclaredLocation& location = model_.locations[i];
    const ModelArrays::Location& arrays = structure_->places().locations[i];
    catalog.addLocation(id, {location.info, location.rows, location.stored(), reference(arrays.nodes),
                             reference(arrays.elements), reference(arrays.points), reference(arrays.rowOf)});
  }
}

void DatabaseWriter::Impl::describeSteps(CatalogBuilder& catalog) const {
  for (const DeclaredStep& step : model_.steps) {
    catalog.addStep(step.name, step.info);
    for (const FrameInfo& frame : step.frames) catalog.addFrame(frame);
    for (const auto& [name, index] : step.fields) {
      describeField(model_.fields[static_cast<std::size_t>(index)], catalog);
    }
    describeHistories(step, catalog);
  }
}

void DatabaseWriter::Impl::describeField(const DeclaredField& field, CatalogBuilder& catalog) const {
  const std::vector<int> frames = model_.framesOf(field, blockFrames_);
  const bool isInAll = frames.size() == model_.stepOf(field).frames.size();
  catalog.addField(field.name, field.info, isInAll ? std::nullopt : std::optional(frames));
  for (const auto& [frame, info] : field.changes) catalog.addChange(frame, info);
  for (const int index : field.blocks) {
    const auto i = static_cast<std::size_t>(index);
    const DeclaredBlock& block = model_.blocks[i];
    BlockEntry entry;
    entry.location = locationPlaces_[static_cast<std::size_t>(block.location)];
    entry.type = block.form.type;
    entry.componentLabels = block.form.componentLabels;
    if (blockFrames_[i] != frames) entry.frames = blockFrames_[i];
    entry.data = reference(structure_->places().blocks[i]);
    entry.rows = model_.locations[static_cast<std::size_t>(block.location)].stored();
    entry.width = block.form.width;
    catalog.addBlock(entry);
  }
}

void DatabaseWriter::Impl::describeHistories(const DeclaredStep& step, CatalogBuilder& catalog) const {
  for (const auto& [name, index] : step.regions) {
    const DeclaredRegion& region = model_.regions[static_cast<std::size_t>(index)];
    catalog.addHistoryRegion(name, region.info);
    for (const auto& [output, place] : region.outputs) {
      const DeclaredHistory& history = model_.histories[static_cast<std::size_t>(place)];
      catalog.addHistoryOutput({output, reference(structure_->places().histories[static_cast<std::size_t>(place)]), 0,
                                history.samples, history.width});
    }
  }
}

}  // namespace odbstore
