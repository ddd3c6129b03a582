#include "importers/calculix/step_writer.h"

#include <fmt/format.h>

#include <set>

#include "importers/calculix/printed_mass.h"

namespace importers::calculix {

namespace {

odbstore::StepInfo infoOf(int step, const Deck& deck, const std::optional<StepMass>& mass) {
  odbstore::StepInfo info;
  const auto place = static_cast<std::size_t>(step) - 1;
  if (step > 0 && place < deck.stepTitles.size()) info.description = deck.stepTitles[place];
  if (!mass) return info;
  info.mass = mass->mass;
  info.massCenter.assign(mass->centre.begin(), mass->centre.end());
  info.inertiaAboutCenter.assign(mass->inertiaAboutCentre.begin(), mass->inertiaAboutCentre.end());
  info.inertiaAboutOrigin.assign(mass->inertiaAboutOrigin.begin(), mass->inertiaAboutOrigin.end());
  return info;
}

}  // namespace

WrittenSteps writeSteps(const Contents& contents, const Selection& selection, const Deck& deck, bool withMass,
                        const std::optional<StepMass>& computed, odbstore::Writer& writer) {
  std::set<int> steps;
  std::set<FrameNumber> frames;
  for (const ContentsBlock& block : contents.blocks) {
    steps.insert(block.step);
    frames.insert(block.frame);
  }
  for (const PrintedTable& table : contents.printed.tables) {
    if (table.step > 0 && selection.takesStep(table.step)) steps.insert(table.step);
  }
  WrittenSteps written;
  for (const int step : steps) {
    odbstore::StepInfo info = infoOf(step, deck, computed);
    if (withMass) takePrintedMass(contents.printed.tables, step, deck, info);
    const odbstore::StepId id = writer.addStep(fmt::format("Step-{}", step), info);
    written.steps.emplace(step, id);
    const auto order = contents.frames.steps().find(step);
    if (order == contents.frames.steps().end()) continue;
    for (const FrameNumber frame : order->second) {
      if (frames.contains(frame)) written.frames.emplace(frame, writer.addFrame(id, contents.frames[frame].info));
    }
  }
  return written;
}

}  // namespace importers::calculix
