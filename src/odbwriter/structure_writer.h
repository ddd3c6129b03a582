// Makes the HDF5 structure of a declared model. Internal to the writer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_set>
#include <vector>

#include "hdf5/group.h"
#include "odbwriter/array_writer.h"
#include "odbwriter/declared_model.h"

namespace odbstore {

inline constexpr std::size_t kNoArray = static_cast<std::size_t>(-1);

// The arrays of a model, by their places in an ArrayWriter; kNoArray where there is no room yet.
struct ModelArrays {
  struct Mesh {
    std::size_t nodes = kNoArray;
    std::size_t coordinates = kNoArray;
    std::map<std::string, std::pair<std::size_t, std::size_t>> elements;  // labels and connectivity by type
  };
  struct Location {
    bool hasRoom = false;
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
  std::map<SetsKey, Sets> sets;        // those that have room
  std::vector<Location> locations;
  std::vector<std::size_t> blocks;
  std::vector<std::size_t> histories;
  std::vector<bool> hasHistories;  // by step: whether its histories have room
};

// Works on a new file. Arrays are allocated on request; structure that the catalog repeats is written at the end, when
// everything is known, so that HDF5 keeps it together.
class StructureWriter {
 public:
  // All must live as long; `root` is the root group.
  StructureWriter(const h5::Group& root, const DeclaredModel& model, const WriterOptions& options, ArrayWriter& arrays);

  const ModelArrays& places() const { return places_; }

  // Each creates data sets for what has been declared and is not yet allocated.
  void reserveMesh(const std::string& instance);
  void reserveSets(const SetsKey& key);
  void reserveLocation(std::size_t location);
  void reserveBlock(std::size_t block, std::size_t frames);
  void reserveHistories(std::size_t step);

  // Groups, attributes, and the arrays that the catalog repeats. `blockFrames` holds the frames of each block.
  void finish(const std::vector<std::vector<int>>& blockFrames);

 private:
  // The group at a path from the root, made if it is not there yet, with those above it.
  h5::Group groupAt(const std::string& path, bool trackOrder = false);
  void makeStepGroups();
  std::int64_t reserve(const std::string& path, base::NumberFormat format, const h5::Dims& dims);
  std::size_t reserveWhole(const std::string& path, base::NumberFormat format, const h5::Dims& dims);
  std::size_t reserveInts(const std::string& path, std::size_t count);
  Packing packing() const;

  void makeModel();
  void makeInstance(const std::string& name, const DeclaredInstance& instance);
  void makeSets();
  void makePackedSets(const SetsKey& key, const DeclaredSets& sets);
  void makeLocation(std::size_t location);
  void makeStep(const DeclaredStep& step, const std::vector<std::vector<int>>& blockFrames);
  void makeField(const DeclaredField& field, std::size_t stepFrames, const std::vector<std::vector<int>>& blockFrames);
  void makeForms(const DeclaredField& field);
  void makeHistories(const DeclaredStep& step);
  void makeRegion(const DeclaredRegion& region);
  void makePackedHistories(const DeclaredStep& step, const std::vector<const DeclaredRegion*>& regions);

  const h5::Group& root_;
  const DeclaredModel& model_;
  const WriterOptions& options_;
  ArrayWriter& arrays_;
  ModelArrays places_;
  std::unordered_set<std::string> made_;  // paths of groups
  std::size_t madeSteps_ = 0;
};

// HDF5 takes room for structure in pieces of about this many bytes.
std::int64_t structureBytesOf(const DeclaredModel& model);

// Whether a set can stand with the others of its owner, and a history with the others of its step.
bool isPacked(const std::string& setName, const std::vector<SetMembers>& members);
bool isPacked(const DeclaredRegion& region, const DeclaredHistory& history);
// Whether all of a region's histories can, and what it says of itself.
bool isPacked(const DeclaredModel& model, const DeclaredRegion& region);

}  // namespace odbstore
