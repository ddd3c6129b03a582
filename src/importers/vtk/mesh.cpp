#include "importers/vtk/mesh.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <set>

#include "base/give_back.h"
#include "importers/vtk/array_reader.h"
#include "importers/vtk/cell_types.h"
#include "importers/vtk/ghosts.h"

namespace importers::vtk {

namespace {

constexpr std::int64_t kMostLabels = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t kMostGroups = 4096;

struct BadCell {
  std::string reason;
};

// Points of a polyhedron out of its faces: their number, and of each the number of its points and these.
std::vector<std::int64_t> pointsOfFaces(std::span<const std::int64_t> faces) {
  std::set<std::int64_t> points;
  std::size_t at = 1;
  const std::int64_t count = faces.empty() ? 0 : faces[0];
  for (std::int64_t face = 0; face < count; ++face) {
    if (at >= faces.size() || faces[at] < 0 || static_cast<std::size_t>(faces[at]) > faces.size() - at - 1) {
      throw BadCell{"has faces that are not complete"};
    }
    const auto of = faces.subspan(at + 1, static_cast<std::size_t>(faces[at]));
    points.insert(of.begin(), of.end());
    at += of.size() + 1;
  }
  return {points.begin(), points.end()};
}

}  // namespace

// The lists of cells of a piece: cell i has the points [begin of i, end of i) of `points`.
struct Mesh::Cells {
  Cells(const InputFile& file, const Piece& piece) {
    if (piece.cells == 0) return;
    types = readIntegers(file, piece.types);
    if (piece.lists == CellLists::counts) {
      points = readIntegers(file, piece.connectivity);
      return;
    }
    ends = readIntegers(file, piece.offsets);
    if (piece.lists == CellLists::begins) {
      if (ends.front() != 0) fail(file, piece, "the first cell does not begin at 0");
      ends.erase(ends.begin());
    }
    if (!std::is_sorted(ends.begin(), ends.end()) || (!ends.empty() && ends.front() < 0)) {
      fail(file, piece, "the ends of cells are not in order");
    }
    StoredArray list = piece.connectivity;
    const auto length = static_cast<std::uint64_t>(ends.empty() ? 0 : ends.back());
    if (length > kMostNumbers) fail(file, piece, "the cells have too many points");
    if (piece.lists == CellLists::begins && list.tuples < length) {
      fail(file, piece, "the cells have more points than the file lists");
    }
    if (piece.lists == CellLists::ends) list.tuples = length;
    points = readIntegers(file, list);
  }

  [[noreturn]] static void fail(const InputFile& file, const Piece& piece, const std::string& reason) {
    throw ImportError(file.path(), piece.connectivity.line, reason);
  }

  // Calls take(place of the cell, its points).
  template <typename Take>
  void each(const InputFile& file, const Piece& piece, const Take& take) const {
    const std::span<const std::int64_t> all(points);
    std::size_t begin = 0;
    for (std::size_t cell = 0; cell < types.size(); ++cell) {
      if (ends.empty()) {
        const bool isThere =
            begin < all.size() && all[begin] >= 0 && static_cast<std::uint64_t>(all[begin]) <= all.size() - begin - 1;
        if (!isThere) fail(file, piece, fmt::format("the list of points ends before the cell {}", cell + 1));
        const auto count = static_cast<std::size_t>(all[begin]);
        take(cell, all.subspan(begin + 1, count));
        begin += count + 1;
      } else {
        const auto end = static_cast<std::size_t>(ends[cell]);
        take(cell, all.subspan(begin, end - begin));
        begin = end;
      }
    }
  }

  std::vector<std::int64_t> types;
  std::vector<std::int64_t> ends;  // empty where the points have counts before them
  std::vector<std::int64_t> points;
};

// Two sums that are the same for the same numbers, and for others nearly never; on purpose is another matter, which
// costs whoever does it their own elements.
struct Mesh::Digest {
  void add(std::uint64_t number) {
    first = (first ^ number) * 0x9E3779B97F4A7C15U;
    first ^= first >> 32U;
    second = (second + number) * 0xC2B2AE3D27D4EB4FU + 1;
    second ^= second >> 29U;
  }
  void add(const std::vector<std::int64_t>& numbers) {
    add(numbers.size());
    for (const std::int64_t number : numbers) add(static_cast<std::uint64_t>(number));
  }

  std::uint64_t first = 0;
  std::uint64_t second = 0;
};

std::size_t Mesh::add(const RunFrame& frame) {
  Digest digest;
  GridOfFrames grid;
  std::vector<std::vector<Cells>> cells;
  for (const GridFile& file : frame.files) {
    const InputFile input(file.path);
    cells.emplace_back();
    for (const Piece& piece : file.grid.pieces) {
      const Cells& read = cells.back().emplace_back(input, piece);
      MeshPiece& made = grid.pieces.emplace_back();
      made.nodes = static_cast<int>(piece.points);
      made.cells = static_cast<int>(piece.cells);
      made.isCopy = copiesAmong(input, piece);
      digest.add(piece.points);
      for (const auto* const list : {&read.types, &read.ends, &read.points}) digest.add(*list);
      digest.add(made.isCopy.size());
      for (const bool isCopy : made.isCopy) digest.add(isCopy ? 1 : 0);
    }
  }
  const auto [known, isNew] = byDigest_.try_emplace({digest.first, digest.second}, grids_.size());
  if (!isNew) return known->second;
  std::size_t number = 0;
  for (std::size_t file = 0; file < frame.files.size(); ++file) {
    const InputFile input(frame.files[file].path);
    for (std::size_t piece = 0; piece < cells[file].size(); ++piece) {
      addPiece(input, frame.files[file].grid.pieces[piece], cells[file][piece], grid.pieces[number++]);
    }
  }
  grids_.push_back(std::move(grid));
  return grids_.size() - 1;
}

void Mesh::addPiece(const InputFile& file, const Piece& piece, const Cells& cells, MeshPiece& to) {
  const auto nodes = static_cast<std::int64_t>(nodes_.size());
  if (nodes + to.nodes > kMostLabels || elements_ + to.cells > kMostLabels) {
    throw ImportError(file.path(), piece.line, "the run has more nodes or elements than labels can count");
  }
  to.firstNode = static_cast<int>(nodes + 1);
  to.firstElement = static_cast<int>(elements_ + 1);
  if (to.nodes > 0) {
    ArrayReader reader(file, piece.coordinates);
    const std::size_t before = coordinates_.size();
    coordinates_.resize(before + piece.coordinates.numbers());
    reader.read(std::span(coordinates_).subspan(before));
  }
  for (int node = 0; node < to.nodes; ++node) nodes_.push_back(to.firstNode + node);
  cells.each(file, piece, [&](std::size_t cell, std::span<const std::int64_t> points) {
    if (!to.isCopy.empty() && to.isCopy[cell]) return;
    try {
      addCell(cells.types[cell], points, piece.lists, to, to.firstElement + static_cast<int>(cell));
    } catch (const BadCell& bad) {
      throw ImportError(file.path(), piece.connectivity.line, fmt::format("the cell {} {}", cell + 1, bad.reason));
    }
  });
  elements_ += to.cells;
}

void Mesh::addCell(std::int64_t code, std::span<const std::int64_t> points, CellLists lists, const MeshPiece& piece,
                   int label) {
  std::vector<std::int64_t> ofFaces;
  if (code == kPolyhedron && lists == CellLists::counts) {
    ofFaces = pointsOfFaces(points);
    points = ofFaces;
  }
  if (code == kEmptyCell || points.empty()) return;
  const CellType* const type = cellType(code, points.size());
  if (type == nullptr) throw BadCell{fmt::format("is of the type {}, which is not known", code)};
  if (type->nodes > 0 && static_cast<std::size_t>(type->nodes) != points.size()) {
    throw BadCell{fmt::format("has {} points, and a {} has {}", points.size(), type->name, type->nodes)};
  }
  ElementGroup& group = groupOf(*type, points.size());
  group.labels.push_back(label);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const std::int64_t point = points[type->order.empty() ? i : static_cast<std::size_t>(type->order[i])];
    if (point < 0 || point >= piece.nodes) {
      throw BadCell{fmt::format("has the point {} of {}", point, piece.nodes)};
    }
    group.connectivity.push_back(piece.firstNode + static_cast<int>(point));
  }
}

ElementGroup& Mesh::groupOf(const CellType& type, std::size_t points) {
  std::unique_ptr<ElementGroup>& group = groups_[{type.code, points}];
  if (group) return *group;
  if (groups_.size() > kMostGroups) {
    throw BadCell{fmt::format("is of one more kind than the {} that a run may have", kMostGroups)};
  }
  group =
      std::make_unique<ElementGroup>(ElementGroup{elementType(type, points), static_cast<int>(points), true, {}, {}});
  return *group;
}

std::vector<const ElementGroup*> Mesh::groups() const {
  std::vector<const ElementGroup*> all;
  for (const auto& [key, group] : groups_) all.push_back(group.get());
  return all;
}

void Mesh::dropElements() {
  base::giveBack(coordinates_);
  groups_.clear();
}

}  // namespace importers::vtk
