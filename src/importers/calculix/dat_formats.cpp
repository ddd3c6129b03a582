#include "importers/calculix/dat_formats.h"

#include <algorithm>

#include "importers/text_fields.h"
#include "odbstore/schema.h"

namespace importers::calculix {

namespace {

using enum DatRows;
using enum DatShape;

constexpr DatFormat kUnknown;

// In the order in which the solver's manual lists what can be printed: at nodes, in elements, of sets, of surfaces, of
// contact, of modes.
constexpr std::array kFormats = {
    DatFormat{"displacements", node, vector, "U", "Spatial displacement"},
    DatFormat{"velocities", node, vector, "V", "Spatial velocity"},
    DatFormat{"forces", node, vector, "RF", "Total external force, loads included"},
    DatFormat{"temperatures", node, scalar, "NT", "Nodal temperature"},
    DatFormat{"heat generation", node, scalar, "RFL", "External concentrated heat source"},
    DatFormat{"static temperatures", node, scalar, "TS", "Static temperature"},
    DatFormat{"total temperatures", node, scalar, "TT", "Total temperature"},
    DatFormat{"static pressures", node, scalar, "PS", "Static pressure"},
    DatFormat{"total pressures", node, scalar, "PT", "Total pressure"},
    DatFormat{"network pressures", node, scalar, "PN", "Network pressure"},
    DatFormat{"mass flows", node, scalar, "MF", "Mass flow"},
    DatFormat{"mach number", node, scalar, "MACH", "Mach number"},
    DatFormat{"pressure coefficients", node, scalar, "CP", "Pressure coefficient"},
    DatFormat{"change in depth", node, scalar, "DEPTH", "Change in depth"},
    DatFormat{"turbulence conservative variables", node, numbered, "TURB", "Turbulence variable"},

    DatFormat{"stresses", integrationPoint, tensor, "S", "Stress components"},
    DatFormat{"strains", integrationPoint, tensor, "E", "Total strain components"},
    DatFormat{"mechanical strains", integrationPoint, tensor, "ME", "Mechanical strain components"},
    DatFormat{"viscous stresses", integrationPoint, tensor, "SV", "Viscous stress components"},
    DatFormat{"equivalent plastic strain", integrationPoint, scalar, "PEEQ", "Equivalent plastic strain"},
    DatFormat{"internal energy density", integrationPoint, scalar, "ENER", "Internal energy density"},
    DatFormat{"heat flux", integrationPoint, vector, "HFL", "Heat flux vector"},
    DatFormat{"internal state variables", integrationPoint, numbered, "SDV", "State variable"},
    DatFormat{"global coordinates", integrationPoint, vector, "COORD", "Coordinates"},

    DatFormat{"internal energy", element, scalar, "ELSE", "Internal energy of the element"},
    DatFormat{"kinetic energy", element, scalar, "ELKE", "Kinetic energy of the element"},
    DatFormat{"volume", element, scalar, "EVOL", "Volume of the element"},
    DatFormat{"mass", element, named, "EMAS", "Mass of the element and its second moments about the origin",
              "EMAS EMXX EMYY EMZZ EMXY EMXZ EMYZ"},
    DatFormat{"body heating", element, scalar, "EBHE", "Body heating of the element"},
    DatFormat{"centrifugal force", element, scalar, "CENT", "Square of the angular velocity of the element"},

    DatFormat{"total force", total, vector, "RF", "Total external force"},
    DatFormat{"total heat generation", total, scalar, "RFL", "Total external heat source"},
    DatFormat{"total internal energy", total, scalar, "ELSE", "Internal energy"},
    DatFormat{"total kinetic energy", total, scalar, "ELKE", "Kinetic energy"},
    DatFormat{"total volume", total, scalar, "EVOL", "Volume"},
    DatFormat{"total body heating", total, scalar, "EBHE", "Body heating"},
    DatFormat{"total mass", total, scalar, "EMAS", "Mass"},
    DatFormat{"center of gravity", total, vector, "ECG", "Centre of gravity"},
    DatFormat{"total mass moment of inertia", total, named, "EM", "Second moments about the origin",
              "EMXX EMYY EMZZ EMXY EMXZ EMYZ"},
    DatFormat{"total mass moment of inertia about the center ofgravity", total, named, "ECM",
              "Second moments about the centre of gravity", "ECMXX ECMYY ECMZZ ECMXY ECMXZ ECMYZ"},
    DatFormat{"total surface flux", total, scalar, "FLUX", "Heat flux through the surface"},

    DatFormat{"statistics", section, scalar, "", "Forces on a surface"},
    DatFormat{"total surface force", total, named, "SO", "Force and moment about the origin",
              "SOF1 SOF2 SOF3 SOM1 SOM2 SOM3"},
    DatFormat{"center of gravity and mean normal", total, named, "SO", "Centre and mean normal",
              "SOCG1 SOCG2 SOCG3 SON1 SON2 SON3"},
    DatFormat{"moment about the center of gravity", total, vector, "SOCM", "Moment about the centre"},
    DatFormat{"area, normal force", total, named, "SO", "Area, normal and shear force, torque and bending moment",
              "SOAREA SONF SOSF SOTORQUE SOBENDING"},

    DatFormat{"relative contact displacement", contactNode, vector, "CDIS", "Contact displacement"},
    DatFormat{"contact stress", contactNode, vector, "CSTR", "Contact stress"},
    DatFormat{"contact print energy", contactNode, scalar, "CELS", "Contact energy"},
    DatFormat{"total contact spring energy", wholeModel, scalar, "CELS", "Contact energy"},
    DatFormat{"total number of contact elements", wholeModel, scalar, "CNUM", "Number of contact elements"},

    DatFormat{"eigenvalue output", mode, named, "EIG", "Eigenvalues", "EIGVAL EIGRAD EIGFREQ EIGIMAG"},
    DatFormat{"buckling factor output", mode, named, "BUCKLE", "Buckling factor", "BUCKLE"},
    DatFormat{"participation factors", mode, named, "PF", "Participation factors", "PF1 PF2 PF3 PF4 PF5 PF6"},
    DatFormat{"effective modal mass", mode, named, "EM", "Effective modal mass", "EM1 EM2 EM3 EM4 EM5 EM6"},
    DatFormat{"total effective mass", modeSum, named, "TEM", "Total effective mass", "TEM1 TEM2 TEM3 TEM4 TEM5 TEM6"},
    DatFormat{"participation factors for frequency", frequency, named, "MF", "Factors of a mode", "MF MF_IM"},
    DatFormat{"eigenvalue number", eigenvalue, scalar, "", "Mode"},
    DatFormat{"real part", realPart, scalar, "", "Real part"},
    DatFormat{"imaginary part", imaginaryPart, scalar, "", "Imaginary part"},
};

constexpr std::size_t kVectorWidth = 3;
// The frequency of the mode comes before its factors.
constexpr std::size_t kNumbersBeforeFactors = 1;
// Real modes have an eigenvalue, complex ones begin with their frequency.
constexpr std::size_t kNumbersOfComplexMode = 3;
constexpr std::size_t kNumbersOfRealMode = 4;

// Tables of contact are for nodes or for the points of faces by the same title; the words in their parentheses tell.
constexpr std::array kFaceFormats = {
    DatFormat{"relative contact displacement", contactFace, vector, "CDIS", "Contact displacement"},
    DatFormat{"contact stress", contactFace, vector, "CSTR", "Contact stress"},
    DatFormat{"contact print energy", contactFace, scalar, "CELS", "Contact energy"},
};

std::string_view wordAt(std::string_view words, std::size_t place) {
  for (; place > 0 && !words.empty(); --place) words.remove_prefix(std::min(words.find(' '), words.size() - 1) + 1);
  return words.substr(0, words.find(' '));
}

std::size_t labelsOf(DatRows rows) {
  switch (rows) {
    case node:
    case element:
    case contactNode:
    case frequency:
      return 1;
    case integrationPoint:
    case contactFace:
      return 2;
    default:
      return 0;
  }
}

// Modes of cyclic models come with their nodal diameter before them.
bool readMode(const DatRow& row, std::size_t& at, DatValues& values) {
  for (; at < row.size() && at < 2; ++at) {
    const std::optional<int> label = integerFrom(row[at]);
    if (!label) break;
    values.labels[0] = values.labels[1];
    values.labels[1] = *label;
  }
  std::swap(values.labels[0], values.labels[1]);
  return at > 0;
}

template <std::size_t count>
const DatFormat* findIn(const std::array<DatFormat, count>& formats, std::string_view title) {
  const auto found =
      std::find_if(formats.begin(), formats.end(), [&](const DatFormat& format) { return format.title == title; });
  return found == formats.end() ? nullptr : &*found;
}

}  // namespace

std::size_t DatFormat::width() const {
  switch (shape) {
    case vector:
      return kVectorWidth;
    case tensor:
      return odbstore::kTensorComponents.size();
    case named:
      if (rows == mode && name == "EIG") return kNumbersOfComplexMode;
      return static_cast<std::size_t>(std::count(columns.begin(), columns.end(), ' ')) + 1 +
             (rows == frequency ? kNumbersBeforeFactors : 0);
    case scalar:
    case numbered:
      break;
  }
  return 1;
}

std::string DatFormat::outputName(std::size_t column) const {
  switch (shape) {
    case tensor:
      return std::string(name).append(odbstore::kTensorComponents[column]);
    case vector:
    case numbered:
      return std::string(name) + std::to_string(column + 1);
    case named:
      return std::string(wordAt(columns, column));
    case scalar:
      break;
  }
  return std::string(name);
}

bool DatFormat::isOfMesh() const {
  return rows == node || rows == integrationPoint || rows == element || rows == contactNode || rows == contactFace;
}

bool DatFormat::isMark() const {
  return rows == section || rows == eigenvalue || rows == realPart || rows == imaginaryPart;
}

const DatFormat& datFormatOf(const DatTable& table) {
  if (table.isOfFaces) {
    if (const DatFormat* const format = findIn(kFaceFormats, table.title)) return *format;
  }
  const DatFormat* const format = findIn(kFormats, table.title);
  return format != nullptr ? *format : kUnknown;
}

bool readDatRow(const DatFormat& format, const DatRow& row, DatValues& values) {
  values.labels = {};
  values.numbers.clear();
  std::size_t at = 0;
  if (format.rows == mode && !readMode(row, at, values)) return false;
  for (const std::size_t labels = labelsOf(format.rows); at < labels; ++at) {
    const std::optional<int> label = at < row.size() ? integerFrom(row[at]) : std::nullopt;
    if (!label) return false;
    values.labels[at] = *label;
  }
  const std::size_t most = format.shape == numbered ? row.size()
                           : format.name == "EIG"   ? kNumbersOfRealMode
                                                    : format.width();
  for (; at < row.size() && values.numbers.size() < most; ++at) {
    const std::optional<double> number = numberFrom(row[at]);
    if (!number) break;
    values.numbers.push_back(*number);
  }
  return values.numbers.size() >= format.width();
}

}  // namespace importers::calculix
