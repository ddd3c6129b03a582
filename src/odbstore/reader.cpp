#include "odbstore/reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

#include "odbstore/catalog_paths.h"
#include "odbstore/database_file.h"
#include "odbstore/location_table.h"

namespace odbstore {

namespace {

flatbuffers::uoffset_t at(std::size_t i) { return static_cast<flatbuffers::uoffset_t>(i); }

std::shared_ptr<const DatabaseFile> openNewest(const std::string& path) {
  std::shared_ptr<const DatabaseFile> file = DatabaseFile::open(path, path);
  if (file) return file;
  throw StoreError(path, "", fmt::format("has layout 1 and must be upgraded to layout {} first", kNewestLayout));
}

std::vector<std::string> namesIn(const Catalog& catalog, const flatbuffers::Vector<std::int32_t>* column) {
  std::vector<std::string> names;
  names.reserve(column->size());
  for (const std::int32_t text : *column) names.emplace_back(catalog.text(text));
  return names;
}

}  // namespace

Reader::Reader(const std::string& path) : Reader(openNewest(path)) {}

Reader::Reader(std::shared_ptr<const DatabaseFile> file)
    : file_(std::move(file)), locations_(std::make_shared<LocationTable>(file_)) {
  const Catalog& catalog = file_->catalog();
  const columns::Instances& all = *catalog.columns().instances();
  for (flatbuffers::uoffset_t i = 0; i < all.name()->size(); ++i) {
    instances_.push_back(
        {std::string(catalog.text(all.name()->Get(i))), std::string(catalog.text(all.part()->Get(i)))});
  }
}

std::shared_ptr<const Reader> Reader::openIfNewest(const std::string& path) {
  std::shared_ptr<const DatabaseFile> file = DatabaseFile::open(path, path);
  return file ? std::make_shared<const Reader>(std::move(file)) : nullptr;
}

Reader::~Reader() = default;

std::string Reader::name() const {
  const std::int32_t name = file_->catalog().columns().name();
  return name == kNone ? file_->name() : std::string(file_->catalog().text(name));
}

std::string Reader::title() const { return std::string(file_->catalog().text(file_->catalog().columns().title())); }

std::string Reader::producer() const {
  return std::string(file_->catalog().text(file_->catalog().columns().producer()));
}

std::string Reader::assemblyName() const {
  return std::string(file_->catalog().text(file_->catalog().columns().assemblyName()));
}

std::vector<std::string> Reader::parts() const {
  return namesIn(file_->catalog(), file_->catalog().columns().parts()->name());
}

std::pair<std::size_t, std::size_t> Reader::setPlaces(const Owner& owner, SetKind kind) const {
  const columns::Catalog& columns = file_->catalog().columns();
  std::int32_t ownerPlace = kNone;
  if (owner.kind != OwnerKind::assembly) {
    const auto* const owners = owner.kind == OwnerKind::part ? columns.parts()->name() : columns.instances()->name();
    const std::optional<std::size_t> place = file_->catalog().find(owners, {0, owners->size()}, owner.name);
    if (!place) return {0, 0};
    ownerPlace = static_cast<std::int32_t>(*place);
  }
  const columns::Sets& sets = *columns.sets();
  const auto wanted = std::tuple(static_cast<int>(owner.kind), ownerPlace, static_cast<int>(kind));
  const auto keyOf = [&](std::size_t i) {
    return std::tuple(static_cast<int>(sets.ownerKind()->Get(at(i))), sets.owner()->Get(at(i)),
                      static_cast<int>(sets.kind()->Get(at(i))));
  };
  // The first place whose key is not before the wanted one, or not at or before it.
  const auto boundOf = [&](bool isUpper) {
    std::size_t low = 0;
    std::size_t high = sets.name()->size();
    while (low < high) {
      const std::size_t middle = low + (high - low) / 2;
      const bool isBefore = isUpper ? keyOf(middle) <= wanted : keyOf(middle) < wanted;
      if (isBefore) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return low;
  };
  return {boundOf(false), boundOf(true)};
}

std::vector<std::string> Reader::sets(const Owner& owner, SetKind kind) const {
  const auto [first, end] = setPlaces(owner, kind);
  std::vector<std::string> names;
  names.reserve(end - first);
  for (std::size_t i = first; i < end; ++i) {
    names.emplace_back(file_->catalog().text(file_->catalog().columns().sets()->name()->Get(at(i))));
  }
  return names;
}

std::vector<SetMembers> Reader::setMembers(const Owner& owner, SetKind kind, const std::string& set) const {
  const Catalog& catalog = file_->catalog();
  const columns::Sets& sets = *catalog.columns().sets();
  const auto [first, end] = setPlaces(owner, kind);
  const std::optional<std::size_t> found = catalog.find(sets.name(), {first, end}, set);
  if (!found) file_->fail("/", fmt::format("there is no set \"{}\"", set));
  const std::size_t place = *found;
  std::vector<SetMembers> members;
  const Places places = Catalog::placesOf(sets.memberEnd(), place);
  for (std::size_t i = places.first; i < places.end; ++i) {
    members.push_back({std::string(catalog.text(sets.memberInstance()->Get(at(i)))),
                       file_->readInts(sets.memberLabels()->Get(at(i)), sets.memberFirst()->Get(at(i)),
                                       sets.memberCount()->Get(at(i)), [&] { return memberPath(catalog, place, i); })});
  }
  return members;
}

std::optional<std::array<float, 6>> Reader::symmetryAxis() const {
  const flatbuffers::Vector<float>* const numbers = file_->catalog().columns().symmetryAxis();
  if (numbers->size() == 0) return std::nullopt;
  std::array<float, 6> axis{};
  std::copy_n(numbers->data(), axis.size(), axis.begin());
  return axis;
}

std::optional<Mesh> Reader::mesh(const std::string& instance) const {
  const Catalog& catalog = file_->catalog();
  const columns::Instances& instances = *catalog.columns().instances();
  const std::optional<std::size_t> place = catalog.find(instances.name(), {0, instances.name()->size()}, instance);
  if (!place || instances.nodeLabels()->Get(at(*place)) == kNone) return std::nullopt;
  const std::string path = instancePath(catalog, *place) + "/" + links::kMesh + "/" + links::kNodes + "/";
  const auto whole = [&](std::int32_t array) { return catalog.array(array).numbers(); };
  const std::int32_t labels = instances.nodeLabels()->Get(at(*place));
  const std::int32_t coordinates = instances.coordinates()->Get(at(*place));
  Mesh mesh;
  mesh.nodes = file_->readInts(labels, 0, whole(labels), [&] { return path + links::kLabels; });
  mesh.coordinates = file_->readDoubles(coordinates, 0, whole(coordinates), [&] { return path + links::kCoordinates; });
  const columns::Elements& elements = *catalog.columns().elements();
  for (flatbuffers::uoffset_t i = 0; i < elements.labels()->size(); ++i) {
    if (static_cast<std::size_t>(elements.instance()->Get(i)) != *place) continue;
    const std::string of = elementsPath(catalog, i) + "/";
    const std::int32_t connectivity = elements.connectivity()->Get(i);
    mesh.elements.push_back(
        {std::string(catalog.text(elements.type()->Get(i))),
         file_->readInts(elements.labels()->Get(i), 0, whole(elements.labels()->Get(i)),
                         [&] { return of + links::kLabels; }),
         file_->readInts(connectivity, 0, whole(connectivity), [&] { return of + links::kConnectivity; })});
  }
  return mesh;
}

std::vector<std::string> Reader::steps() const {
  return namesIn(file_->catalog(), file_->catalog().columns().steps()->name());
}

std::shared_ptr<const StoredStep> Reader::step(const std::string& name) const {
  const flatbuffers::Vector<std::int32_t>& names = *file_->catalog().columns().steps()->name();
  for (flatbuffers::uoffset_t i = 0; i < names.size(); ++i) {
    if (file_->catalog().text(names.Get(i)) == name) return stepAt(i);
  }
  file_->fail("/", fmt::format("there is no step \"{}\"", name));
}

std::shared_ptr<const StoredStep> Reader::stepAt(std::size_t place) const {
  return std::make_shared<const StoredStep>(locations_, place);
}

}  // namespace odbstore
