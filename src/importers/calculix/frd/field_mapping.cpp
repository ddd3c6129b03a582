#include "importers/calculix/frd/field_mapping.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string_view>

namespace importers::calculix {

namespace {

constexpr int kScalar = 2;
constexpr int kVector = 3;
constexpr int kFullTensor = 5;
constexpr std::size_t kVectorComponents = 3;

// Codes of the invariants that make sense for a field.
const std::vector<int> kMagnitude = {8};
const std::vector<int> kPrincipals = {1, 2, 3, 9, 10, 11};
const std::vector<int> kAllOfTensor = {1, 2, 3, 4, 5, 6, 7, 9, 10, 11};

constexpr std::string_view kStress = "STRESS";

struct KnownBlock {
  std::string_view block;
  std::string_view field;
  std::string_view description;
};

constexpr std::array kKnownBlocks = {
    KnownBlock{"DISP", "U", "Spatial displacement"},
    KnownBlock{"VELO", "V", "Spatial velocity"},
    KnownBlock{"FORC", "RF", "Total external force, loads included"},
    KnownBlock{"NDTEMP", "NT", "Nodal temperature"},
    KnownBlock{kStress, "S", "Stress components"},
    KnownBlock{"TOSTRAIN", "E", "Total strain components"},
    KnownBlock{"MESTRAIN", "ME", "Mechanical strain components"},
    KnownBlock{"THSTRAIN", "THE", "Thermal strain components"},
    KnownBlock{"PE", "PEEQ", "Equivalent plastic strain"},
    KnownBlock{"ENER", "ENER", "Internal energy density"},
    KnownBlock{"FLUX", "HFL", "Heat flux vector"},
    KnownBlock{"RFL", "RFL", "External concentrated heat source"},
    KnownBlock{"ERROR", "S_ERROR", "Estimated relative error of the stress, percent"},
};

constexpr std::string_view kImaginaryDescription = ", imaginary part";

struct BlockName {
  std::string field;
  std::string description;
};

const KnownBlock* findKnown(std::string_view block) {
  const auto found = std::find_if(kKnownBlocks.begin(), kKnownBlocks.end(),
                                  [&](const KnownBlock& known) { return known.block == block; });
  return found != kKnownBlocks.end() ? &*found : nullptr;
}

// The known block whose imaginary part a block is: names have eight characters, the last of which is an I then.
const KnownBlock* findReal(std::string_view block) {
  constexpr std::size_t stem = 7;
  const auto found = std::find_if(kKnownBlocks.begin(), kKnownBlocks.end(), [&](const KnownBlock& known) {
    return block.ends_with('I') && block.substr(0, block.size() - 1) == known.block.substr(0, stem);
  });
  return found != kKnownBlocks.end() ? &*found : nullptr;
}

BlockName nameOf(const std::string& block) {
  if (const KnownBlock* const known = findKnown(block)) {
    return {std::string(known->field), std::string(known->description)};
  }
  if (const KnownBlock* const real = findReal(block)) {
    return {std::string(real->field).append(kImaginaryEnding),
            std::string(real->description).append(kImaginaryDescription)};
  }
  return {block, "Result block " + block};
}

// Whether the components from the first on share a stem and end in these, one each.
bool haveEndings(const FrdResult& result, std::initializer_list<std::string_view> endings) {
  if (result.components.size() < endings.size()) return false;
  std::string_view stem;
  std::size_t place = 0;
  for (const std::string_view ending : endings) {
    const std::string_view name = result.components[place].name;
    if (!name.ends_with(ending)) return false;
    const std::string_view start = name.substr(0, name.size() - ending.size());
    if (place++ == 0) stem = start;
    if (start != stem) return false;
  }
  return true;
}

// State variables, and magnitudes with phases, are numbered too, but not declared to be vectors.
bool startsWithVector(const FrdResult& result) {
  return haveEndings(result, {"1", "2", "3"}) &&
         std::all_of(result.components.begin(), result.components.begin() + kVectorComponents,
                     [](const FrdComponent& c) { return c.kind == static_cast<int>(ComponentKind::vector); });
}

bool isTensor(const FrdResult& result) {
  return result.components.size() == kTensorComponents && haveEndings(result, {"XX", "YY", "ZZ", "XY", "YZ", "ZX"});
}

// Opening and slips, pressure and shears of a contact: two triples with names of their own.
std::optional<std::vector<MappedField>> mapContact(const FrdResult& result) {
  constexpr std::array<std::string_view, 6> expected = {"COPEN", "CSLIP1", "CSLIP2", "CPRESS", "CSHEAR1", "CSHEAR2"};
  const bool isContact =
      result.name == "CONTACT" &&
      std::equal(result.components.begin(), result.components.end(), expected.begin(), expected.end(),
                 [](const FrdComponent& c, std::string_view name) { return c.name == name; });
  if (!isContact) return std::nullopt;
  return std::vector<MappedField>{
      vectorField("CDIS", "Contact displacement", {0, 1, 2}, {expected.begin(), expected.begin() + 3}),
      vectorField("CSTR", "Contact Stress", {3, 4, 5}, {expected.begin() + 3, expected.end()})};
}

// The solver keeps them in the columns of the stresses, XX YY ZZ XY YZ ZX.
std::vector<MappedField> mapSectionForces(const FrdResult& result) {
  const bool isImaginary = result.name != kStress;
  const auto field = [&](const char* name, const char* description, std::vector<int> columns) {
    return vectorField(std::string(name).append(isImaginary ? kImaginaryEnding : ""),
                       std::string(description).append(isImaginary ? kImaginaryDescription : ""), std::move(columns));
  };
  return {field("SF", "Section force: shear along 1 and 2, normal force", {0, 1, 2}),
          field("SM", "Section moment: bending about 1 and 2, torque", {4, 5, 3})};
}

// One scalar per component from `first` on.
void addScalars(const FrdResult& result, const BlockName& name, std::size_t first, std::vector<MappedField>& fields) {
  for (std::size_t c = first; c < result.components.size(); ++c) {
    const std::string& component = result.components[c].name;
    // State variables carry the name of their block already.
    const bool isNamed = component.starts_with(result.name) && component != result.name;
    fields.push_back(scalarField(isNamed ? component : result.name + "_" + component,
                                 name.description + ", component " + component, c));
  }
}

// Numbers those that share a name.
void makeUnique(std::vector<MappedField>& fields) {
  std::set<std::string> names;
  for (MappedField& field : fields) {
    const std::string name = field.name;
    for (int number = 2; !names.insert(field.name).second; ++number) field.name = name + "_" + std::to_string(number);
  }
}

// Results of elements, which the run may have printed at integration points too.
bool isOfElements(const KnownBlock& known) {
  constexpr std::array<std::string_view, 7> fields = {"S", "E", "ME", "THE", "PEEQ", "ENER", "HFL"};
  return std::find(fields.begin(), fields.end(), known.field) != fields.end();
}

std::vector<MappedField> mapPlain(const FrdResult& result, StressContent content) {
  if (auto contact = mapContact(result)) return *contact;
  const bool isStress = isTensor(result) && result.name.starts_with(kStress);
  if (isStress && content == StressContent::sectionForces) return mapSectionForces(result);
  const BlockName name = nameOf(result.name);
  if (result.components.size() == 1) return {scalarField(name.field, name.description, 0)};
  // The file has 13 last, the database 23.
  if (isTensor(result)) return {tensorField(name.field, name.description, isStress, {0, 1, 2, 3, 5, 4})};
  std::vector<MappedField> fields;
  const bool hasVector = startsWithVector(result);
  if (hasVector) fields.push_back(vectorField(name.field, name.description, {0, 1, 2}));
  addScalars(result, name, hasVector ? kVectorComponents : 0, fields);
  makeUnique(fields);
  return fields;
}

}  // namespace

MappedField scalarField(const std::string& name, const std::string& description, std::size_t column) {
  // Made first: should there be no memory for them, GCC 12 would destroy the name in the result twice.
  std::vector<int> columns = {static_cast<int>(column)};
  return {name, {description, kScalar, {}, {}, false}, std::move(columns)};
}

MappedField vectorField(const std::string& name, const std::string& description, std::vector<int> columns,
                        std::vector<std::string> labels) {
  return {name, {description, kVector, std::move(labels), kMagnitude, false}, std::move(columns)};
}

MappedField tensorField(const std::string& name, const std::string& description, bool isStress,
                        std::vector<int> columns) {
  return {name,
          {description, kFullTensor, odbstore::defaultTensorLabels(kFullTensor), isStress ? kAllOfTensor : kPrincipals,
           false},
          std::move(columns)};
}

std::vector<MappedField> mapResult(const FrdResult& result, StressContent content, StressAt stressAt) {
  std::vector<MappedField> fields = mapPlain(result, content);
  const KnownBlock* known = findKnown(result.name);
  if (known == nullptr) known = findReal(result.name);
  const bool isOfElement =
      result.name == "SDV" || (known != nullptr && isOfElements(*known) && content == StressContent::stress);
  if (stressAt == StressAt::nodes || !isOfElement) return fields;
  for (MappedField& field : fields) {
    const std::size_t end =
        field.name.ends_with(kImaginaryEnding) ? field.name.size() - kImaginaryEnding.size() : field.name.size();
    field.name.insert(end, "_NODAL");
  }
  return fields;
}

std::vector<std::string> namesOfFields(const std::vector<MappedField>& fields) {
  std::vector<std::string> names;
  names.reserve(fields.size());
  for (const MappedField& field : fields) names.push_back(field.name);
  return names;
}

}  // namespace importers::calculix
