// Which steps, frames and fields of a run are wanted.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace importers::calculix {

// The frames of every step.
struct FrameChoice {
  enum class Kind { all, first, last, range };
  Kind kind = Kind::all;
  int from = 0;  // of a range, as the database numbers frames; both ends belong to it
  int to = 0;
};

// "all", "first", "last", "N" or "N-M"; nothing for any other text.
std::optional<FrameChoice> frameChoiceFrom(std::string_view text);

// Empty lists choose everything.
struct Selection {
  std::vector<std::string> fields = {};  // names in the database, in any case
  std::vector<int> steps = {};
  FrameChoice frames = {};

  bool isEverything() const { return fields.empty() && steps.empty() && frames.kind == FrameChoice::Kind::all; }
  bool takesField(std::string_view name) const;
  bool takesStep(int step) const;
};

}  // namespace importers::calculix
