// Reads a database of layout 2, piece by piece. Nothing is read before it is asked for; what has been read of
// the structure is kept, rows of fields and samples of histories never are.
//
// Whatever does not fit the layout is a StoreError that names the file and the object.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "odbstore/checksums.h"
#include "odbstore/schema.h"
#include "odbstore/store_error.h"

namespace base {
class OutputFile;
}

namespace odbstore {

class FileAccess;  // the open file behind a reader

// Where rows lie, shared by every block that lies there. Labels are read at the first call and kept.
class StoredLocation {
 public:
  class Impl;
  explicit StoredLocation(std::unique_ptr<Impl> impl);
  ~StoredLocation();

  const LocationInfo& info() const;
  std::int64_t rows() const;

  // One label per row; empty where the position has none of the kind.
  const std::vector<int>& nodeLabels() const;
  const std::vector<int>& elementLabels() const;
  const std::vector<int>& integrationPoints() const;

 private:
  std::unique_ptr<Impl> impl_;
};

// The rows of one field at one location, in every frame that has them.
class StoredBlock {
 public:
  class Impl;
  explicit StoredBlock(std::unique_ptr<Impl> impl);
  StoredBlock(StoredBlock&&) noexcept;
  ~StoredBlock();

  const std::shared_ptr<const StoredLocation>& location() const;
  // The block's own type and component labels, else its field's.
  int type() const;
  const std::vector<std::string>& componentLabels() const;
  bool isDouble() const;
  std::int64_t rows() const;
  std::int64_t width() const;

  bool existsIn(int frame) const;
  // Those in which it exists, in the order in which their rows are stored.
  std::vector<int> frames() const;
  // The rows in a frame in which the block exists, [rows, width], into `out`.
  void read(int frame, float* out) const;
  void read(int frame, double* out) const;

  // Whether readRows() is possible: not for packed rows, nor for those of another machine's number format.
  bool hasDirectRows() const;
  // `count` rows from `first` on in a frame in which the block exists, [count, width], in the block's precision.
  // Another thread than the one that uses the database may call it.
  void readRows(int frame, std::int64_t first, std::int64_t count, void* out) const;

 private:
  std::unique_ptr<Impl> impl_;
};

struct StoredField {
  std::string name;
  FieldInfo info;
  std::vector<int> frames;    // those that have it, in the order in which the file lists them
  std::vector<char> inFrame;  // one per frame of the step
  std::vector<StoredBlock> blocks;
};

struct StoredHistoryRegion {
  std::string name;
  HistoryRegionInfo info;
  std::vector<std::string> outputs;  // names, bytes ascending
};

class StoredStep {
 public:
  class Impl;
  explicit StoredStep(std::unique_ptr<Impl> impl);
  ~StoredStep();

  const std::string& name() const;
  const StepInfo& info() const;
  const std::vector<FrameInfo>& frames() const;
  // By name, bytes ascending.
  const std::vector<StoredField>& fields() const;

  // Names, bytes ascending.
  std::vector<std::string> historyRegions() const;
  StoredHistoryRegion historyRegion(const std::string& region) const;
  HistorySamples historySamples(const std::string& region, const std::string& output) const;

 private:
  std::unique_ptr<Impl> impl_;
};

struct InstanceInfo {
  std::string name;
  std::string part;
};

// Bytes of the file that hold slabs of one data set, as many as lie one behind the other.
struct DataExtent {
  std::int64_t begin = 0;
  std::int64_t end = 0;
  std::string path;            // of the data set, as HDF5 has it
  std::int64_t firstSlab = 0;  // along the first dimension
  std::int64_t slabBytes = 0;  // of each
};

// Every object that a file has, known or not.
struct Inventory {
  std::vector<DataExtent> extents;    // by their begin
  std::vector<std::string> problems;  // objects that cannot be opened or are not allowed in the layout
};

class Reader {
 public:
  explicit Reader(const std::string& path);
  // Null where the database is of an older layout, which must be upgraded first.
  static std::shared_ptr<const Reader> openIfNewest(const std::string& path);
  // Opens a file of today's layout under a temporary name: name() and messages have the final one.
  static std::shared_ptr<const Reader> openUnpublished(const base::OutputFile& file);
  ~Reader();
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  // The name the database gives itself, else the path as opened.
  std::string name() const;
  std::string title() const;
  std::string producer() const;
  std::string assemblyName() const;

  // All lists of names: bytes ascending, but for the steps, which keep their order.
  std::vector<std::string> parts() const;
  const std::vector<InstanceInfo>& instances() const;
  std::vector<std::string> sets(const Owner& owner, SetKind kind) const;
  std::vector<SetMembers> setMembers(const Owner& owner, SetKind kind, const std::string& set) const;
  std::optional<std::array<float, 6>> symmetryAxis() const;
  // Throws where the mesh of an instance has not the shapes of the layout. An instance may have none.
  void checkMesh(const std::string& instance) const;

  // Where the checksums of the file stand; nothing when it has none.
  std::optional<ChecksumPlace> checksums() const;
  // Opens every object of the file and looks at its attributes.
  Inventory inventory() const;

  std::vector<std::string> steps() const;
  // Good independently of this reader. Opened anew at each call.
  std::shared_ptr<const StoredStep> step(const std::string& name) const;

 private:
  explicit Reader(std::shared_ptr<FileAccess> file);

  std::shared_ptr<FileAccess> file_;
  mutable std::optional<std::vector<InstanceInfo>> instances_;
};

}  // namespace odbstore
