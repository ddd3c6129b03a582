#include "odbstore/catalog_paths.h"

#include "odbstore/layout.h"
#include "odbstore/names.h"

namespace odbstore {

namespace {

std::string joined(const std::string& group, const std::string& link) { return group + "/" + link; }

std::string linkOf(const Catalog& catalog, const flatbuffers::Vector<std::int32_t>* names, std::size_t i) {
  return linkFromName(catalog.text(names->Get(static_cast<flatbuffers::uoffset_t>(i))));
}

std::string root(const char* link) { return std::string("/") + link; }

}  // namespace

std::string partPath(const Catalog& catalog, std::size_t part) {
  return joined(root(links::kParts), linkOf(catalog, catalog.columns().parts()->name(), part));
}

std::string instancePath(const Catalog& catalog, std::size_t instance) {
  return joined(joined(root(links::kAssembly), links::kInstances),
                linkOf(catalog, catalog.columns().instances()->name(), instance));
}

std::string elementsPath(const Catalog& catalog, std::size_t elements) {
  const columns::Elements& all = *catalog.columns().elements();
  const auto instance = static_cast<std::size_t>(all.instance()->Get(static_cast<flatbuffers::uoffset_t>(elements)));
  return joined(joined(joined(instancePath(catalog, instance), links::kMesh), links::kElements),
                linkOf(catalog, all.type(), elements));
}

std::string setPath(const Catalog& catalog, std::size_t set) {
  const columns::Sets& sets = *catalog.columns().sets();
  const auto i = static_cast<flatbuffers::uoffset_t>(set);
  const auto owner = static_cast<std::size_t>(sets.owner()->Get(i));
  std::string path = root(links::kAssembly);
  if (static_cast<OwnerKind>(sets.ownerKind()->Get(i)) == OwnerKind::instance) path = instancePath(catalog, owner);
  if (static_cast<OwnerKind>(sets.ownerKind()->Get(i)) == OwnerKind::part) path = partPath(catalog, owner);
  return joined(joined(path, setsLink(static_cast<SetKind>(sets.kind()->Get(i)))), linkOf(catalog, sets.name(), set));
}

std::string memberPath(const Catalog& catalog, std::size_t set, std::size_t member) {
  const columns::Sets& sets = *catalog.columns().sets();
  const std::int32_t instance = sets.memberInstance()->Get(static_cast<flatbuffers::uoffset_t>(member));
  const std::string path = setPath(catalog, set);
  return instance == kNone ? path : joined(path, linkFromName(catalog.text(instance)));
}

std::string locationPath(const Catalog& catalog, std::size_t location) {
  return joined(root(links::kLocations), linkOf(catalog, catalog.columns().locations()->id(), location));
}

std::string stepPath(const Catalog& catalog, std::size_t step) {
  return joined(root(links::kSteps), linkOf(catalog, catalog.columns().steps()->name(), step));
}

std::string fieldPath(const Catalog& catalog, std::size_t step, std::size_t field) {
  return joined(joined(stepPath(catalog, step), links::kFields),
                linkOf(catalog, catalog.columns().fields()->name(), field));
}

std::string blockPath(const Catalog& catalog, std::size_t step, std::size_t field, std::size_t block) {
  const std::size_t first = Catalog::placesOf(catalog.columns().fields()->blockEnd(), field).first;
  return joined(joined(fieldPath(catalog, step, field), links::kBlocks), std::to_string(block - first));
}

std::string regionPath(const Catalog& catalog, std::size_t step, std::size_t region) {
  return joined(joined(stepPath(catalog, step), links::kHistory),
                linkOf(catalog, catalog.columns().regions()->name(), region));
}

std::string outputPath(const Catalog& catalog, std::size_t step, std::size_t region, std::size_t output) {
  return joined(joined(regionPath(catalog, step, region), links::kOutputs),
                linkOf(catalog, catalog.columns().outputs()->name(), output));
}

}  // namespace odbstore
