// What `kolvex locate` prints.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chosen_records.h"
#include "inspect/places/locator.h"

namespace inspect {

// The extreme in one frame of those that --over-time looks at.
struct FrameExtreme {
  int increment = 0;
  double value = 0.0;  // of the frame
  LocatedExtreme found;
};

// One meaning of a name.
struct Located {
  Record record;
  LocatedExtreme found;
  std::vector<FrameExtreme> overTime;
};

// In words, several lines.
std::string textOf(const ChosenRecord& chosen, const Located& located);

// An element of the list `records`, without a line break.
std::string jsonOf(const ChosenRecord& chosen, const Located& located);

}  // namespace inspect
