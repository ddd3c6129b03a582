#include "odbwriter/declared_model.h"

#include <numeric>

#include "odbstore/layout.h"
#include "odbstore/names.h"

namespace odbstore {

namespace {

std::string joined(const std::string& group, const std::string& link) { return group + "/" + link; }

std::vector<int> allFrames(const DeclaredStep& step) {
  std::vector<int> frames(step.frames.size());
  std::iota(frames.begin(), frames.end(), 0);
  return frames;
}

}  // namespace

std::vector<int> DeclaredModel::framesOf(const DeclaredField& field,
                                         const std::vector<std::vector<int>>& blockFrames) const {
  std::set<int> frames = field.frames;
  for (const int block : field.blocks) {
    const std::vector<int>& more = blockFrames[static_cast<std::size_t>(block)];
    frames.insert(more.begin(), more.end());
  }
  return {frames.begin(), frames.end()};
}

std::vector<int> DeclaredModel::framesOf(const DeclaredBlock& block) const {
  if (block.form.frames) return *block.form.frames;
  return allFrames(stepOf(fields[static_cast<std::size_t>(block.field)]));
}

std::string pathOf(const DeclaredStep& step) {
  return std::string("/") + links::kSteps + "/" + linkFromName(step.name);
}

std::string pathOf(const DeclaredModel& model, const DeclaredField& field) {
  return joined(joined(pathOf(model.stepOf(field)), links::kFields), linkFromName(field.name));
}

std::string pathOf(const DeclaredModel& model, const DeclaredBlock& block) {
  return joined(joined(pathOf(model, model.fields[static_cast<std::size_t>(block.field)]), links::kBlocks),
                std::to_string(block.number));
}

std::string pathOf(const DeclaredModel& model, const DeclaredHistory& history) {
  const DeclaredRegion& region = model.regions[static_cast<std::size_t>(history.region)];
  const std::string step = pathOf(model.steps[static_cast<std::size_t>(region.step)]);
  return joined(joined(joined(joined(step, links::kHistory), linkFromName(region.name)), links::kOutputs),
                linkFromName(history.name));
}

std::string ownerPath(const Owner& owner) {
  switch (owner.kind) {
    case OwnerKind::part:
      return joined(std::string("/") + links::kParts, linkFromName(owner.name));
    case OwnerKind::instance:
      return joined(joined(std::string("/") + links::kAssembly, links::kInstances), linkFromName(owner.name));
    default:
      return std::string("/") + links::kAssembly;
  }
}

std::string locationPath(std::size_t location) {
  return joined(std::string("/") + links::kLocations, std::to_string(location));
}

}  // namespace odbstore
