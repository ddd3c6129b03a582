// The grids of a run as one mesh: which frames have the same, and the labels of what is in each.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "importers/run/element_groups.h"
#include "importers/vtk/cell_types.h"
#include "importers/vtk/run_frames.h"

namespace importers::vtk {

// A piece of a grid with its labels: those of its points are firstNode, firstNode + 1, ..., and so on.
struct MeshPiece {
  int firstNode = 1;
  int nodes = 0;
  int firstElement = 1;
  int cells = 0;
  // Of each cell whether it is a copy of one that another piece has; empty where none is.
  std::vector<bool> isCopy;
};

// The grid of one frame or several: the pieces of its files, one after the other.
struct GridOfFrames {
  std::vector<MeshPiece> pieces;
};

class Mesh {
 public:
  // The number of the grid that a frame has, from 0: reads its cells, and adds them where no earlier frame has the
  // same, with coordinates then. Labels go on from grid to grid. Throws ImportError.
  std::size_t add(const RunFrame& frame);

  const GridOfFrames& grid(std::size_t number) const { return grids_[number]; }
  std::size_t grids() const { return grids_.size(); }

  const std::vector<int>& nodes() const { return nodes_; }
  const std::vector<double>& coordinates() const { return coordinates_; }
  std::vector<const ElementGroup*> groups() const;

  // Gives back the room of coordinates and elements, which are not known any more then.
  void dropElements();

 private:
  struct Cells;
  struct Digest;

  void addPiece(const InputFile& file, const Piece& piece, const Cells& cells, MeshPiece& to);
  void addCell(std::int64_t code, std::span<const std::int64_t> points, CellLists lists, const MeshPiece& piece,
               int label);
  ElementGroup& groupOf(const CellType& type, std::size_t points);

  std::vector<GridOfFrames> grids_;
  std::map<std::pair<std::uint64_t, std::uint64_t>, std::size_t> byDigest_;
  std::vector<int> nodes_;
  std::vector<double> coordinates_;
  std::int64_t elements_ = 0;
  std::map<std::pair<int, std::size_t>, std::unique_ptr<ElementGroup>> groups_;  // by type and number of points
};

}  // namespace importers::vtk
