// The rows of a block, behind the handles.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "odbaccess/invariants.h"
#include "odbaccess/odb_FieldBulkTile.h"
#include "odbaccess/read_ahead.h"
#include "odbaccess/row_selection.h"
#include "odbaccess/set_storage.h"
#include "odbstore/reader.h"

namespace odb_detail {

using SharedRows = std::shared_ptr<const RowSelection>;

// The rows in which each label occurs, ascending by label, then by row: built once per location.
class LabelIndex {
 public:
  explicit LabelIndex(const std::vector<int>& labels);

  // The rows of those labels (ascending, each once), ascending.
  std::vector<int> rowsOf(const std::vector<int>& labels) const;

 private:
  std::vector<int> labels_;  // each once, ascending
  std::vector<int> first_;   // where the rows of labels_[i] start in rows_; one more at the end
  std::vector<int> rows_;
};

// A location of the file with what has been derived from it, shared by all blocks that lie there.
class LocationStorage {
 public:
  LocationStorage(std::shared_ptr<const odbstore::StoredLocation> stored, std::shared_ptr<ReadAhead> readAhead)
      : stored_(std::move(stored)), readAhead_(std::move(readAhead)) {}

  const odbstore::LocationInfo& info() const { return stored_->info(); }
  const std::vector<int>& nodeLabels() const;
  const std::vector<int>& elementLabels() const;
  const std::vector<int>& integrationPoints() const;
  int numberOfElements();

  // The rows, ascending, that belong to a set.
  SharedRows rowsIn(const std::shared_ptr<SetStorage>& set);

  // The reader of large blocks, one for the database.
  ReadAhead& readAhead() const { return *readAhead_; }

 private:
  std::shared_ptr<const odbstore::StoredLocation> stored_;
  std::shared_ptr<ReadAhead> readAhead_;
  std::unique_ptr<LabelIndex> nodeIndex_;
  std::unique_ptr<LabelIndex> elementIndex_;
  std::optional<int> numberOfElements_;
  // Found rows by set, as far as they are few enough to be kept.
  std::unordered_map<std::shared_ptr<SetStorage>, SharedRows> rowsOfSets_;
  std::size_t keptRows_ = 0;
};

// One location object for each location of the file.
class LocationCache {
 public:
  LocationCache();

  std::shared_ptr<LocationStorage> of(const std::shared_ptr<const odbstore::StoredLocation>& stored);

 private:
  std::shared_ptr<ReadAhead> readAhead_;
  std::map<const odbstore::StoredLocation*, std::shared_ptr<LocationStorage>> locations_;
};

int countDifferent(const std::vector<int>& labels);

// All rows of a block in one frame. The numbers are read at first use.
class BlockContent {
 public:
  BlockContent(std::shared_ptr<const odbstore::StoredStep> step, const odbstore::StoredField& field,
               const odbstore::StoredBlock& block, int frame, std::shared_ptr<LocationStorage> location);

  const odbstore::StoredBlock& block() const { return block_; }
  const odbstore::StoredField& field() const { return field_; }
  LocationStorage& location() const { return *location_; }
  int rows() const { return static_cast<int>(block_.rows()); }
  int width() const { return static_cast<int>(block_.width()); }
  bool isTensor() const { return odbstore::isTensorType(block_.type()); }

  // The rows as stored, [rows, width], in the block's precision. Nobody writes to them; they are not
  // const because the interface hands out plain pointers.
  template <class Number>
  Number* stored() const;

  // By component label of the field: the column that holds it, -1 when none does.
  const std::vector<int>& columnsOfField() const { return columnsOfField_; }
  // Whether columnsOfField() is 0, 1, 2, ... so that a stored row serves as it is.
  bool isInFieldOrder() const { return inFieldOrder_; }
  // By tensor component, in the canonical order: the column that holds it, -1 when none does.
  const std::array<int, 6>& columnsOfTensor() const { return columnsOfTensor_; }

  // Whether the numbers are in memory, few, or can only be had as a whole.
  bool isAtHand() const;
  // Reads the rows from the file, in order, a piece at a time; isAtHand() is false. `take` gets the place of the first
  // row, the number of rows and the rows as stored.
  template <class Number>
  void forEachPiece(const std::function<void(int first, int count, const Number* rows)>& take) const;

  // The row as a tensor, 0 where no component is stored, engineering shears halved.
  Tensor tensor(int row) const;
  double magnitude(int row) const;

  // Quantities of tensor rows, found once and kept: the equivalent stress of all rows, and the other invariants of the
  // stretch that a row lies in.
  const float* mises() const;
  const InvariantStretch& invariantsAround(int row) const;

 private:
  void findColumns();
  // Whether rows have the components from 11 on in their places and nothing else.
  bool isCanonical() const;

  std::shared_ptr<const odbstore::StoredStep> step_;  // keeps field_ and block_ alive
  const odbstore::StoredField& field_;
  const odbstore::StoredBlock& block_;
  int frame_;
  std::shared_ptr<LocationStorage> location_;
  std::vector<int> columnsOfField_;
  bool inFieldOrder_ = false;
  std::array<int, 6> columnsOfTensor_{};
  // Null where not asked for yet. No vectors, which would be filled with zeros first.
  mutable std::tuple<std::unique_ptr<float[]>, std::unique_ptr<double[]>> numbers_;
  mutable std::unique_ptr<float[]> mises_;
  mutable std::vector<std::unique_ptr<InvariantStretch>> invariants_;
};

// A block as a field output hands it out: all rows of its content, or those of a set.
class BlockStorage {
 public:
  explicit BlockStorage(std::shared_ptr<const BlockContent> content) : content_(std::move(content)) {}
  BlockStorage(std::shared_ptr<const BlockContent> content, SharedRows selection)
      : content_(std::move(content)), selection_(std::move(selection)) {}

  const std::shared_ptr<const BlockContent>& content() const { return content_; }
  int rows() const { return selection_ ? selection_->size() : content_->rows(); }
  // The place of row `row` in the content.
  int contentRow(int row) const { return selection_ ? (*selection_)[row] : row; }
  // Whether `count` rows, at least one, from `from` on lie one after the other in the content.
  bool isOneStretch(int from, int count) const { return contentRow(from + count - 1) - contentRow(from) == count - 1; }

  // Null when no row is in the set.
  std::shared_ptr<const BlockStorage> subset(const std::shared_ptr<SetStorage>& set) const;

  // The arrays that the bulk interface hands out; null where there is none.
  int bulkWidth() const;
  template <class Number>
  Number* bulkRows() const;
  int* elementLabels() const;
  int* nodeLabels() const;
  int* integrationPoints() const;
  int numberOfElements() const;
  float* mises() const;
  void forEachTile(const std::function<void(const odb_FieldBulkTile&)>& take) const;

  // The numbers of row `row` by component of the field, in the block's precision.
  template <class Number>
  const Number* fieldRow(int row) const;
  // The same of `count` rows from `from` on; gathered in `buffer` where they do not lie so already.
  template <class Number>
  const Number* fieldRows(int from, int count, std::vector<Number>& buffer) const;
  int fieldRowLength() const;

 private:
  template <class Number>
  const std::vector<Number>& inFieldOrder() const;
  template <class Number>
  void forEachTileOf(const std::function<void(const odb_FieldBulkTile&)>& take) const;
  int* labels(const std::vector<int>& all, std::optional<std::vector<int>>& kept) const;

  std::shared_ptr<const BlockContent> content_;
  SharedRows selection_;  // rows of the content, ascending; null for all
  // Rearranged rows in the block's precision, where the stored ones do not serve.
  template <class Number>
  using Kept = std::optional<std::vector<Number>>;
  mutable std::tuple<Kept<float>, Kept<double>> bulk_;
  mutable std::tuple<Kept<float>, Kept<double>> fieldOrder_;
  mutable std::optional<std::vector<int>> elementLabels_;
  mutable std::optional<std::vector<int>> nodeLabels_;
  mutable std::optional<std::vector<int>> integrationPoints_;
  mutable std::optional<std::vector<float>> mises_;
};

}  // namespace odb_detail
