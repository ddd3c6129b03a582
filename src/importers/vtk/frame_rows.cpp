#include "importers/vtk/frame_rows.h"

#include <algorithm>

#include "importers/vtk/array_reader.h"

namespace importers::vtk {

namespace {

constexpr std::size_t kTileNumbers = std::size_t{1} << 15U;

std::uint64_t rowsOf(const Piece& piece, const FieldPlan& plan) {
  return plan.position == odbstore::Position::nodal ? piece.points : piece.cells;
}

const std::vector<bool>* copiesOf(const MeshPiece& piece, const FieldPlan& plan) {
  return plan.position == odbstore::Position::nodal || piece.isCopy.empty() ? nullptr : &piece.isCopy;
}

// Calls take(file, piece, piece of the grid) for those that have the field.
template <typename Take>
void eachPiece(const RunFrame& frame, const GridOfFrames& grid, const FieldPlan& plan, const Take& take) {
  std::size_t number = 0;
  for (const GridFile& file : frame.files) {
    for (const Piece& piece : file.grid.pieces) {
      const MeshPiece& of = grid.pieces[number++];
      if (hasRows(piece, plan)) take(file, piece, of);
    }
  }
}

// Some columns of an array into those of the rows that they become, `width` numbers wide.
template <typename Number>
void scatter(const InputFile& input, const StoredArray& array, const FieldPlan& plan, std::size_t place, Number* rows,
             std::size_t width, std::vector<Number>& room) {
  std::vector<std::pair<std::size_t, std::size_t>> columns;  // from, to
  for (std::size_t to = 0; to < width; ++to) {
    if (plan.columns[to] && plan.columns[to]->array == place) columns.emplace_back(plan.columns[to]->component, to);
  }
  ArrayReader reader(input, array);
  const std::size_t each = std::max<std::size_t>(kTileNumbers / array.components, 1);
  room.resize(std::min<std::uint64_t>(each, array.tuples) * array.components);
  for (std::uint64_t done = 0; done < array.tuples;) {
    const std::size_t count = std::min<std::uint64_t>(each, array.tuples - done);
    reader.read(std::span(room).first(count * array.components));
    for (const auto& [from, to] : columns) {
      for (std::size_t row = 0; row < count; ++row) rows[row * width + to] = room[row * array.components + from];
    }
    rows += count * width;
    done += count;
  }
}

}  // namespace

std::vector<int> labelsOf(const RunFrame& frame, const GridOfFrames& grid, const FieldPlan& plan) {
  std::vector<int> labels;
  eachPiece(frame, grid, plan, [&](const GridFile&, const Piece& piece, const MeshPiece& of) {
    const bool isNodal = plan.position == odbstore::Position::nodal;
    const int first = isNodal ? of.firstNode : of.firstElement;
    const std::vector<bool>* const copies = copiesOf(of, plan);
    for (std::size_t row = 0; row < rowsOf(piece, plan); ++row) {
      if (copies == nullptr || !(*copies)[row]) labels.push_back(first + static_cast<int>(row));
    }
  });
  return labels;
}

template <typename Number>
void readRows(const RunFrame& frame, const GridOfFrames& grid, const FieldPlan& plan, std::vector<Number>& values) {
  const std::size_t width = plan.columns.size();
  std::vector<Number> room;
  values.clear();
  eachPiece(frame, grid, plan, [&](const GridFile& file, const Piece& piece, const MeshPiece& of) {
    const InputFile input(file.path);
    const std::size_t before = values.size();
    const std::size_t rows = rowsOf(piece, plan);
    // Only once the file is known to have them is there room for them.
    for (const PlannedArray& array : plan.arrays) ArrayReader(input, *findArray(piece, plan.position, array));
    values.resize(before + rows * width);
    if (plan.isArray()) {
      ArrayReader(input, *findArray(piece, plan.position, plan.arrays.front())).read(std::span(values).subspan(before));
    } else {
      for (std::size_t place = 0; place < plan.arrays.size(); ++place) {
        scatter(input, *findArray(piece, plan.position, plan.arrays[place]), plan, place, values.data() + before, width,
                room);
      }
    }
    if (const std::vector<bool>* const copies = copiesOf(of, plan)) {
      auto to = values.begin() + static_cast<std::ptrdiff_t>(before);
      for (std::size_t row = 0; row < rows; ++row) {
        if ((*copies)[row]) continue;
        const auto from = values.begin() + static_cast<std::ptrdiff_t>(before + row * width);
        to = std::copy(from, from + static_cast<std::ptrdiff_t>(width), to);
      }
      values.erase(to, values.end());
    }
  });
}

template void readRows(const RunFrame&, const GridOfFrames&, const FieldPlan&, std::vector<float>&);
template void readRows(const RunFrame&, const GridOfFrames&, const FieldPlan&, std::vector<double>&);

std::size_t countRows(const RunFrame& frame, const FieldPlan& plan) {
  std::uint64_t rows = 0;
  for (const GridFile& file : frame.files) {
    for (const Piece& piece : file.grid.pieces) {
      if (!hasRows(piece, plan)) continue;
      rows += rowsOf(piece, plan) - (plan.position == odbstore::Position::nodal ? 0 : piece.copies);
    }
  }
  return rows;
}

}  // namespace importers::vtk
