#include "importers/calculix/dat/dat_formats.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "importers/input/text_fields.h"
#include "odbstore/schema.h"

namespace importers::calculix {

namespace {

using enum DatRows;
using enum DatShape;

constexpr DatFormat kUnknown;

// In the order in which the solver's manual lists what can be printed: at nodes, in elements, of sets, of surfaces, of
// contact, of modes.
constexpr std::array kFormats = {
    DatFormat{"displacements", node, vector, "U", "Spatial displacement", "U"},
    DatFormat{"velocities", node, vector, "V", "Spatial velocity", "V VF"},
    DatFormat{"forces", node, vector, "RF", "Total external force, loads included", "RF"},
    DatFormat{"temperatures", node, scalar, "NT", "Nodal temperature", "NT"},
    DatFormat{"heat generation", node, scalar, "RFL", "External concentrated heat source", "RFL"},
    DatFormat{"static temperatures", node, scalar, "TS", "Static temperature", "TSF TS"},
    DatFormat{"total temperatures", node, scalar, "TT", "Total temperature", "TTF TT"},
    DatFormat{"static pressures", node, scalar, "PS", "Static pressure", "PSF PS"},
    DatFormat{"total pressures", node, scalar, "PT", "Total pressure", "PTF PT"},
    DatFormat{"network pressures", node, scalar, "PN", "Network pressure", "PN"},
    DatFormat{"mass flows", node, scalar, "MF", "Mass flow", "MF"},
    DatFormat{"mach number", node, scalar, "MACH", "Mach number"},
    DatFormat{"pressure coefficients", node, scalar, "CP", "Pressure coefficient"},
    DatFormat{"change in depth", node, scalar, "DEPTH", "Change in depth"},
    DatFormat{"turbulence conservative variables", node, numbered, "TURB", "Turbulence variable"},

    DatFormat{"stresses", integrationPoint, tensor, "S", "Stress components", "S", "", {.isStress = true}},
    DatFormat{"strains", integrationPoint, tensor, "E", "Total strain components", "E"},
    DatFormat{"mechanical strains", integrationPoint, tensor, "ME", "Mechanical strain components", "ME"},
    DatFormat{
        "viscous stresses", integrationPoint, tensor, "SV", "Viscous stress components", "SVF", "", {.isStress = true}},
    DatFormat{"equivalent plastic strain", integrationPoint, scalar, "PEEQ", "Equivalent plastic strain", "PEEQ"},
    DatFormat{"internal energy density", integrationPoint, scalar, "ENER", "Internal energy density", "ENER"},
    DatFormat{"heat flux", integrationPoint, vector, "HFL", "Heat flux vector", "HFL HFLF"},
    DatFormat{"internal state variables", integrationPoint, numbered, "SDV", "State variable", "SDV"},
    DatFormat{"global coordinates", integrationPoint, vector, "COORD", "Coordinates", "COORD"},

    DatFormat{"internal energy", element, scalar, "ELSE", "Internal energy of the element", "ELSE"},
    DatFormat{"kinetic energy", element, scalar, "ELKE", "Kinetic energy of the element", "ELKE"},
    DatFormat{"volume", element, scalar, "EVOL", "Volume of the element", "EVOL"},
    DatFormat{"mass", element, named, "EMAS", "Mass of the element and its second moments about the origin", "EMAS",
              "EMAS EMXX EMYY EMZZ EMXY EMXZ EMYZ"},
    DatFormat{"body heating", element, scalar, "EBHE", "Body heating of the element", "EBHE"},
    DatFormat{"centrifugal force", element, scalar, "CENT", "Square of the angular velocity of the element", "CENT"},

    DatFormat{"total force", total, vector, "RF", "Total external force", "RF", "", {.isOfNodes = true}},
    DatFormat{
        "total heat generation", total, scalar, "RFL", "Total external heat source", "RFL", "", {.isOfNodes = true}},
    DatFormat{"total internal energy", total, scalar, "ELSE", "Internal energy", "ELSE"},
    DatFormat{"total kinetic energy", total, scalar, "ELKE", "Kinetic energy", "ELKE"},
    DatFormat{"total volume", total, scalar, "EVOL", "Volume", "EVOL"},
    DatFormat{"total body heating", total, scalar, "EBHE", "Body heating", "EBHE"},
    DatFormat{"total mass", total, scalar, "EMAS", "Mass", "EMAS"},
    DatFormat{"center of gravity", total, vector, "ECG", "Centre of gravity", "EMAS"},
    DatFormat{"total mass moment of inertia", total, named, "EM", "Second moments about the origin", "EMAS",
              "EMXX EMYY EMZZ EMXY EMXZ EMYZ"},
    DatFormat{"total mass moment of inertia about the center ofgravity", total, named, "ECM",
              "Second moments about the centre of gravity", "EMAS", "ECMXX ECMYY ECMZZ ECMXY ECMXZ ECMYZ"},
    DatFormat{"total surface flux", total, scalar, "FLUX", "Heat flux through the surface"},

    DatFormat{"statistics", section, scalar, "", "Forces on a surface", "SOF CF CFN CFS"},
    DatFormat{"total surface force", total, named, "SO", "Force and moment about the origin", "",
              "SOF1 SOF2 SOF3 SOM1 SOM2 SOM3"},
    DatFormat{"center of gravity and mean normal", total, named, "SO", "Centre and mean normal", "",
              "SOCG1 SOCG2 SOCG3 SON1 SON2 SON3"},
    DatFormat{"moment about the center of gravity", total, vector, "SOCM", "Moment about the centre"},
    // Those of contact have neither torque nor bending moment.
    DatFormat{"area, normal force",
              total,
              named,
              "SO",
              "Area, normal and shear force, torque and bending moment",
              "",
              "SOAREA SONF SOSF SOTORQUE SOBENDING",
              {.words = "area|normal force|shear force|torque|bending moment"}},

    DatFormat{"relative contact displacement", contactNode, vector, "CDIS", "Contact displacement", "CDIS"},
    DatFormat{"contact stress", contactNode, vector, "CSTR", "Contact stress", "CSTR"},
    DatFormat{"contact print energy", contactNode, scalar, "CELS", "Contact energy", "CELS"},
    DatFormat{"total contact spring energy", wholeModel, scalar, "CELS", "Contact energy", "CELS"},
    DatFormat{"total number of contact elements", wholeModel, scalar, "CNUM", "Number of contact elements", "CNUM"},

    // Complex modes have no eigenvalue in their first column.
    DatFormat{"eigenvalue output",
              mode,
              named,
              "EIG",
              "Eigenvalues",
              "",
              "EIGVAL EIGRAD EIGFREQ EIGIMAG",
              {.optionalColumns = 1, .begins = DatBegins::modes}},
    DatFormat{"buckling factor output",
              mode,
              named,
              "BUCKLE",
              "Buckling factor",
              "",
              "BUCKLE",
              {.begins = DatBegins::bucklingModes}},
    DatFormat{"participation factors", mode, named, "PF", "Participation factors", "", "PF1 PF2 PF3 PF4 PF5 PF6"},
    DatFormat{"effective modal mass", mode, named, "EM", "Effective modal mass", "", "EM1 EM2 EM3 EM4 EM5 EM6"},
    DatFormat{"total effective mass", modeSum, named, "TEM", "Total effective mass", "",
              "TEM1 TEM2 TEM3 TEM4 TEM5 TEM6"},
    DatFormat{"participation factors for frequency", frequency, named, "MF", "Factors of a mode", "", "- MF MF_IM"},
    DatFormat{"eigenvalue number", eigenvalue, scalar, "", "Mode"},
    DatFormat{"real part", realPart, scalar, "", "Real part"},
    DatFormat{"imaginary part", imaginaryPart, scalar, "", "Imaginary part"},

    DatFormat{"participation factors for mode", ignored, scalar, "", ""},
    DatFormat{"modal assurance criterium", ignored, scalar, "", ""},
    DatFormat{"eigenmode turning direction", ignored, scalar, "", ""},
    DatFormat{"heat flux at the integration points", ignored, scalar, "", ""},
    DatFormat{"el fa int heat flux q and coordinates", ignored, scalar, "", ""},
};

constexpr std::size_t kVectorWidth = 3;
constexpr std::string_view kNoResult = "-";

// Tables of contact are for nodes or for the points of faces by the same title; the words in their parentheses tell.
constexpr std::array kFaceFormats = {
    DatFormat{"relative contact displacement", contactFace, vector, "CDIS", "Contact displacement", "CDIS"},
    DatFormat{"contact stress", contactFace, vector, "CSTR", "Contact stress", "CSTR"},
    DatFormat{"contact print energy", contactFace, scalar, "CELS", "Contact energy", "CELS"},
};

std::string_view wordAt(std::string_view words, std::size_t place) {
  for (; place > 0 && !words.empty(); --place) words.remove_prefix(std::min(words.find(' '), words.size() - 1) + 1);
  return words.substr(0, words.find(' '));
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
  values.hasDiameter = at == 2;
  return at > 0;
}

// The columns whose words occur in a heading, in the order of the heading.
std::vector<std::size_t> columnsNamed(std::string_view words, std::string_view heading) {
  std::map<std::size_t, std::size_t> byPlace;
  for (std::size_t column = 0; !words.empty(); ++column) {
    const std::string_view word = words.substr(0, words.find('|'));
    if (const std::size_t place = heading.find(word); place != std::string_view::npos) byPlace[place] = column;
    words.remove_prefix(std::min(word.size() + 1, words.size()));
  }
  std::vector<std::size_t> columns;
  for (const auto& [place, column] : byPlace) columns.push_back(column);
  return columns;
}

template <std::size_t count>
const DatFormat* findIn(const std::array<DatFormat, count>& formats, std::string_view title) {
  const auto found =
      std::find_if(formats.begin(), formats.end(), [&](const DatFormat& format) { return format.title == title; });
  return found == formats.end() ? nullptr : &*found;
}

}  // namespace

std::size_t DatFormat::labels() const {
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

std::size_t DatFormat::width() const {
  switch (shape) {
    case vector:
      return kVectorWidth;
    case tensor:
      return odbstore::kTensorComponents.size();
    case named:
      return static_cast<std::size_t>(std::count(columns.begin(), columns.end(), ' ')) + 1;
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
      return wordAt(columns, column) == kNoResult ? "" : std::string(wordAt(columns, column));
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

bool DatFormat::isAskedBy(std::string_view key) const {
  for (std::size_t place = 0;; ++place) {
    const std::string_view word = wordAt(keys, place);
    if (word.empty()) return false;
    if (word == key) return true;
  }
}

std::span<const DatFormat> datFormats() { return kFormats; }

const DatFormat& datFormatOf(const DatTable& table) {
  if (table.isOfFaces) {
    if (const DatFormat* const format = findIn(kFaceFormats, table.title)) return *format;
  }
  const DatFormat* const format = findIn(kFormats, table.title);
  return format != nullptr ? *format : kUnknown;
}

std::optional<std::vector<std::size_t>> datColumns(const DatFormat& format, std::string_view heading,
                                                   std::size_t numbers) {
  std::vector<std::size_t> found;
  if (!format.traits.words.empty()) {
    found = columnsNamed(format.traits.words, heading);
  } else {
    const std::size_t width = format.shape == numbered ? numbers : format.width();
    found.resize(width);
    std::iota(found.begin(), found.end(), std::size_t{0});
    const auto optional = static_cast<std::ptrdiff_t>(format.traits.optionalColumns);
    if (numbers < width) found.erase(found.begin(), found.begin() + optional);
  }
  if (found.size() != numbers) return std::nullopt;
  return found;
}

bool isRemark(const DatRow& row) { return row.front().front() >= 'A' && !numberFrom(row.front()); }

bool readDatRow(const DatFormat& format, const DatRow& row, DatValues& values) {
  values.labels = {};
  values.numbers.clear();
  std::size_t at = 0;
  if (format.rows == mode && !readMode(row, at, values)) return false;
  for (const std::size_t labels = format.labels(); at < labels; ++at) {
    const std::optional<int> label = at < row.size() ? integerFrom(row[at]) : std::nullopt;
    if (!label) return false;
    values.labels[at] = *label;
  }
  const std::size_t most = format.shape == numbered ? row.size() : format.width();
  for (; at < row.size() && values.numbers.size() < most; ++at) {
    const std::optional<double> number = numberFrom(row[at]);
    if (!number) break;
    values.numbers.push_back(*number);
  }
  const bool mayBeLocal = format.rows == node || format.rows == integrationPoint;
  values.isLocal = mayBeLocal && at + 1 == row.size();
  const bool isFixed = format.shape != numbered && format.traits.words.empty();
  const std::size_t least = isFixed ? format.width() - format.traits.optionalColumns : 1;
  return values.numbers.size() >= least && (at == row.size() || values.isLocal);
}

}  // namespace importers::calculix
