// The rows of a block in one frame, behind the handles.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <tuple>
#include <vector>

#include "odbaccess/field_plan.h"
#include "odbaccess/invariants.h"

namespace odb_detail {

// All rows of a block in one frame. The numbers are read at first use.
//
// Rows that many places of the model share are stored once: the block's rows are those of its location, and each of
// them is one of the stored rows. What is found of a row is found of the stored one.
class BlockContent {
 public:
  // `plan` is that of one of the field's blocks, which exists in the frame.
  BlockContent(std::shared_ptr<const FieldPlan> field, const BlockPlan& plan, int frame);

  const BlockPlan& plan() const { return plan_; }
  // What the field says of itself in this frame.
  const odbstore::FieldInfo& info() const { return field_->info(); }
  const odbstore::StoredBlock& block() const { return plan_.block(); }
  LocationStorage& location() const { return plan_.location(); }
  int rows() const { return static_cast<int>(location().rows()); }
  int storedRows() const { return static_cast<int>(block().storedRows()); }
  // Of each row the stored row that it is; null where row i is stored row i.
  const int* rowOf() const { return rowOf_; }
  int width() const { return plan_.width(); }
  bool isTensor() const { return plan_.isTensor(); }

  // The stored rows, [stored rows, width], in the block's precision. Nobody writes to them; they are not
  // const because the interface hands out plain pointers.
  template <class Number>
  Number* stored() const;

  // Whether the numbers are in memory, few, or can only be had as a whole.
  bool isAtHand() const;
  // Reads the stored rows from the file, in order, a piece at a time; isAtHand() is false. `take` gets the place of the
  // first row, the number of rows and the rows.
  template <class Number>
  void forEachPiece(const std::function<void(int first, int count, const Number* rows)>& take) const;

  // A stored row as a tensor, 0 where no component is stored, engineering shears halved.
  Tensor tensor(int storedRow) const;
  double magnitude(int storedRow) const;

  // Quantities of tensor rows, found once and kept: the equivalent stress of all stored rows, and the other invariants
  // of the stretch that a stored row lies in.
  const float* mises() const;
  const InvariantStretch& invariantsAround(int storedRow) const {
    const auto stretch = static_cast<std::size_t>(storedRow / InvariantStretch::kRows);
    const bool isKnown = stretch < invariants_.size() && invariants_[stretch] != nullptr;
    return isKnown ? *invariants_[stretch] : findInvariantsAround(storedRow);
  }
  // The invariant of a code other than those of the equivalent stress and the magnitude of all stored rows into `out`.
  void invariantColumn(odb_InvariantEnum code, float* out) const;

 private:
  const InvariantStretch& findInvariantsAround(int storedRow) const;

  std::shared_ptr<const FieldPlan> field_;  // keeps plan_ alive
  const BlockPlan& plan_;
  int frame_;
  const int* rowOf_;
  // Null where not asked for yet. No vectors, which would be filled with zeros first.
  mutable std::tuple<std::unique_ptr<float[]>, std::unique_ptr<double[]>> numbers_;
  mutable std::unique_ptr<float[]> mises_;
  mutable std::vector<std::unique_ptr<InvariantStretch>> invariants_;
};

}  // namespace odb_detail
