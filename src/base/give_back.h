// Frees the memory of lists that are no longer needed.
#pragma once

#include <vector>

namespace base {

// Empties the list and frees its memory, which clear() and an assignment of {} would keep.
template <class Number, class Allocator>
void giveBack(std::vector<Number, Allocator>& list) {
  std::vector<Number, Allocator>().swap(list);
}

}  // namespace base
