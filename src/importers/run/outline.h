// What a run's results hold, without rows: every importer makes an outline of its files before it delivers any numbers.
// It is independent of the solver. The list that users see, the choice of steps, frames and fields, and the database
// are made from it.
//
// Steps, fields, frames and sets are identified by their indices here, from 0, throughout an import.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "importers/input/diagnostics.h"
#include "odbstore/schema.h"

namespace importers {

// The rows of a field in one frame.
struct OutlineRows {
  std::size_t frame = 0;   // index in the frames of the step
  std::size_t rows = 0;    // as the source has them, before tensors at nodes are spread over elements
  std::size_t pieces = 1;  // the number of deliveries; a row in several of them counts once
};

// A field of a step.
struct OutlineField {
  std::string name;    // in the database
  std::string source;  // what the source calls it: a block, a table, a variable
  odbstore::FieldInfo info;
  // Whether rows at nodes are repeated for every element at their node, as those of tensors are in any case.
  bool isSpread = false;
  std::vector<OutlineRows> frames = {};  // each frame that has it once, in their order
  // Where one name may stand for fields at several positions; nothing where the source tells them apart itself.
  std::optional<odbstore::Position> position = {};
  std::string standardName = {};  // by which users know such a field, where the source has another one
};

// Sources of histories: tables of one kind, for one set or none.
struct OutlineTable {
  std::string source;
  std::string set;
  std::size_t rows = 0;  // of the largest
  std::size_t tables = 0;
};

struct OutlineStep {
  int number = 0;    // by which users choose it
  std::string name;  // in the database
  odbstore::StepInfo info;
  std::vector<odbstore::FrameInfo> frames;  // in their order
  std::vector<OutlineField> fields;         // by name
  std::vector<OutlineTable> tables;
};

struct OutlineSet {
  odbstore::SetKind kind = odbstore::SetKind::node;
  std::string name;  // in the database
  bool isOfSurface = false;
  std::size_t members = 0;
  SourcePlace place;  // of its first mention
};

struct Outline {
  std::string title;
  std::string producer;   // the program that made the results
  std::string form;       // "ASCII", "binary", ...; empty if there is but one
  std::size_t nodes = 0;  // of the mesh
  std::size_t elements = 0;
  std::vector<OutlineStep> steps;  // in their order
  std::vector<OutlineSet> sets;    // in the order of the source
  // Where the results of truncated files end, "step 2, time 0.5"; empty for complete ones.
  std::string truncatedAfter;

  bool isTruncated() const { return !truncatedAfter.empty(); }
};

// Identifies the rows of a field in a frame, by indices in the outline.
struct RowsId {
  std::size_t step = 0;
  std::size_t field = 0;  // of the step
  std::size_t frame = 0;  // of the step

  auto operator<=>(const RowsId&) const = default;
};

// "scalar", "vector" or "tensor".
const char* shapeWord(const odbstore::FieldInfo& info);

// "the file holds step 1 (frames 1-5), step 2 (no frames) with the fields S, U".
std::string whatThereIs(const Outline& outline);

}  // namespace importers
