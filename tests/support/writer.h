// Writes a database piece by piece in the order in which a solver's results come, for those who do not know beforehand
// what will come. Rows are spooled to an unnamed file beside the database; finish() declares everything to a
// DatabaseWriter (database_writer.h) and hands the rows on. Who can tell what is to come uses that one directly and
// writes once.
//
// Every failure (a name used twice, numbers that do not fit their location, a full disk) is a StoreError that names the
// file and the object.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "odbstore/schema.h"
#include "odbwriter/database_writer.h"

namespace odbstore {

// Places in a database under construction, as its writer hands them out.
struct LocationId {
  int index = -1;
};
struct StepId {
  int index = -1;
};
struct FrameId {
  StepId step;
  int index = -1;  // 0-based in the step
};
struct FieldId {
  FrameId frame;
  int index = -1;
};
struct HistoryRegionId {
  StepId step;
  std::string name;
};

// What a block says of itself when it differs from its field; empty or absent = as the field.
struct BlockOverrides {
  std::optional<int> type;
  std::vector<std::string> componentLabels;
};

// What Writer::keepRows() and keepPlaces() have kept.
struct KeptRows {
  std::int64_t offset = 0;
  std::int64_t rows = 0;
  int width = 0;
};
struct KeptPlaces {
  std::int64_t offset = 0;
  std::int64_t count = 0;
  int largest = -1;
};

class Writer {
 public:
  // `path` is the final name; a file of that name is replaced by finish().
  explicit Writer(const std::string& path, WriterOptions options = {});
  ~Writer();
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  // The name that the database gives itself; without one it goes by its path.
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
  void addNodes(const std::string& instance, std::span<const int> labels, std::span<const double> coordinates);
  void addElements(const std::string& instance, const std::string& type, std::span<const int> labels,
                   std::span<const int> connectivity);
  // A set of an instance or part has one group of members with an empty instance name, a set of the
  // assembly one for every instance that it reaches into, or none.
  void addSet(const Owner& owner, SetKind kind, const std::string& name, std::span<const SetMembers> members);

  // Where rows lie. A location that equals an earlier one gets the earlier one's place.
  LocationId addLocation(const LocationInfo& info, const LocationLabels& labels);

  // Steps keep their order. Steps, frames and histories may be added to in any order.
  StepId addStep(const std::string& name, const StepInfo& info);
  FrameId addFrame(StepId step, const FrameInfo& info);

  // A field of a frame. The same name in another frame of the step is the same field, described as it is there.
  FieldId addField(FrameId frame, const std::string& name, const FieldInfo& info);
  // The next block of that field in that frame: rows [location's rows, width], row by row. The width is
  // the size of `rows` by the location's row count; for a location without rows it is `widthOfEmpty`.
  void addBlock(FieldId field, LocationId location, std::span<const float> rows, const BlockOverrides& overrides = {},
                int widthOfEmpty = 1);
  void addBlock(FieldId field, LocationId location, std::span<const double> rows, const BlockOverrides& overrides = {},
                int widthOfEmpty = 1);

  // Rows that blocks of several locations are made of, and places among such rows.
  KeptRows keepRows(std::span<const float> rows, int width);
  KeptPlaces keepPlaces(std::span<const int> places);
  // The next block of that field in that frame: row i of the location is the row places[i], from 0, of the kept ones.
  // Each of these that has a place is stored once.
  void addBlock(FieldId field, LocationId location, const KeptRows& rows, const KeptPlaces& places);

  HistoryRegionId addHistoryRegion(StepId step, const std::string& name, const HistoryRegionInfo& info);
  void addHistoryOutput(const HistoryRegionId& region, const std::string& name, const HistorySamples& samples);

  // Completes the file, brings it to the disk and gives it its name. Nothing may be added afterwards.
  void finish();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace odbstore
