#include "importers/vtk/cell_types.h"

#include <algorithm>
#include <array>

namespace importers::vtk {

namespace {

// Pixels and voxels count their points along the axes, not around.
constexpr std::array<int, 4> kPixel = {0, 1, 3, 2};
constexpr std::array<int, 8> kVoxel = {0, 1, 3, 2, 4, 5, 7, 6};
// The elements of the database have the middle of a line between its ends (elements/shape_functions.h), and the bottom
// of a wedge with its normal into the wedge; VTK has it pointing out (vtkWedge.h).
constexpr std::array<int, 3> kLine3 = {0, 2, 1};
constexpr std::array<int, 6> kWedge6 = {0, 2, 1, 3, 5, 4};
constexpr std::array<int, 15> kWedge15 = {0, 2, 1, 3, 5, 4, 8, 7, 6, 11, 10, 9, 12, 14, 13};

constexpr std::array kCellTypes = {
    CellType{1, "POINT1", 1, {}},
    CellType{2, "POINTS", 0, {}},
    CellType{3, "LINE2", 2, {}},
    CellType{4, "POLYLINE", 0, {}},
    CellType{5, "TRI3", 3, {}},
    CellType{6, "STRIP", 0, {}},
    CellType{7, "POLYGON", 0, {}},
    CellType{8, "QUAD4", 4, kPixel},
    CellType{9, "QUAD4", 4, {}},
    CellType{10, "TET4", 4, {}},
    CellType{11, "HEX8", 8, kVoxel},
    CellType{12, "HEX8", 8, {}},
    CellType{13, "WEDGE6", 6, kWedge6},
    CellType{14, "PYRAMID5", 5, {}},
    CellType{15, "PRISM10", 10, {}},
    CellType{16, "PRISM12", 12, {}},
    CellType{21, "LINE3", 3, kLine3},
    CellType{22, "TRI6", 6, {}},
    CellType{23, "QUAD8", 8, {}},
    CellType{24, "TET10", 10, {}},
    CellType{25, "HEX20", 20, {}},
    CellType{26, "WEDGE15", 15, kWedge15},
    CellType{27, "PYRAMID13", 13, {}},
    CellType{28, "QUAD9", 9, {}},
    CellType{29, "HEX27", 27, {}},
    CellType{30, "QUAD6", 6, {}},
    CellType{31, "WEDGE12", 12, {}},
    CellType{32, "WEDGE18", 18, {}},
    CellType{33, "HEX24", 24, {}},
    CellType{34, "TRI7", 7, {}},
    CellType{35, "LINE4", 4, {}},
    CellType{36, "QUADRATIC_POLYGON", 0, {}},
    CellType{37, "PYRAMID19", 19, {}},
    CellType{41, "POINT_SET", 0, {}},
    CellType{42, "POLYHEDRON", 0, {}},
    CellType{51, "CURVE", 0, {}},
    CellType{52, "TRI_PATCH", 0, {}},
    CellType{53, "QUAD_PATCH", 0, {}},
    CellType{60, "HIGHER_LINE", 0, {}},
    CellType{61, "HIGHER_TRI", 0, {}},
    CellType{62, "HIGHER_QUAD", 0, {}},
    CellType{63, "HIGHER_POLYGON", 0, {}},
    CellType{64, "HIGHER_TET", 0, {}},
    CellType{65, "HIGHER_WEDGE", 0, {}},
    CellType{66, "HIGHER_PYRAMID", 0, {}},
    CellType{67, "HIGHER_HEX", 0, {}},
    CellType{68, "LAGRANGE_LINE", 0, {}},
    CellType{69, "LAGRANGE_TRI", 0, {}},
    CellType{70, "LAGRANGE_QUAD", 0, {}},
    CellType{71, "LAGRANGE_TET", 0, {}},
    CellType{72, "LAGRANGE_HEX", 0, {}},
    CellType{73, "LAGRANGE_WEDGE", 0, {}},
    CellType{74, "LAGRANGE_PYRAMID", 0, {}},
    CellType{75, "BEZIER_LINE", 0, {}},
    CellType{76, "BEZIER_TRI", 0, {}},
    CellType{77, "BEZIER_QUAD", 0, {}},
    CellType{78, "BEZIER_TET", 0, {}},
    CellType{79, "BEZIER_HEX", 0, {}},
    CellType{80, "BEZIER_WEDGE", 0, {}},
    CellType{81, "BEZIER_PYRAMID", 0, {}},
};

// Cells with any number of points that are another kind of cell when they have so many.
struct SameCell {
  int code;
  std::size_t points;
  int plain;
};
constexpr std::array kSameCells = {
    SameCell{4, 2, 3},   SameCell{7, 3, 5},   SameCell{7, 4, 9},    SameCell{68, 2, 3},
    SameCell{68, 3, 21}, SameCell{69, 3, 5},  SameCell{69, 6, 22},  SameCell{70, 4, 9},
    SameCell{70, 9, 28}, SameCell{71, 4, 10}, SameCell{71, 10, 24}, SameCell{72, 8, 12},
};

// Places in kCellTypes by number, and after them for numbers that no cell has.
constexpr std::size_t kCodes = 82;
constexpr std::array<unsigned char, kCodes> kPlaces = [] {
  std::array<unsigned char, kCodes> places{};
  places.fill(kCellTypes.size());
  for (std::size_t place = 0; place < kCellTypes.size(); ++place) {
    places[static_cast<std::size_t>(kCellTypes[place].code)] = static_cast<unsigned char>(place);
  }
  return places;
}();

const CellType* typeOf(std::int64_t code) {
  if (code < 0 || code >= static_cast<std::int64_t>(kCodes)) return nullptr;
  const std::size_t place = kPlaces[static_cast<std::size_t>(code)];
  return place < kCellTypes.size() ? &kCellTypes[place] : nullptr;
}

}  // namespace

const CellType* cellType(std::int64_t code, std::size_t points) {
  const CellType* const type = typeOf(code);
  if (type == nullptr || type->nodes > 0) return type;
  const auto same = std::find_if(kSameCells.begin(), kSameCells.end(),
                                 [&](const SameCell& one) { return one.code == code && one.points == points; });
  return same == kSameCells.end() ? type : typeOf(same->plain);
}

std::string elementType(const CellType& type, std::size_t points) {
  return type.nodes > 0 ? type.name : type.name + std::to_string(points);
}

}  // namespace importers::vtk
