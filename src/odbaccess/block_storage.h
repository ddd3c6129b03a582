// Blocks as field outputs hand them out, behind the handles.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "odbaccess/block_content.h"
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
