#include "odbstore/catalog_builder.h"

#include <algorithm>
#include <memory>

namespace odbstore {

namespace {

std::uint32_t endOf(const auto& column) { return static_cast<std::uint32_t>(column.size()); }

// The end of the last object of a table, which grows as entries are added to it.
void keepEnd(std::vector<std::uint32_t>& ends, const auto& column) {
  if (!ends.empty()) ends.back() = endOf(column);
}

}  // namespace

CatalogBuilder::CatalogBuilder(int layout) {
  columns_.layout = layout;
  columns_.texts = std::make_unique<columns::TextsT>();
  columns_.lists = std::make_unique<columns::ListsT>();
  columns_.arrays = std::make_unique<columns::ArraysT>();
  columns_.parts = std::make_unique<columns::PartsT>();
  columns_.instances = std::make_unique<columns::InstancesT>();
  columns_.elements = std::make_unique<columns::ElementsT>();
  columns_.sets = std::make_unique<columns::SetsT>();
  columns_.locations = std::make_unique<columns::LocationsT>();
  columns_.steps = std::make_unique<columns::StepsT>();
  columns_.frames = std::make_unique<columns::FramesT>();
  columns_.forms = std::make_unique<columns::FormsT>();
  columns_.fields = std::make_unique<columns::FieldsT>();
  columns_.blocks = std::make_unique<columns::BlocksT>();
  columns_.regions = std::make_unique<columns::HistoryRegionsT>();
  columns_.outputs = std::make_unique<columns::HistoryOutputsT>();
}

std::int32_t CatalogBuilder::text(std::string_view text) {
  columns::TextsT& all = *columns_.texts;
  const auto [known, isNew] = texts_.emplace(text, static_cast<std::int32_t>(all.end.size()));
  if (isNew) {
    all.bytes.insert(all.bytes.end(), text.begin(), text.end());
    all.end.push_back(endOf(all.bytes));
  }
  return known->second;
}

std::int32_t CatalogBuilder::textOrNone(const std::optional<std::string>& text) {
  return text ? this->text(*text) : kNone;
}

std::int32_t CatalogBuilder::list(const std::vector<std::int32_t>& numbers) {
  columns::ListsT& all = *columns_.lists;
  const auto [known, isNew] = lists_.emplace(numbers, static_cast<std::int32_t>(all.end.size()));
  if (isNew) {
    all.number.insert(all.number.end(), numbers.begin(), numbers.end());
    all.end.push_back(endOf(all.number));
  }
  return known->second;
}

std::int32_t CatalogBuilder::texts(const std::vector<std::string>& texts) {
  std::vector<std::int32_t> references;
  for (const std::string& one : texts) references.push_back(text(one));
  return list(references);
}

std::int32_t CatalogBuilder::form(const FieldInfo& info) {
  columns::FormsT& all = *columns_.forms;
  const std::vector<std::int32_t> key = {text(info.description), info.type, texts(info.componentLabels),
                                         list(info.validInvariants), info.engineeringShear ? 1 : 0};
  const auto [known, isNew] = forms_.emplace(key, static_cast<std::int32_t>(all.type.size()));
  if (isNew) {
    all.description.push_back(key[0]);
    all.type.push_back(key[1]);
    all.componentLabels.push_back(key[2]);
    all.validInvariants.push_back(key[3]);
    all.engineeringShear.push_back(info.engineeringShear ? 1 : 0);
  }
  return known->second;
}

std::int32_t CatalogBuilder::addArray(base::NumberFormat format, std::int64_t slabs, std::int64_t slabNumbers,
                                      std::int64_t offset) {
  columns::ArraysT& all = *columns_.arrays;
  all.format.push_back(static_cast<std::uint8_t>(format));
  all.packing.push_back(static_cast<std::uint8_t>(Packing::contiguous));
  all.slabs.push_back(slabs);
  all.slabNumbers.push_back(slabNumbers);
  all.place.push_back(offset);
  return static_cast<std::int32_t>(all.format.size()) - 1;
}

std::int32_t CatalogBuilder::addPackedArray(base::NumberFormat format, Packing packing, std::int64_t slabs,
                                            std::int64_t slabNumbers, std::span<const Extent> chunks) {
  columns::ArraysT& all = *columns_.arrays;
  const std::int32_t array = addArray(format, slabs, slabNumbers, static_cast<std::int64_t>(all.chunkOffset.size()));
  all.packing.back() = static_cast<std::uint8_t>(packing);
  for (const Extent& chunk : chunks) {
    all.chunkOffset.push_back(chunk.begin);
    all.chunkBytes.push_back(chunk.end - chunk.begin);
  }
  return array;
}

void CatalogBuilder::setModel(const ModelNames& names, const std::optional<std::array<float, 6>>& symmetryAxis) {
  columns_.name = textOrNone(names.name);
  columns_.title = textOrNone(names.title);
  columns_.producer = textOrNone(names.producer);
  columns_.assemblyName = textOrNone(names.assembly);
  if (symmetryAxis) columns_.symmetryAxis.assign(symmetryAxis->begin(), symmetryAxis->end());
}

void CatalogBuilder::setChecksums(std::int64_t offset, std::int64_t count, std::int64_t block) {
  columns_.checksumsOffset = offset;
  columns_.checksumsCount = count;
  columns_.checksumsBlock = block;
}

void CatalogBuilder::addPart(const std::string& name) { columns_.parts->name.push_back(text(name)); }

void CatalogBuilder::addInstance(const std::string& name, const std::string& part, std::int32_t nodeLabels,
                                 std::int32_t coordinates) {
  columns::InstancesT& all = *columns_.instances;
  all.name.push_back(text(name));
  all.part.push_back(text(part));
  all.nodeLabels.push_back(nodeLabels);
  all.coordinates.push_back(coordinates);
}

void CatalogBuilder::addElements(std::size_t instance, const std::string& type, std::int32_t labels,
                                 std::int32_t connectivity) {
  columns::ElementsT& all = *columns_.elements;
  all.instance.push_back(static_cast<std::int32_t>(instance));
  all.type.push_back(text(type));
  all.labels.push_back(labels);
  all.connectivity.push_back(connectivity);
}

void CatalogBuilder::addSets(OwnerKind ownerKind, std::int32_t owner, SetKind kind, std::vector<SetEntry> sets) {
  columns::SetsT& all = *columns_.sets;
  std::stable_sort(sets.begin(), sets.end(), [](const SetEntry& a, const SetEntry& b) { return a.name < b.name; });
  for (const SetEntry& set : sets) {
    all.ownerKind.push_back(static_cast<std::uint8_t>(ownerKind));
    all.owner.push_back(owner);
    all.kind.push_back(static_cast<std::uint8_t>(kind));
    all.name.push_back(text(set.name));
    for (const MemberEntry& member : set.members) {
      all.memberInstance.push_back(textOrNone(member.instance));
      all.memberLabels.push_back(member.labels);
      all.memberFirst.push_back(member.first);
      all.memberCount.push_back(member.count);
    }
    all.memberEnd.push_back(endOf(all.memberLabels));
  }
}

void CatalogBuilder::addLocation(const std::string& id, const LocationEntry& location) {
  columns::LocationsT& all = *columns_.locations;
  all.id.push_back(text(id));
  all.instance.push_back(text(location.info.instance));
  all.position.push_back(static_cast<std::uint8_t>(location.info.position));
  all.elementType.push_back(text(location.info.elementType));
  all.sectionPoint.push_back(location.info.sectionPoint);
  all.sectionPointDescription.push_back(text(location.info.sectionPointDescription));
  all.rows.push_back(location.rows);
  all.storedRows.push_back(location.storedRows);
  all.nodeLabels.push_back(location.nodeLabels);
  all.elementLabels.push_back(location.elementLabels);
  all.integrationPoints.push_back(location.integrationPoints);
  all.rowOf.push_back(location.rowOf);
}

void CatalogBuilder::addStep(const std::string& name, const StepInfo& info) {
  columns::StepsT& all = *columns_.steps;
  all.name.push_back(text(name));
  all.description.push_back(text(info.description));
  all.mass.push_back(info.mass);
  std::uint8_t given = 0;
  std::uint8_t bit = 1;
  for (const auto& [numbers, count] : {std::pair(&info.massCenter, 3), std::pair(&info.inertiaAboutCenter, 6),
                                       std::pair(&info.inertiaAboutOrigin, 6)}) {
    const bool isGiven = !numbers->empty();
    if (isGiven) given = static_cast<std::uint8_t>(given | bit);
    for (int i = 0; i < count; ++i) all.moments.push_back(isGiven ? (*numbers)[static_cast<std::size_t>(i)] : 0.0);
    bit = static_cast<std::uint8_t>(bit << 1U);
  }
  all.given.push_back(given);
  all.frameEnd.push_back(endOf(columns_.frames->value));
  all.fieldEnd.push_back(endOf(columns_.fields->name));
  all.regionEnd.push_back(endOf(columns_.regions->name));
}

void CatalogBuilder::addFrame(const FrameInfo& info) {
  columns_.frames->incrementNumber.push_back(info.incrementNumber);
  columns_.frames->value.push_back(info.value);
  columns_.frames->description.push_back(text(info.description));
  keepEnd(columns_.steps->frameEnd, columns_.frames->value);
}

void CatalogBuilder::addField(const std::string& name, const FieldInfo& info,
                              const std::optional<std::vector<std::int32_t>>& frames) {
  columns::FieldsT& all = *columns_.fields;
  all.name.push_back(text(name));
  all.frames.push_back(frames ? list(*frames) : kNone);
  all.form.push_back(form(info));
  all.changeEnd.push_back(endOf(all.changeFrame));
  all.blockEnd.push_back(endOf(columns_.blocks->data));
  keepEnd(columns_.steps->fieldEnd, all.name);
}

void CatalogBuilder::addChange(std::int32_t frame, const FieldInfo& info) {
  columns::FieldsT& all = *columns_.fields;
  all.changeFrame.push_back(frame);
  all.changeForm.push_back(form(info));
  keepEnd(all.changeEnd, all.changeFrame);
}

void CatalogBuilder::addBlock(const BlockEntry& block) {
  columns::BlocksT& all = *columns_.blocks;
  all.location.push_back(static_cast<std::int32_t>(block.location));
  all.hasType.push_back(block.type ? 1 : 0);
  all.type.push_back(block.type.value_or(0));
  all.componentLabels.push_back(block.componentLabels.empty() ? kNone : texts(block.componentLabels));
  all.frames.push_back(block.frames ? list(*block.frames) : kNone);
  all.data.push_back(block.data);
  all.rows.push_back(block.rows);
  all.width.push_back(block.width);
  keepEnd(columns_.fields->blockEnd, all.data);
}

void CatalogBuilder::addHistoryRegion(const std::string& name, const HistoryRegionInfo& info) {
  columns::HistoryRegionsT& all = *columns_.regions;
  all.name.push_back(text(name));
  all.description.push_back(text(info.description));
  all.node.push_back(info.node);
  all.element.push_back(info.element);
  all.integrationPoint.push_back(info.integrationPoint);
  all.sectionPoint.push_back(info.sectionPoint);
  all.sectionPointDescription.push_back(text(info.sectionPointDescription));
  all.set.push_back(text(info.set));
  all.outputEnd.push_back(endOf(columns_.outputs->name));
  keepEnd(columns_.steps->regionEnd, all.name);
}

void CatalogBuilder::addHistoryOutput(const OutputEntry& output) {
  columns::HistoryOutputsT& all = *columns_.outputs;
  all.name.push_back(text(output.name));
  all.data.push_back(output.data);
  all.first.push_back(output.first);
  all.samples.push_back(output.samples);
  all.width.push_back(output.width);
  keepEnd(columns_.regions->outputEnd, all.name);
}

void CatalogBuilder::setSums(std::vector<std::uint32_t> sums) { columns_.arrays->sums = std::move(sums); }

std::vector<std::byte> CatalogBuilder::build() const {
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(columns::Catalog::Pack(builder, &columns_));
  const auto* const bytes = reinterpret_cast<const std::byte*>(builder.GetBufferPointer());
  return {bytes, bytes + builder.GetSize()};
}

}  // namespace odbstore
