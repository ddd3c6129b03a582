// Blocks as field outputs hand them out, behind the handles.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "odbaccess/block_content.h"
#include "odbaccess/distinct_rows.h"
#include "odbaccess/location_storage.h"
#include "odbaccess/odb_FieldBulkTile.h"
#include "odbaccess/set_storage.h"

namespace odb_detail {

// A block as a field output hands it out: all rows of its content, or those of a set.
class BlockStorage {
 public:
  explicit BlockStorage(std::shared_ptr<const BlockContent> content) : content_(std::move(content)) {}
  BlockStorage(std::shared_ptr<const BlockContent> content, SharedRows selection)
      : content_(std::move(content)), selection_(std::move(selection)) {}

  // The rows of `block`, of which each stored row counts once (distinct_rows.h).
  BlockStorage(const BlockStorage& block, std::shared_ptr<const DistinctRows> distinct)
      : content_(block.content_), distinct_(std::move(distinct)) {}

  const std::shared_ptr<const BlockContent>& content() const { return content_; }
  int rows() const {
    if (distinct_) return distinct_->size();
    return selection_ ? selection_->size() : content_->rows();
  }
  // The place of row `row` in the content; not of distinct rows, which have none.
  int contentRow(int row) const { return selection_ ? (*selection_)[row] : row; }
  // And among the stored rows of that.
  int storedRow(int row) const {
    if (distinct_) return (*distinct_)[row];
    const int* const rowOf = content_->rowOf();
    return rowOf == nullptr ? contentRow(row) : rowOf[contentRow(row)];
  }
  // The same of `count` rows, at least one, from `from` on; put together in `buffer` where they are not in memory so.
  const int* storedRows(int from, int count, std::vector<int>& buffer) const;
  // Whether several rows can be the same stored one.
  bool isThroughIndex() const { return !distinct_ && content_->rowOf() != nullptr; }
  // Whether `count` rows, at least one, from `from` on are stored one after the other.
  bool isOneStretch(int from, int count) const {
    if (distinct_) return distinct_->isOneStretch(from, count);
    return content_->rowOf() == nullptr && contentRow(from + count - 1) - contentRow(from) == count - 1;
  }

  // A block of the same values, each stored row once, for what depends on neither order nor count of rows; this one
  // itself where none is stored for several.
  static std::shared_ptr<const BlockStorage> distinctOf(const std::shared_ptr<const BlockStorage>& block);

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
  // The same of stored rows, each once; of a selection of rows all of them, as above.
  void forEachStoredTile(const std::function<void(const odb_FieldBulkTile&)>& take) const;
  int storedCount() const { return selection_ ? rows() : content_->storedRows(); }
  // Of each row the stored row that it is; null where row i is row i of forEachStoredTile().
  const int* rowOf() const { return selection_ ? nullptr : content_->rowOf(); }

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
  odb_FieldBulkTile tileOf(int first, int count, const Number* rows) const;
  template <class Number>
  void forEachTileOf(const std::function<void(const odb_FieldBulkTile&)>& take) const;
  template <class Number>
  void forEachStoredTileOf(const std::function<void(const odb_FieldBulkTile&)>& take) const;
  std::shared_ptr<const BlockContent> content_;
  SharedRows selection_;                          // rows of the content, ascending; null for all
  std::shared_ptr<const DistinctRows> distinct_;  // stored rows of the content; null where not asked for
  template <class Number>
  using Kept = std::optional<std::vector<Number>>;
  // What has been put together for the interface, where the stored rows and labels do not serve. Most blocks are asked
  // for none of it.
  struct Arranged {
    std::tuple<Kept<float>, Kept<double>> bulk;
    std::tuple<Kept<float>, Kept<double>> fieldOrder;
    Kept<int> elementLabels;
    Kept<int> nodeLabels;
    Kept<int> integrationPoints;
    Kept<float> mises;
  };
  // Of each row in the selection its label in `all`.
  int* labels(const std::vector<int>& all, Kept<int> Arranged::*selected) const;
  Arranged& arranged() const {
    if (!arranged_) arranged_ = std::make_unique<Arranged>();
    return *arranged_;
  }
  mutable std::unique_ptr<Arranged> arranged_;
};

}  // namespace odb_detail
