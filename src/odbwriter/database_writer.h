// Writes a database in layout 3, in one pass. The contents are declared first; then rows and samples are written in any
// order, straight to their positions in the file. A block is allocated by layOut(), together with everything declared
// so far, or with its first rows, so that more blocks may be declared while rows of earlier ones are written.
//
//   DatabaseWriter writer("job.odb");
//   const auto nodes = writer.addLocation({"I-1", Position::nodal, "", 0, ""}, {{1, 2, 3}, {}, {}});
//   const auto step = writer.addStep("Step-1", {});
//   writer.addFrame(step, {0, 0.0, "Increment 0"});
//   const auto u = writer.addField(step, "U", {"Displacement", 3, {"U1", "U2", "U3"}, {8}, false});
//   const auto block = writer.addBlock(u, nodes, {.width = 3});
//   writer.writeRows(block, 0, rows);  // [3 rows, 3 numbers]
//   writer.finish();
//
// The file is written under a temporary name in the same directory and renamed when it is complete and on disk; a
// writer destroyed before that leaves nothing. Only what is not yet laid out, the sets and one frame of one block are
// in memory.
//
// Every failure (a name used twice, numbers that do not fit their location, a full disk) is a StoreError that names the
// file and the object. Frames are numbered from 0 in their step.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "odbstore/schema.h"

namespace odbstore {

struct WriterOptions {
  bool compress = false;  // gzip, one frame a chunk: a small file, slower to read
  bool checksum = false;  // Fletcher-32 over every frame of every block, for readers that do not know the catalog
};

class DatabaseWriter {
 public:
  // Declared objects, by their index in the order of declaration.
  struct Location {
    int index = -1;
  };
  struct Step {
    int index = -1;
  };
  struct Field {
    int index = -1;
  };
  struct Block {
    int index = -1;
  };
  struct Region {
    int index = -1;
  };
  struct History {
    int index = -1;
  };

  // The rows of a block: `width` numbers each. When a block that exists in all frames of a step is laid out, all frames
  // must have been added.
  struct BlockForm {
    int width = 1;
    bool isDouble = false;
    std::optional<int> type = {};                   // where it differs from the field's
    std::vector<std::string> componentLabels = {};  // likewise
    std::optional<std::vector<int>> frames = {};    // those that it exists in, ascending; nothing: all of the step
  };

  // `path` is the final name; a file of that name is replaced by finish().
  explicit DatabaseWriter(const std::string& path, WriterOptions options = {});
  // Writes to `temporaryPath`, which exists, and does not rename it; `name` is used in messages.
  DatabaseWriter(const std::string& temporaryPath, const std::string& name, WriterOptions options);
  ~DatabaseWriter();
  DatabaseWriter(const DatabaseWriter&) = delete;
  DatabaseWriter& operator=(const DatabaseWriter&) = delete;

  // The database's own name; without one its path is its name.
  void setName(const std::string& name);
  void setTitle(const std::string& title);
  // The program that the results came from.
  void setProducer(const std::string& producer);
  void setAssemblyName(const std::string& name);
  // Two points of the axis of a model of one sector, three coordinates each.
  void setSymmetryAxis(const std::array<float, 6>& axis);

  void addPart(const std::string& name);
  void addInstance(const std::string& name, const std::string& part);
  // The mesh of an instance: coordinates [n, 3]; connectivity [m, nodes of an element] holds node labels.
  void addNodes(const std::string& instance, std::vector<int> labels, std::vector<double> coordinates);
  void addElements(const std::string& instance, const std::string& type, std::vector<int> labels,
                   std::vector<int> connectivity);
  // A set of an instance or part has one group of members with an empty instance name; a set of the assembly has one
  // for each instance with members, possibly none.
  void addSet(const Owner& owner, SetKind kind, const std::string& name, std::vector<SetMembers> members);

  // Where rows lie. With `rowOf` (one number per row, row_index.h) equal rows are written once: callers write the
  // distinct rows, in the order of their first use, and row i is the rowOf[i]-th of them. If that saves less than a
  // quarter of the space, all rows are stored; callers still write the distinct ones. Returns the earlier location if
  // an equal one exists.
  Location addLocation(const LocationInfo& info, LocationLabels labels, std::vector<int> rowOf = {});
  // The number of rows to write for a block there.
  std::int64_t deliveredRows(Location location) const;

  // Steps keep their order.
  Step addStep(const std::string& name, const StepInfo& info);
  // Returns the frame's number.
  int addFrame(Step step, const FrameInfo& info);

  // A field of a step exists in the frames of its blocks, and in those that addFieldFrame() names.
  Field addField(Step step, const std::string& name, const FieldInfo& info);
  void addFieldFrame(Field field, int frame);
  // How the field differs in that frame.
  void describeField(Field field, int frame, const FieldInfo& info);
  Block addBlock(Field field, Location location, BlockForm form);

  Region addHistoryRegion(Step step, const std::string& name, const HistoryRegionInfo& info);
  // `samples` samples of `width` numbers: of each its abscissae, then the value.
  History addHistory(Region region, const std::string& name, std::int64_t samples, std::int64_t width);

  // Allocates disk space for everything declared so far, and writes labels, sets and meshes. Sets of one owner and kind
  // are laid out together, and so are the histories of a step: none may be declared afterwards.
  void layOut();

  // Writes the rows of a block in a frame, [rows to write, width], in the block's precision: each frame once, in any
  // order.
  void writeRows(Block block, int frame, std::span<const float> rows);
  void writeRows(Block block, int frame, std::span<const double> rows);
  // [samples, width], once; the history must have been laid out.
  void writeSamples(History history, std::span<const float> samples);

  // Completes the file, flushes it to disk and renames it. Rows or samples that were declared and not written are an
  // error.
  void finish();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace odbstore
