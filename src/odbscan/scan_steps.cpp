#include <fmt/core.h>

#include "odbscan/object_info.h"
#include "odbscan/scan_context.h"
#include "odbstore/layout.h"
#include "odbstore/names.h"

namespace odbscan {

namespace {

namespace links = odbstore::links;

std::vector<odbstore::FrameInfo> readFrames(const h5::Group& step, ScanContext& context) {
  const std::optional<h5::Group> group = context.once(step.findGroup(links::kFrames));
  if (!group) return {};
  const h5::Dataset increments = context.once(group->dataset(links::kIncrementNumber));
  const std::vector<int> numbers = increments.readInts();
  const std::vector<double> values = context.once(group->dataset(links::kValue)).readDoubles();
  const std::vector<std::string> texts = context.once(group->dataset(links::kDescription)).readStrings();
  if (increments.dims().size() != 1 || values.size() != numbers.size() || texts.size() != numbers.size()) {
    group->fail("incrementNumber, value and description must have one entry per frame each");
  }
  std::vector<odbstore::FrameInfo> frames(numbers.size());
  for (std::size_t i = 0; i < frames.size(); ++i) frames[i] = {numbers[i], values[i], texts[i]};
  return frames;
}

void scanStep(const h5::Group& step, const std::string& name, ScanContext& context) {
  odbstore::StepInfo info;
  context.guarded([&] { info = readStepInfo(step); });
  context.catalog.addStep(name, info);
  std::vector<odbstore::FrameInfo> frames;
  const bool hasFrames = context.guarded([&] { frames = readFrames(step, context); });
  for (const odbstore::FrameInfo& frame : frames) context.catalog.addFrame(frame);
  // Without the frames everything in the fields would be wrong.
  if (hasFrames) context.guarded([&] { scanFields(step, context); });
  context.guarded([&] { scanHistories(step, context); });
}

}  // namespace

void scanSteps(const h5::Group& root, ScanContext& context) {
  const std::optional<h5::Group> steps = context.once(root.findGroup(links::kSteps));
  if (!steps) return;
  for (const std::string& link : steps->links(h5::LinkOrder::byCreation)) {
    context.guarded([&] { scanStep(context.once(steps->group(link)), odbstore::nameFromLink(link), context); });
  }
}

}  // namespace odbscan
