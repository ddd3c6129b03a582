// Writes what a source delivers to a database, in the same way for every format:
//
// - one block for each field and frame, whatever the types of elements and however many deliveries its rows come in:
//   of several blocks the extraction keeps the components of the last one alone;
// - tensors at nodes become element-nodal rows, one for every node of every element, so that sets of elements have
//   them; they are stored once for each node;
// - scalars at nodes are stored in double precision, because in single precision the engineering maximum is taken
//   from the small values; vectors and tensors in single precision, because sets of double ones cannot be extracted;
// - no record of a history has the name of another one.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "base/label_index.h"
#include "base/unfilled.h"
#include "importers/input/diagnostics.h"
#include "importers/run/choice.h"
#include "importers/run/element_groups.h"
#include "importers/run/merged_rows.h"
#include "importers/run/outline.h"
#include "odbwriter/database_writer.h"

namespace importers {

// The one instance of a model without parts of its own, and its part.
inline constexpr const char* kInstance = "PART-1-1";
inline constexpr const char* kPart = "PART-1";

// A field of a step, by their places in the outline.
using FieldId = std::pair<std::size_t, std::size_t>;

// Rows are written as they are delivered. A block must know its frames in advance, so the Sink assumes that frames of a
// field with equally many rows have them at the same places, and keeps those in one block. If that turns out to be
// wrong the field is irregular, its rows are left out, and the run must be delivered again to a Sink that knows this
// and gives the field a block for each frame.
class Sink {
 public:
  // All arguments must outlive the Sink. Messages name `file` if they have no other place. `irregular` are the fields
  // that earlier Sinks have found.
  Sink(const Outline& outline, const Choice& choice, const std::set<FieldId>& irregular, const std::string& file,
       odbstore::DatabaseWriter& writer, const WarningSink& warn);

  bool takes(const RowsId& rows) const { return choice_.takes(rows); }
  bool takesStep(std::size_t step) const { return choice_.takesStep(step); }

  // The mesh, before any rows. `coordinates` are [nodes, 3], `connectivity` [elements, nodesPerElement] labels of
  // nodes. Elements of one type may come in several calls. A repeated label and an element's node that does not exist
  // are an ImportError at `place`.
  void nodes(std::span<const int> labels, std::span<const double> coordinates, const SourcePlace& place);
  void elements(const ElementGroup& group, const SourcePlace& place);

  // The members of a set of the outline, before any rows; ignored if the set is not chosen.
  void set(std::size_t set, std::span<const int> labels);

  // Rows of a chosen field and frame, as often as the outline has pieces of them. `values` are [rows, width]; `labels`
  // are those of the position. Two rows for one place are an ImportError at `place`.
  void rows(const RowsId& id, odbstore::Position position, const RowLabels& labels, std::span<const float> values,
            const SourcePlace& place);
  void rows(const RowsId& id, odbstore::Position position, const RowLabels& labels, std::span<const double> values,
            const SourcePlace& place);

  // A history of a chosen step. `region` is the name of its region in the step; the first one of that name says what
  // the region is.
  void history(std::size_t step, const std::string& region, const odbstore::HistoryRegionInfo& info,
               const std::string& output, const odbstore::HistorySamples& samples);

  // Call after everything has been delivered: writes the histories and reports remaining warnings.
  void finish();

  // Fields whose rows could not be written, once finish() has been called.
  const std::set<FieldId>& newlyIrregular() const { return newlyIrregular_; }

  bool hasNodes() const { return hasNodes_; }
  bool hasElements() const { return !groups_.all().empty(); }
  int histories() const { return histories_; }

 private:
  struct History {
    std::string region;
    std::string output;
    odbstore::HistorySamples samples;
  };
  struct Region {
    odbstore::HistoryRegionInfo info;
    std::string label;  // in records
  };
  struct Step {
    odbstore::DatabaseWriter::Step id;
    std::vector<std::optional<int>> frames;  // in the database; those with chosen rows
    std::map<std::string, Region> regions;
    std::vector<History> histories;
    std::set<std::string> records;  // of histories
  };
  // Rows of a field in frames that are alike.
  struct Block {
    odbstore::DatabaseWriter::Block id;
    int location = -1;
    std::size_t width = 0;
    std::size_t left = 0;  // frames whose rows are still missing
  };
  struct Field {
    odbstore::DatabaseWriter::Field id;
    std::vector<Block> blocks;
    std::map<std::size_t, std::size_t> blockOfFrame;  // frame of the outline to place in `blocks`
  };
  // Where the rows of nodes with certain labels lie.
  struct NodeRows {
    std::vector<int> labels;
    std::optional<odbstore::DatabaseWriter::Location> nodal;
    std::optional<odbstore::DatabaseWriter::Location> spread;
    std::vector<int> source;  // of each row that is stored of those spread the node's place in `labels`
    std::size_t looseRows = 0;
  };
  struct Pieces {
    std::size_t count = 0;
    MergedRows rows;
  };
  // Values of a field that are not finite.
  struct Strange {
    std::size_t values = 0;
    std::size_t step = 0;
    std::size_t frame = 0;
  };

  void addSteps();
  void writeModel();
  const OutlineField& fieldOf(const RowsId& id) const { return outline_.steps[id.step].fields[id.field]; }
  std::size_t piecesOf(const RowsId& id) const;
  template <typename Number>
  void takeRows(const RowsId& id, odbstore::Position position, const RowLabels& labels, std::span<const Number> values,
                const SourcePlace& place);
  template <typename Number>
  void writeRows(const RowsId& id, odbstore::Position position, const RowLabels& labels, std::span<const Number> values,
                 const SourcePlace& place);
  template <typename Number>
  void count(const RowsId& id, std::span<const Number> values);
  template <typename Number>
  void put(const RowsId& id, odbstore::DatabaseWriter::Location location, std::span<const Number> rows,
           std::size_t width);
  Block& blockFor(const RowsId& id, odbstore::DatabaseWriter::Location location, bool isDouble, std::size_t width);
  std::vector<std::size_t> framesLike(const RowsId& id, const Field& field) const;
  void spread(const RowsId& id, NodeRows& at, std::span<const float> values, const SourcePlace& place);
  NodeRows& nodeRows(const RowsId& id, std::span<const int> labels, const SourcePlace& place);
  void writeHistories();
  std::string uniqueOutput(Step& step, const std::string& label, const std::string& output);

  const Outline& outline_;
  const Choice& choice_;
  std::string file_;
  const std::set<FieldId>& irregular_;
  odbstore::DatabaseWriter& writer_;
  const WarningSink& warn_;

  std::vector<std::optional<Step>> steps_;
  base::LabelIndex nodes_;
  bool hasNodes_ = false;
  ElementGroups groups_;
  SourcePlace elementsPlace_;
  bool isModelWritten_ = false;
  std::vector<std::unique_ptr<NodeRows>> nodeRows_;  // the ones used last, the latest first
  std::map<RowsId, Pieces> pieces_;                  // of rows that are not complete
  std::map<std::string, Strange> strange_;           // by field
  std::set<std::string> looseOf_;                    // fields
  std::map<FieldId, Field> fields_;
  std::set<FieldId> newlyIrregular_;
  base::UnfilledVector<float> floats_;
  base::UnfilledVector<float> stored_;
  base::UnfilledVector<double> doubles_;
  int histories_ = 0;
};

}  // namespace importers
