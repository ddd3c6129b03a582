#include "importers/vtk/run_sets.h"

#include <fmt/format.h>

#include <algorithm>

#include "importers/input/text_fields.h"
#include "importers/vtk/array_reader.h"
#include "importers/vtk/ghosts.h"

namespace importers::vtk {

namespace {

using odbstore::SetKind;

constexpr std::size_t kMostIds = 10'000;

const StoredArray* idArray(const Piece& piece, const std::string& name) {
  const auto found = std::find_if(piece.cellData.begin(), piece.cellData.end(), [&](const StoredArray& array) {
    return array.components == 1 && upperCased(utf8Text(array.name)) == upperCased(name);
  });
  return found == piece.cellData.end() ? nullptr : &*found;
}

std::string nameOf(const StoredArray& array, std::int64_t id) { return fmt::format("{}_{}", utf8Text(array.name), id); }

// Names of blocks without any that another one of them repeats.
std::vector<std::string> blocksOf(const GridFile& file) {
  std::vector<std::string> names;
  for (const std::string& block : file.blocks) {
    const std::string name = utf8Text(block);
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }
  return names;
}

}  // namespace

std::vector<std::string> idArraysOf(const RunFrames& run) {
  std::vector<std::string> names;
  for (const GridFile& file : run.frames.front().files) {
    for (const Piece& piece : file.grid.pieces) {
      for (const StoredArray& array : piece.cellData) {
        if (array.components != 1 || !isInteger(array.type) || isOfGhosts(array.name)) continue;
        const std::string name = utf8Text(array.name);
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
      }
    }
  }
  return names;
}

RunSets::RunSets(const RunFrames& run, const std::vector<std::string>& idArrays, const std::string& path)
    : path_(path), idArrays_(idArrays) {
  bool isFirst = true;
  for (const RunFrame& frame : run.frames) {
    for (const GridFile& file : frame.files) {
      for (const std::string& name : blocksOf(file)) {
        for (const SetKind kind : {SetKind::element, SetKind::node}) {
          Set& set = sets_[setOf(kind, name, true)];
          if (!isFirst) continue;
          for (const Piece& piece : file.grid.pieces) {
            set.counted += kind == SetKind::node ? piece.points : piece.cells - piece.copies;
          }
        }
      }
    }
    for (const std::string& array : idArrays_) lookAtIds(frame, array, isFirst);
    isFirst = false;
  }
}

std::size_t RunSets::setOf(SetKind kind, const std::string& name, bool isOfBlock) {
  const auto [known, isNew] = places_.try_emplace({kind, name}, sets_.size());
  if (isNew) sets_.push_back({kind, name, isOfBlock, 0, {}});
  return known->second;
}

void RunSets::lookAtIds(const RunFrame& frame, const std::string& array, bool isCounted) {
  std::map<std::int64_t, std::size_t> counts;
  std::string name;
  for (const GridFile& file : frame.files) {
    const InputFile input(file.path);
    for (const Piece& piece : file.grid.pieces) {
      const StoredArray* const ids = idArray(piece, array);
      if (ids == nullptr) continue;
      name = utf8Text(ids->name);
      for (const std::int64_t id : readIntegers(input, *ids)) {
        ++counts[id];
        if (counts.size() > kMostIds) {
          throw ImportError(input.path(), ids->line,
                            fmt::format("the array \"{}\" has more than {} different values", name, kMostIds));
        }
      }
    }
  }
  if (name.empty() && isCounted) {
    throw ImportError(path_, 0, fmt::format("there is no cell array {} to make sets of", array));
  }
  for (const auto& [id, count] : counts) {
    Set& set = sets_[setOf(SetKind::element, fmt::format("{}_{}", name, id), false)];
    if (isCounted) set.counted = count;
  }
}

void RunSets::addTo(Outline& outline) const {
  for (const Set& set : sets_) {
    outline.sets.push_back({set.kind, set.name, set.isOfBlock, set.counted, {path_}});
  }
}

void RunSets::take(const RunFrame& frame, const GridOfFrames& grid) {
  std::size_t number = 0;
  for (const GridFile& file : frame.files) {
    const InputFile input(file.path);
    const std::vector<std::string> blocks = blocksOf(file);
    for (const Piece& piece : file.grid.pieces) {
      const MeshPiece& of = grid.pieces[number++];
      const auto isThere = [&](int cell) { return of.isCopy.empty() || !of.isCopy[static_cast<std::size_t>(cell)]; };
      for (const std::string& name : blocks) {
        std::vector<int>& elements = sets_[setOf(SetKind::element, name, true)].members;
        for (int cell = 0; cell < of.cells; ++cell) {
          if (isThere(cell)) elements.push_back(of.firstElement + cell);
        }
        std::vector<int>& nodes = sets_[setOf(SetKind::node, name, true)].members;
        for (int node = 0; node < of.nodes; ++node) nodes.push_back(of.firstNode + node);
      }
      for (const std::string& array : idArrays_) {
        const StoredArray* const ids = idArray(piece, array);
        if (ids == nullptr) continue;
        const std::vector<std::int64_t> values = readIntegers(input, *ids);
        for (int cell = 0; cell < of.cells; ++cell) {
          if (!isThere(cell)) continue;
          const std::int64_t id = values[static_cast<std::size_t>(cell)];
          sets_[setOf(SetKind::element, nameOf(*ids, id), false)].members.push_back(of.firstElement + cell);
        }
      }
    }
  }
}

void RunSets::deliver(Sink& sink) const {
  for (std::size_t set = 0; set < sets_.size(); ++set) sink.set(set, sets_[set].members);
}

}  // namespace importers::vtk
