#include "importers/run/outline.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace importers {

namespace {

// "frames 1-5" or "frames 3"; a step that has histories alone has no frames.
std::string framesOf(const OutlineStep& step) {
  if (step.frames.empty()) return "no frames";
  const auto [least, greatest] =
      std::minmax_element(step.frames.begin(), step.frames.end(),
                          [](const auto& a, const auto& b) { return a.incrementNumber < b.incrementNumber; });
  return least->incrementNumber == greatest->incrementNumber
             ? fmt::format("frames {}", least->incrementNumber)
             : fmt::format("frames {}-{}", least->incrementNumber, greatest->incrementNumber);
}

}  // namespace

const char* shapeWord(const odbstore::FieldInfo& info) {
  if (odbstore::isTensorType(info.type)) return "tensor";
  return info.type == static_cast<int>(odbstore::FieldType::vector) ? "vector" : "scalar";
}

std::string whatThereIs(const Outline& outline) {
  if (outline.steps.empty()) return "the file holds no results";
  std::vector<std::string> steps;
  std::set<std::string> names;
  for (const OutlineStep& step : outline.steps) {
    steps.push_back(fmt::format("step {} ({})", step.number, framesOf(step)));
    for (const OutlineField& field : step.fields) names.insert(field.name);
  }
  return fmt::format("the file holds {} with the fields {}", fmt::join(steps, ", "), fmt::join(names, ", "));
}

}  // namespace importers
