// The zero-based arrays of the interface.
//
//     const odb_Sequence<odb_String> labels = field.componentLabels();
//     for (int i = 0; i < labels.size(); ++i) std::puts(labels.constGet(i).cStr());
//
//     const odb_SequenceDouble center = step.massCenter();  // empty where the step has none
//     if (center.size() == 3) use(center[0], center[1], center[2]);
#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <vector>

#include "odbaccess/cow_List.h"

// Objects; size() and constGet() are those of cow_List.
template <class T>
class odb_Sequence : public cow_List<T> {
 public:
  using cow_List<T>::cow_List;

  // Whether an element equals `value`.
  bool isMember(const T& value) const {
    for (int i = 0; i < this->size(); ++i) {
      if (this->constGet(i) == value) return true;
    }
    return false;
  }
};

// Numbers, read only. Built by copying `count` numbers from `data`; up to six of them, which is a
// row of every field and a sample of every usual history, need no storage of their own.
template <class T>
class odb_NumberSequence {
 public:
  odb_NumberSequence() = default;
  odb_NumberSequence(const T* data, int count) : size_(count) {
    if (count <= kInline) {
      std::copy_n(data, count, few_.begin());
    } else {
      many_ = std::make_shared<const std::vector<T>>(data, data + count);
    }
  }
  explicit odb_NumberSequence(std::span<const T> numbers)
      : odb_NumberSequence(numbers.data(), static_cast<int>(numbers.size())) {}

  // How many there are.
  int size() const { return size_; }

  // Number `index`; 0 for an index past the end, as for a component that is not stored.
  T constGet(int index) const {
    if (index < 0 || index >= size_) return T{};
    const auto at = static_cast<std::size_t>(index);
    return many_ ? (*many_)[at] : few_[at];
  }
  // The same.
  T operator[](int index) const { return constGet(index); }

 private:
  static constexpr int kInline = 6;

  int size_ = 0;
  std::array<T, kInline> few_{};
  std::shared_ptr<const std::vector<T>> many_;
};

// A row or a point; many of them, as the samples of a history are.
using odb_SequenceFloat = odb_NumberSequence<float>;
using odb_SequenceDouble = odb_NumberSequence<double>;
using odb_SequenceSequenceFloat = odb_Sequence<odb_SequenceFloat>;
