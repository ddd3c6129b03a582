// Makes the HDF5 structure of a declared model. Internal to the writer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "hdf5/group.h"
#include "odbstore/array_writer.h"
#include "odbstore/declared_model.h"

namespace odbstore {

inline constexpr std::size_t kNoArray = static_cast<std::size_t>(-1);

// The arrays of a model, by their places in an ArrayWriter.
struct ModelArrays {
  struct Mesh {
    std::size_t nodes = kNoArray;
    std::size_t coordinates = kNoArray;
    std::map<std::string, std::pair<std::size_t, std::size_t>> elements;  // labels and connectivity by type
  };
  struct Location {
    std::size_t nodes = kNoArray;
    std::size_t elements = kNoArray;
    std::size_t points = kNoArray;
    std::size_t rowOf = kNoArray;
  };
  // Labels of sets that are packed, and those of the others by set and instance.
  struct Sets {
    std::size_t packed = kNoArray;
    std::map<std::pair<std::string, std::string>, std::size_t> single;
  };

  std::map<std::string, Mesh> meshes;  // by instance
  std::map<SetsKey, Sets> sets;
  std::vector<Location> locations;
  std::vector<std::size_t> blocks;
  std::vector<std::size_t> histories;
};

// About how many bytes of HDF5 structure a model takes, in one piece.
std::int64_t structureBytesOf(const DeclaredModel& model);

// Makes groups, attributes and the arrays that the catalog repeats, then all other arrays with room for their numbers,
// in a new file whose root group is given.
ModelArrays writeStructure(const h5::Group& root, const DeclaredModel& model, const WriterOptions& options,
                           ArrayWriter& arrays);

// Whether a set can stand with the others of its owner, and a history with the others of its step.
bool isPacked(const std::string& setName, const std::vector<SetMembers>& members);
bool isPacked(const DeclaredRegion& region, const DeclaredHistory& history);
// Whether all of a region's histories can, and what it says of itself.
bool isPacked(const DeclaredModel& model, const DeclaredRegion& region);

}  // namespace odbstore
