#include "inspect/model_sets.h"

#include "odbaccess/odb_String.h"
#include "odbstore/catalog_paths.h"
#include "reduce/extremes_records.h"
#include "result/record_name.h"

namespace inspect {

namespace {

using odbstore::at;
using odbstore::OwnerKind;

std::string_view ownerName(const odbstore::Catalog& catalog, OwnerKind kind, std::int32_t place) {
  if (kind == OwnerKind::assembly) return {};
  const auto* const names =
      kind == OwnerKind::instance ? catalog.columns().instances()->name() : catalog.columns().parts()->name();
  return catalog.text(names->Get(static_cast<flatbuffers::uoffset_t>(place)));
}

}  // namespace

std::vector<ModelSet> modelSets(const odbstore::DatabaseFile& file) {
  const odbstore::Catalog& catalog = file.catalog();
  const odbstore::columns::Sets& sets = *catalog.columns().sets();
  std::vector<ModelSet> all;
  all.reserve(sets.name()->size());
  for (flatbuffers::uoffset_t i = 0; i < sets.name()->size(); ++i) {
    ModelSet set;
    set.ownerKind = static_cast<OwnerKind>(sets.ownerKind()->Get(i));
    set.owner = ownerName(catalog, set.ownerKind, sets.owner()->Get(i));
    set.kind = static_cast<odbstore::SetKind>(sets.kind()->Get(i));
    set.name = catalog.text(sets.name()->Get(i));
    std::string tag = "__";
    if (set.ownerKind != OwnerKind::assembly) tag.append(set.owner) += '_';
    const odb_String asGiven(tag.append(set.name));
    set.isLeftOut = isScreenedRegion(asGiven);
    set.tag = cleanedName(asGiven);
    all.push_back(std::move(set));
  }
  return all;
}

const char* ownerWord(OwnerKind kind) {
  if (kind == OwnerKind::assembly) return "assembly";
  return kind == OwnerKind::part ? "part" : "instance";
}

const char* memberWord(odbstore::SetKind kind) { return kind == odbstore::SetKind::node ? "nodes" : "elements"; }

std::int64_t memberCount(const odbstore::DatabaseFile& file, std::size_t set) {
  const odbstore::columns::Sets& sets = *file.catalog().columns().sets();
  const odbstore::Places places = odbstore::Catalog::placesOf(sets.memberEnd(), set);
  std::int64_t count = 0;
  for (std::size_t i = places.first; i < places.end; ++i) count += sets.memberCount()->Get(at(i));
  return count;
}

std::vector<SetLabels> setLabels(const odbstore::DatabaseFile& file, std::size_t set) {
  const odbstore::Catalog& catalog = file.catalog();
  const odbstore::columns::Sets& sets = *catalog.columns().sets();
  const auto ownerKind = static_cast<OwnerKind>(sets.ownerKind()->Get(at(set)));
  const std::string_view owner = ownerName(catalog, ownerKind, sets.owner()->Get(at(set)));
  const odbstore::columns::Instances& instances = *catalog.columns().instances();
  std::vector<SetLabels> all;
  const odbstore::Places places = odbstore::Catalog::placesOf(sets.memberEnd(), set);
  for (std::size_t i = places.first; i < places.end; ++i) {
    const std::string_view instance = catalog.text(sets.memberInstance()->Get(at(i)));
    SetLabels members{
        ownerKind == OwnerKind::assembly ? instance : owner,
        file.readInts(sets.memberLabels()->Get(at(i)), sets.memberFirst()->Get(at(i)), sets.memberCount()->Get(at(i)),
                      [&] { return odbstore::memberPath(catalog, set, i); })};
    if (ownerKind != OwnerKind::part) {
      all.push_back(std::move(members));
      continue;
    }
    for (flatbuffers::uoffset_t k = 0; k < instances.name()->size(); ++k) {
      if (catalog.text(instances.part()->Get(k)) != owner) continue;
      all.push_back({catalog.text(instances.name()->Get(k)), members.labels});
    }
  }
  return all;
}

}  // namespace inspect
