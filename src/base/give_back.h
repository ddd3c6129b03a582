// Memory of lists that are not needed any more.
#pragma once

#include <vector>

namespace base {

// Leaves the list empty, and without the room that clear() and an assignment of {} would keep.
template <class Number, class Allocator>
void giveBack(std::vector<Number, Allocator>& list) {
  std::vector<Number, Allocator>().swap(list);
}

}  // namespace base
