#include "importers/calculix/selection.h"

#include <algorithm>

#include "importers/text_fields.h"

namespace importers::calculix {

std::optional<FrameChoice> frameChoiceFrom(std::string_view text) {
  if (text == "all") return FrameChoice{FrameChoice::Kind::all, 0, 0};
  if (text == "first") return FrameChoice{FrameChoice::Kind::first, 0, 0};
  if (text == "last") return FrameChoice{FrameChoice::Kind::last, 0, 0};
  const std::size_t dash = text.find('-');
  const bool isOne = dash == std::string_view::npos;
  const std::optional<int> from = integerFrom(text.substr(0, dash));
  const std::optional<int> to = isOne ? from : integerFrom(text.substr(dash + 1));
  if (!from || !to || *from < 0 || *to < *from) return std::nullopt;
  return FrameChoice{FrameChoice::Kind::range, *from, *to};
}

bool Selection::takesField(std::string_view name) const {
  return fields.empty() || std::any_of(fields.begin(), fields.end(),
                                       [&](const std::string& field) { return upperCased(field) == upperCased(name); });
}

bool Selection::takesStep(int step) const {
  return steps.empty() || std::find(steps.begin(), steps.end(), step) != steps.end();
}

}  // namespace importers::calculix
