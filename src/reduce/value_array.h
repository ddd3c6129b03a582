// Arrays of values that a selection will reorder.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

// Numbers that start out unfilled: filling large arrays with zeros first would be seen. Each place is to be written
// before it is read.
template <class Number>
class ValueArray {
 public:
  ValueArray() = default;
  explicit ValueArray(std::size_t count) : numbers_(std::make_unique_for_overwrite<Number[]>(count)), count_(count) {}

  bool empty() const { return count_ == 0; }
  Number* data() { return numbers_.get(); }
  std::span<Number> all() { return {numbers_.get(), count_}; }

 private:
  std::unique_ptr<Number[]> numbers_;
  std::size_t count_ = 0;
};
