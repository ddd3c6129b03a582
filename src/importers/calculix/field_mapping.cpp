#include "importers/calculix/field_mapping.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <string_view>

namespace importers::calculix {

namespace {

constexpr int kScalar = 2;
constexpr int kVector = 3;
constexpr int kFullTensor = 5;
constexpr std::size_t kTensorComponents = 6;

struct KnownBlock {
  std::string_view block;
  std::string_view field;
  std::string_view description;
};

constexpr std::array kKnownBlocks = {
    KnownBlock{"DISP", "U", "Spatial displacement"},
    KnownBlock{"VELO", "V", "Spatial velocity"},
    KnownBlock{"FORC", "RF", "Total force, loads included"},
    KnownBlock{"NDTEMP", "NT", "Nodal temperature"},
    KnownBlock{"STRESS", "S", "Stress components"},
    KnownBlock{"TOSTRAIN", "E", "Total strain components"},
    KnownBlock{"MESTRAIN", "ME", "Mechanical strain components"},
    KnownBlock{"THSTRAIN", "THE", "Thermal strain components"},
    KnownBlock{"PE", "PEEQ", "Equivalent plastic strain"},
    KnownBlock{"ENER", "ENER", "Internal energy density"},
    KnownBlock{"FLUX", "HFL", "Heat flux vector"},
    KnownBlock{"RFL", "RFL", "Total heat flux of a node"},
    KnownBlock{"ERROR", "S_ERROR", "Estimated relative error, percent"},
};

constexpr std::string_view kImaginaryEnding = "_IM";
constexpr std::string_view kImaginaryDescription = ", imaginary part";

struct BlockName {
  std::string field;
  std::string description;
};

BlockName nameOf(const std::string& block) {
  const auto known = [](std::string_view name) {
    return std::find_if(kKnownBlocks.begin(), kKnownBlocks.end(), [&](const KnownBlock& k) { return k.block == name; });
  };
  if (const auto found = known(block); found != kKnownBlocks.end()) {
    return {std::string(found->field), std::string(found->description)};
  }
  if (!block.empty() && block.back() == 'I') {
    if (const auto found = known(std::string_view(block).substr(0, block.size() - 1)); found != kKnownBlocks.end()) {
      return {std::string(found->field).append(kImaginaryEnding),
              std::string(found->description).append(kImaginaryDescription)};
    }
  }
  return {block, "Result block " + block};
}

// The file has 11, 22, 33, 12, 23, 13.
MappedField tensorField(const BlockName& name) {
  // All nine, and the equivalent value.
  const std::vector<int> invariants = {1, 2, 3, 4, 5, 6, 7, 9, 10, 11};
  return {name.field,
          {name.description, kFullTensor, odbstore::defaultTensorLabels(kFullTensor), invariants, false},
          {0, 1, 2, 3, 5, 4}};
}

MappedField vectorField(const std::string& name, const std::string& description, std::vector<std::string> labels,
                        int firstColumn) {
  std::vector<int> columns(labels.size());
  std::iota(columns.begin(), columns.end(), firstColumn);
  const int magnitude = 8;
  return {name, {description, kVector, std::move(labels), {magnitude}, false}, std::move(columns)};
}

MappedField scalarField(const std::string& name, const std::string& description, int column) {
  return {name, {description, kScalar, {}, {}, false}, {column}};
}

// Opening and slips, pressure and shears of a contact: two triples with names of their own.
std::optional<std::vector<MappedField>> mapContact(const FrdResult& result) {
  if (result.name != "CONTACT" || result.components.size() != 6) return std::nullopt;
  std::vector<std::string> labels;
  for (const FrdComponent& component : result.components) labels.push_back(component.name);
  return std::vector<MappedField>{vectorField("CDIS", "Contact displacement", {labels.begin(), labels.begin() + 3}, 0),
                                  vectorField("CSTR", "Contact Stress", {labels.begin() + 3, labels.end()}, 3)};
}

bool allAre(const FrdResult& result, ComponentKind kind) {
  return std::all_of(result.components.begin(), result.components.end(),
                     [&](const FrdComponent& c) { return c.kind == static_cast<int>(kind); });
}

}  // namespace

std::vector<MappedField> mapResult(const FrdResult& result) {
  if (auto contact = mapContact(result)) return *contact;
  const BlockName name = nameOf(result.name);
  if (result.components.size() == kTensorComponents && allAre(result, ComponentKind::matrix))
    return {tensorField(name)};
  if (result.components.size() == 3 && allAre(result, ComponentKind::vector)) {
    return {vectorField(name.field, name.description, {"1", "2", "3"}, 0)};
  }
  if (result.components.size() == 1) return {scalarField(name.field, name.description, 0)};
  std::vector<MappedField> fields;
  for (std::size_t c = 0; c < result.components.size(); ++c) {
    const std::string& component = result.components[c].name;
    // State variables carry the name of their block already.
    const bool isNamed = component.starts_with(result.name);
    fields.push_back(scalarField(isNamed ? component : name.field + "_" + component,
                                 name.description + ", component " + component, static_cast<int>(c)));
  }
  return fields;
}

}  // namespace importers::calculix
