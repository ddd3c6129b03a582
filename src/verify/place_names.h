// Names of data sets as users of a database know them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace verify {

// A block of a field.
struct BlockPlace {
  std::string step;
  std::string field;
  int block = 0;

  bool operator==(const BlockPlace&) const = default;
};

// The block whose rows the data set at `path` holds; nothing for any other data set.
std::optional<BlockPlace> blockOfRows(std::string_view path);

// `step "Step-1", field "S", block 0` and the like for the data set at `path`; a path that the layout does not know is
// its own name.
std::string describePlace(std::string_view path);

// "frame 3", "frames 3..5", "frames 0, 4, 9": in that order, cut off when there are many.
std::string describeFrames(const std::vector<int>& frames);

}  // namespace verify
