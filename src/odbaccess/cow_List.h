// A copy-on-write array: copies share their elements until one of them is written to.
//
//     cow_List<int> list({1, 2, 3});
//     cow_List<int> copy = list;
//     copy[0] = 7;
//     copy.append(8);  // `list` has 1, 2, 3 still
#pragma once

#include <cassert>
#include <memory>
#include <utility>
#include <vector>

template <class T>
class cow_List {
 public:
  cow_List() = default;
  explicit cow_List(std::vector<T> elements) : elements_(std::make_shared<std::vector<T>>(std::move(elements))) {}

  // Number of elements.
  int size() const { return elements_ ? static_cast<int>(elements_->size()) : 0; }

  // Element `index`, 0 <= index < size(). The reference is good until this list is written to or destroyed.
  const T& constGet(int index) const {
    assert(index >= 0 && index < size());
    return (*elements_)[static_cast<std::size_t>(index)];
  }
  const T& operator[](int index) const { return constGet(index); }

  // For writing: the elements are first taken away from the copies that share them.
  T& operator[](int index) {
    assert(index >= 0 && index < size());
    unshare();
    return (*elements_)[static_cast<std::size_t>(index)];
  }

  // Adds an element at the end; as writing does, it leaves copies as they are.
  void append(T element) {
    unshare();
    elements_->push_back(std::move(element));
  }

 private:
  void unshare() {
    if (!elements_) {
      elements_ = std::make_shared<std::vector<T>>();
    } else if (elements_.use_count() > 1) {
      elements_ = std::make_shared<std::vector<T>>(*elements_);
    }
  }

  std::shared_ptr<std::vector<T>> elements_;
};
