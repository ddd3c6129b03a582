// What has been declared to a writer, and what of it is allocated in the file. Internal to the writer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "odbstore/catalog_builder.h"
#include "odbstore/schema.h"
#include "odbwriter/database_writer.h"

namespace odbstore {

struct DeclaredElements {
  std::vector<int> labels;
  std::vector<int> connectivity;
};

struct DeclaredInstance {
  std::string part;
  bool hasNodes = false;
  std::vector<int> nodes;
  std::vector<double> coordinates;
  std::map<std::string, DeclaredElements> elements;  // by type
};

struct DeclaredLocation {
  LocationInfo info;
  LocationLabels labels;
  std::vector<int> rowOf;  // empty: row i is delivered row i
  std::int64_t rows = 0;
  std::int64_t delivered = 0;
  bool isIndexed = false;  // otherwise rows are expanded by rowOf, if there is one, when written

  std::int64_t stored() const { return isIndexed ? delivered : rows; }
};

struct DeclaredStep {
  std::string name;
  StepInfo info;
  std::vector<FrameInfo> frames;
  std::map<std::string, int> fields;   // by name
  std::map<std::string, int> regions;  // likewise
};

struct DeclaredField {
  int step = -1;
  std::string name;
  FieldInfo info;
  std::set<int> frames;              // those that it has apart from its blocks'
  std::map<int, FieldInfo> changes;  // by frame
  std::vector<int> blocks;
};

struct DeclaredBlock {
  int field = -1;
  int location = -1;
  DatabaseWriter::BlockForm form;
  std::size_t number = 0;  // in its field
};

struct DeclaredRegion {
  int step = -1;
  std::string name;
  HistoryRegionInfo info;
  std::map<std::string, int> outputs;  // by name
};

struct DeclaredHistory {
  int region = -1;
  std::string name;
  std::int64_t samples = 0;
  std::int64_t width = 0;
};

// Sets by owner and kind, each by name.
using SetsKey = std::tuple<OwnerKind, std::string, SetKind>;
using DeclaredSets = std::map<std::string, std::vector<SetMembers>>;

struct DeclaredModel {
  ModelNames names;
  std::optional<std::array<float, 6>> symmetryAxis;
  std::set<std::string> parts;
  std::map<std::string, DeclaredInstance> instances;
  std::map<SetsKey, DeclaredSets> sets;
  std::vector<DeclaredLocation> locations;
  std::vector<DeclaredStep> steps;
  std::vector<DeclaredField> fields;
  std::vector<DeclaredBlock> blocks;
  std::vector<DeclaredRegion> regions;
  std::vector<DeclaredHistory> histories;

  const DeclaredStep& stepOf(const DeclaredField& field) const { return steps[static_cast<std::size_t>(field.step)]; }
  // The frames of a block, ascending, and those of a field whose blocks have these.
  std::vector<int> framesOf(const DeclaredBlock& block) const;
  std::vector<int> framesOf(const DeclaredField& field, const std::vector<std::vector<int>>& blockFrames) const;
};

// Paths of the objects of a model, with names made links.
std::string pathOf(const DeclaredStep& step);
std::string pathOf(const DeclaredModel& model, const DeclaredField& field);
std::string pathOf(const DeclaredModel& model, const DeclaredBlock& block);
std::string pathOf(const DeclaredModel& model, const DeclaredHistory& history);
std::string ownerPath(const Owner& owner);
std::string locationPath(std::size_t location);

// Packed texts are as long as the longest of them. Names that would make the others much longer are not packed.
inline constexpr std::size_t kLongestPackedName = 256;

}  // namespace odbstore
