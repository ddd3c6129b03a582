// Sets of a run: its blocks, and elements by the whole numbers of cell arrays.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "importers/run/outline.h"
#include "importers/run/sink.h"
#include "importers/vtk/mesh.h"

namespace importers::vtk {

class RunSets {
 public:
  // Each block becomes a set of its elements and one of its nodes; each value of an array of `idArrays` a set of the
  // elements with it, "MaterialIds_3". Reads those arrays. Throws ImportError for an array that no file has, that has
  // no whole numbers, or more than 10,000 different ones.
  RunSets(const RunFrames& run, const std::vector<std::string>& idArrays, const std::string& path);

  // In the order of the files; members are those of the first frame that has any.
  void addTo(Outline& outline) const;

  // The members that a frame of this grid has, for the first frame of each grid.
  void take(const RunFrame& frame, const GridOfFrames& grid);
  // In the order of addTo(), after the last take().
  void deliver(Sink& sink) const;

 private:
  struct Set {
    odbstore::SetKind kind = odbstore::SetKind::element;
    std::string name;
    bool isOfBlock = false;
    std::size_t counted = 0;
    std::vector<int> members;
  };

  std::size_t setOf(odbstore::SetKind kind, const std::string& name, bool isOfBlock);
  void lookAtIds(const RunFrame& frame, const std::string& array, bool isCounted);

  std::string path_;
  std::vector<std::string> idArrays_;
  std::vector<Set> sets_;
  std::map<std::pair<odbstore::SetKind, std::string>, std::size_t> places_;
};

// Cell arrays of whole numbers that would make sets.
std::vector<std::string> idArraysOf(const RunFrames& run);

}  // namespace importers::vtk
