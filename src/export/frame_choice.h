// Which frames are exported, and when they are.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "odbstore/reader.h"

namespace vtk_export {

// The frames of every step.
struct FrameRange {
  enum class Kind { all, first, last, range };
  Kind kind = Kind::all;
  int from = 0;  // of a range, by the numbers of the database; both ends belong to it
  int to = 0;
};

// "all", "first", "last", "N" or "N-M"; nothing for any other text.
std::optional<FrameRange> frameRangeFrom(std::string_view text);

struct ChosenFrame {
  std::shared_ptr<const odbstore::StoredStep> step;
  int frame = 0;  // its place in the step
  odbstore::FrameInfo info;
  double time = 0.0;  // in the series; ascending
};

// The frames of the steps named, of all steps where none is, in the order of the database. A step is named by its name,
// as the database or as records have it, or by its number from 1.
//
// The time of a frame is the time since the beginning of the first step where all frames of the database have a time in
// their step (their descriptions say "Step Time"); its value where those of the chosen frames ascend, as those of modes
// do; else its number among the chosen ones, from 0. Throws StoreError where a step is not there, and where no frame is
// left.
std::vector<ChosenFrame> chooseFrames(const odbstore::Reader& reader, const std::vector<std::string>& steps,
                                      const FrameRange& range);

}  // namespace vtk_export
