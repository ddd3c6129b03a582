// What `kolvex locate` prints.
#pragma once

#include <nlohmann/json_fwd.hpp>
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

// The text with control characters escaped (base/control_characters.h) but for line ends.
std::string escapedLines(const std::string& text);

// "439.75 PART-1-1 node 156 element 60 at (0, 10, 12)".
std::string placeText(const LocatedPlace& located);
// The same with the keys of --json.
nlohmann::ordered_json jsonOfPlace(const LocatedPlace& located);

// In words, several lines.
std::string textOf(const ChosenRecord& chosen, const Located& located);

// An element of the list `records`, without a line break.
std::string jsonOf(const ChosenRecord& chosen, const Located& located);

}  // namespace inspect
