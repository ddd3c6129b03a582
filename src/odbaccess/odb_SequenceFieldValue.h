// The rows of a field output one by one.
//
//     const odb_SequenceFieldValue& values = field.values();
//     for (int i = 0; i < values.size(); ++i) use(values.constGet(i).mises());
//
// A reduction of many rows is faster by runs of them (odb_FieldValueRun.h).
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "odbaccess/odb_FieldValue.h"
#include "odbaccess/odb_FieldValueRun.h"

namespace odb_detail {
class BlockStorage;
}

// The rows of all blocks of a field output as one sequence, block after block.
class odb_SequenceFieldValue {
 public:
  odb_SequenceFieldValue() = default;
  explicit odb_SequenceFieldValue(std::vector<std::shared_ptr<const odb_detail::BlockStorage>> blocks);

  int size() const { return size_; }
  // Row `index`, 0 <= index < size(). Its numbers are read when they are asked for.
  odb_FieldValue constGet(unsigned index) const;

  // Hands out the values in order, those of one block at a time.
  void forEachRun(const std::function<void(odb_FieldValueRun&)>& take) const;
  // The same for what does not depend on how often a value occurs: of values that are stored once for several places
  // each comes once, in the order of their first places, and at the end of a run the last one once more. first() of a
  // run is 0, for the values have no places in the sequence.
  void forEachDistinctRun(const std::function<void(odb_FieldValueRun&)>& take) const;

 private:
  std::vector<std::shared_ptr<const odb_detail::BlockStorage>> blocks_;
  std::vector<int> firstRow_;  // of each block in this sequence
  int size_ = 0;
};
