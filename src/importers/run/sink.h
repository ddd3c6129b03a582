// Takes what a source delivers and makes a database of it, the same way for every format:
//
// - one block for each field and frame, whatever the types of elements and however many deliveries its rows come in:
//   of several blocks the extraction keeps the components of the last one alone;
// - tensors at nodes become element-nodal rows, one for every node of every element, so that sets of elements have
// them;
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

#include "importers/diagnostics.h"
#include "importers/label_index.h"
#include "importers/run/choice.h"
#include "importers/run/element_groups.h"
#include "importers/run/merged_rows.h"
#include "importers/run/outline.h"
#include "odbstore/writer.h"

namespace importers {

// The one instance of a model without parts of its own, and its part.
inline constexpr const char* kInstance = "PART-1-1";
inline constexpr const char* kPart = "PART-1";

class Sink {
 public:
  // All must live as long. `file` is named where no other place is known.
  Sink(const Outline& outline, const Choice& choice, const std::string& file, odbstore::Writer& writer,
       const WarningSink& warn);

  bool takes(const RowsId& rows) const { return choice_.takes(rows); }
  bool takesStep(std::size_t step) const { return choice_.takesStep(step); }

  // The mesh, before any rows. `coordinates` are [nodes, 3], `connectivity` [elements, nodesPerElement] labels of
  // nodes. Elements of one type may come in several calls. A label that comes twice, and a node of an element that is
  // not there, are an ImportError at `place`.
  void nodes(std::span<const int> labels, std::span<const double> coordinates, const SourcePlace& place);
  void elements(const ElementGroup& group, const SourcePlace& place);

  // The members of a set of the outline.
  void set(std::size_t set, std::span<const int> labels);

  // Rows of a chosen field and frame, as often as the outline has pieces of them. `values` are [rows, width]; `labels`
  // are those of the position. Two rows for one place are an ImportError at `place`.
  void rows(const RowsId& id, odbstore::Position position, const odbstore::LocationLabels& labels,
            std::span<const float> values, const SourcePlace& place);
  void rows(const RowsId& id, odbstore::Position position, const odbstore::LocationLabels& labels,
            std::span<const double> values, const SourcePlace& place);

  // A history of a chosen step. `region` is the name of its region in the step; the first one of that name says what
  // the region is.
  void history(std::size_t step, const std::string& region, const odbstore::HistoryRegionInfo& info,
               const std::string& output, const odbstore::HistorySamples& samples);

  // After everything has been delivered: says what is left to say of it.
  void finish();

  bool hasNodes() const { return hasNodes_; }
  bool hasElements() const { return !groups_.all().empty(); }
  int histories() const { return histories_; }

 private:
  struct Step {
    odbstore::StepId id;
    std::vector<std::optional<odbstore::FrameId>> frames;  // those with chosen rows
    std::map<std::string, odbstore::HistoryRegionId> regions;
    std::map<std::string, std::string> labels;  // of regions in records
    std::set<std::string> records;              // of histories
  };
  // Where the rows of nodes with certain labels lie.
  struct NodeRows {
    std::vector<int> labels;
    std::optional<odbstore::LocationId> nodal;
    std::optional<odbstore::LocationId> spread;
    odbstore::KeptPlaces places;
    std::size_t looseRows = 0;
  };
  struct Pieces {
    std::size_t count = 0;
    MergedRows rows;
  };
  // Values of a field that are no numbers.
  struct Strange {
    std::size_t values = 0;
    std::size_t step = 0;
    std::size_t frame = 0;
  };

  void addSteps();
  void writeMesh();
  const OutlineField& fieldOf(const RowsId& id) const { return outline_.steps[id.step].fields[id.field]; }
  std::size_t piecesOf(const RowsId& id) const;
  template <typename Number>
  void takeRows(const RowsId& id, odbstore::Position position, const odbstore::LocationLabels& labels,
                std::span<const Number> values, const SourcePlace& place);
  template <typename Number>
  void writeRows(const RowsId& id, odbstore::Position position, const odbstore::LocationLabels& labels,
                 std::span<const Number> values, const SourcePlace& place);
  template <typename Number>
  void count(const RowsId& id, std::span<const Number> values);
  void spread(const RowsId& id, odbstore::FieldId field, NodeRows& at, std::span<const float> values,
              const SourcePlace& place);
  NodeRows& nodeRows(const RowsId& id, std::span<const int> labels, const SourcePlace& place);
  std::string uniqueOutput(Step& step, const std::string& label, const std::string& output);

  const Outline& outline_;
  const Choice& choice_;
  std::string file_;
  odbstore::Writer& writer_;
  const WarningSink& warn_;

  std::vector<std::optional<Step>> steps_;
  LabelIndex nodes_;
  bool hasNodes_ = false;
  ElementGroups groups_;
  SourcePlace elementsPlace_;
  bool isMeshWritten_ = false;
  std::vector<std::unique_ptr<NodeRows>> nodeRows_;  // the ones used last, the latest first
  std::map<RowsId, Pieces> pieces_;                  // of rows that are not complete
  std::map<std::string, Strange> strange_;           // by field
  std::set<std::string> looseOf_;                    // fields
  std::vector<float> floats_;
  std::vector<double> doubles_;
  int histories_ = 0;
};

}  // namespace importers
