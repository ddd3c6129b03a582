#include "importers/run/field_meanings.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace importers {

namespace {

using odbstore::FieldType;
using odbstore::Invariant;

enum class Shape { scalar, vector, tensor };
enum class Match { whole, part };

struct KnownField {
  std::string_view name;  // in lower case, without what stands between words
  Match match;
  Shape shape;
  const char* description;
  const char* standardName;
};

constexpr const char* kStress = "Stress components";
constexpr const char* kStrain = "Strain components";
constexpr const char* kDisplacement = "Spatial displacement";

// The first that fits counts.
constexpr std::array kKnownFields = {
    KnownField{"stress", Match::whole, Shape::tensor, kStress, "S"},
    KnownField{"stresses", Match::whole, Shape::tensor, kStress, "S"},
    KnownField{"cauchystress", Match::whole, Shape::tensor, kStress, "S"},
    KnownField{"stresstensor", Match::whole, Shape::tensor, kStress, "S"},
    KnownField{"sigma", Match::whole, Shape::tensor, kStress, ""},
    KnownField{"sig", Match::whole, Shape::tensor, kStress, ""},
    KnownField{"si", Match::whole, Shape::tensor, kStress, ""},
    KnownField{"s", Match::whole, Shape::tensor, kStress, ""},
    KnownField{"stress", Match::part, Shape::tensor, kStress, ""},
    KnownField{"sigm", Match::part, Shape::tensor, kStress, ""},
    KnownField{"strain", Match::whole, Shape::tensor, kStrain, "E"},
    KnownField{"strains", Match::whole, Shape::tensor, kStrain, "E"},
    KnownField{"totalstrain", Match::whole, Shape::tensor, kStrain, "E"},
    KnownField{"straintensor", Match::whole, Shape::tensor, kStrain, "E"},
    KnownField{"epsilon", Match::whole, Shape::tensor, kStrain, ""},
    KnownField{"epsi", Match::whole, Shape::tensor, kStrain, ""},
    KnownField{"eps", Match::whole, Shape::tensor, kStrain, ""},
    KnownField{"ep", Match::whole, Shape::tensor, kStrain, ""},
    KnownField{"e", Match::whole, Shape::tensor, kStrain, ""},
    KnownField{"strain", Match::part, Shape::tensor, kStrain, ""},
    KnownField{"displacement", Match::whole, Shape::vector, kDisplacement, "U"},
    KnownField{"displacements", Match::whole, Shape::vector, kDisplacement, "U"},
    KnownField{"displ", Match::whole, Shape::vector, kDisplacement, "U"},
    KnownField{"disp", Match::whole, Shape::vector, kDisplacement, "U"},
    KnownField{"u", Match::whole, Shape::vector, kDisplacement, ""},
    KnownField{"depl", Match::whole, Shape::vector, kDisplacement, ""},
    KnownField{"displacement", Match::part, Shape::vector, kDisplacement, ""},
    KnownField{"mises", Match::whole, Shape::scalar, "Stress", ""},
    KnownField{"vonmises", Match::whole, Shape::scalar, "Stress", ""},
    KnownField{"stress", Match::part, Shape::scalar, "Stress", ""},
    KnownField{"strain", Match::part, Shape::scalar, "Strain", ""},
};

std::string plainName(std::string_view name) {
  std::string plain;
  for (const char c : name) {
    if (c == '_' || c == '-' || c == ' ') continue;
    plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return plain;
}

Shape shapeOf(FieldType type) {
  if (odbstore::isTensorType(type)) return Shape::tensor;
  return type == FieldType::vector ? Shape::vector : Shape::scalar;
}

const KnownField* findKnown(const std::string& name, Shape shape) {
  const auto found = std::find_if(kKnownFields.begin(), kKnownFields.end(), [&](const KnownField& known) {
    if (known.shape != shape) return false;
    return known.match == Match::whole ? name == known.name : name.find(known.name) != std::string::npos;
  });
  return found == kKnownFields.end() ? nullptr : &*found;
}

std::vector<int> invariantsOf(Shape shape, bool isStress) {
  if (shape == Shape::scalar) return {};
  if (shape == Shape::vector) return {static_cast<int>(Invariant::magnitude)};
  std::vector<int> codes;
  for (const Invariant invariant :
       {Invariant::maxPrincipal, Invariant::midPrincipal, Invariant::minPrincipal, Invariant::mises, Invariant::tresca,
        Invariant::press, Invariant::inv3, Invariant::maxInPlanePrincipal, Invariant::minInPlanePrincipal,
        Invariant::outOfPlanePrincipal}) {
    const bool isOfAllTensors = invariant <= Invariant::minPrincipal || invariant >= Invariant::maxInPlanePrincipal;
    if (isStress || isOfAllTensors) codes.push_back(static_cast<int>(invariant));
  }
  return codes;
}

}  // namespace

FieldMeaning meaningOf(std::string_view name, FieldType type, odbstore::Position position) {
  const Shape shape = shapeOf(type);
  const KnownField* const known = findKnown(plainName(name), shape);
  FieldMeaning meaning;
  meaning.info.type = static_cast<int>(type);
  meaning.info.description = known != nullptr ? known->description : "Result " + std::string(name);
  meaning.info.validInvariants = invariantsOf(shape, known != nullptr && known->description == kStress);
  if (shape == Shape::tensor) meaning.info.componentLabels = odbstore::defaultTensorLabels(meaning.info.type);
  if (shape == Shape::vector) meaning.info.componentLabels = {"1", "2", "3"};
  const bool isOfNodes = shape == Shape::vector;
  if (known != nullptr && (!isOfNodes || position == odbstore::Position::nodal)) {
    meaning.standardName = known->standardName;
  }
  return meaning;
}

}  // namespace importers
