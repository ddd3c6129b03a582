// The writer's inside, shared by its sources.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <variant>

#include "base/output_file.h"
#include "hdf5/group.h"
#include "odbstore/spool.h"
#include "odbstore/writer.h"

namespace odbstore {

// Rows of one block in one frame, waiting in the spool.
struct Slab {
  int frame;
  std::int64_t offset;
  // Where the rows are to be taken from those at the offset: how many those are, and the places.
  std::optional<std::pair<std::int64_t, KeptPlaces>> places = {};
};

// A block under construction. What has to be equal for rows of another frame to belong to it stands first.
struct BlockState {
  int location;
  int type;
  std::vector<std::string> componentLabels;  // empty: the field's
  bool isDouble;
  std::int64_t width;
  std::vector<Slab> slabs;

  bool takes(const BlockState& rows) const {
    return location == rows.location && type == rows.type && componentLabels == rows.componentLabels &&
           isDouble == rows.isDouble && width == rows.width;
  }
};

struct FieldState {
  std::string name;
  FieldInfo info;
  // By frame: the place from which the frame's next block may be; absent where the field does not exist.
  std::map<int, std::size_t> nextBlock;
  std::vector<BlockState> blocks;
};

struct StepState {
  h5::Group group;
  std::vector<FrameInfo> frames;
  std::vector<FieldState> fields;
  std::map<std::string, int> fieldIndex;
};

struct LocationState {
  h5::Group group;
  LocationInfo info;
  std::int64_t rows;
};

class Writer::Impl {
 public:
  Impl(std::unique_ptr<base::OutputFile> own, const base::OutputFile& file, WriterOptions options);

  h5::Group& root() { return *root_; }
  // A member group, made at its first use.
  h5::Group assembly();
  h5::Group owner(const Owner& owner);
  static h5::Group openOrCreate(const h5::Group& parent, const std::string& link, bool trackOrder = false);

  LocationId addLocation(const LocationInfo& info, const LocationLabels& labels);
  StepId addStep(const std::string& name, const StepInfo& info);
  FrameId addFrame(StepId step, const FrameInfo& info);
  FieldId addField(FrameId frame, const std::string& name, const FieldInfo& info);
  template <class Number>
  void addBlock(FieldId field, LocationId location, std::span<const Number> rows, const BlockOverrides& overrides,
                int widthOfEmpty);
  KeptRows keepRows(std::span<const float> rows, int width);
  KeptPlaces keepPlaces(std::span<const int> places);
  void addBlock(FieldId field, LocationId location, const KeptRows& rows, const KeptPlaces& places);
  h5::Group historyRegion(const HistoryRegionId& region);
  StepState& step(StepId id);

  void finish();

 private:
  std::int64_t widthOf(const h5::Object& user, const LocationState& location, std::size_t numbers,
                       int widthOfEmpty) const;
  void checkBlock(const h5::Object& user, const BlockState& block, const FieldInfo& field) const;
  bool sameLocation(const LocationState& state, const LocationInfo& info, const LocationLabels& labels) const;
  void addSlab(FieldId field, BlockState block, const Slab& slab);
  void expand(const Slab& slab, std::int64_t width, std::vector<float>& out);
  void finishStep(StepState& step);
  void finishField(const h5::Group& fields, FieldState& field, std::size_t frames);
  void finishBlock(const h5::Group& blocks, std::size_t index, BlockState& block, const FieldState& field);

  std::unique_ptr<base::OutputFile> own_;  // none when the file is somebody else's
  const base::OutputFile& file_;
  WriterOptions options_;
  Spool spool_;
  std::optional<h5::Group> root_;
  std::vector<LocationState> locations_;
  std::unordered_multimap<std::size_t, int> locationByHash_;
  std::vector<StepState> steps_;
  // What expand() has read last: most blocks share their places, and blocks of several types their rows.
  std::vector<float> keptRows_;
  std::int64_t keptRowsOffset_ = -1;
  std::vector<int> keptPlaces_;
  std::int64_t keptPlacesOffset_ = -1;
};

}  // namespace odbstore
