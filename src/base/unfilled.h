// Vectors whose new elements are not initialised, for memory that is overwritten at once.
#pragma once

#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace base {

// Default-constructed elements stay uninitialised.
template <class Number>
struct UnfilledAllocator : std::allocator<Number> {
  template <class Other>
  struct rebind {
    using other = UnfilledAllocator<Other>;
  };

  template <class Other>
  void construct(Other* at) {
    ::new (static_cast<void*>(at)) Other;
  }
  template <class Other, class... Arguments>
  void construct(Other* at, Arguments&&... arguments) {
    std::construct_at(at, std::forward<Arguments>(arguments)...);
  }
};

template <class Number>
using UnfilledVector = std::vector<Number, UnfilledAllocator<Number>>;

}  // namespace base
