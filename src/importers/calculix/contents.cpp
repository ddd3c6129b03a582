#include "importers/calculix/contents.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "importers/calculix/frames.h"
#include "importers/text_fields.h"

namespace importers::calculix {

StressContent stressContentOf(const FrdResult& block, const Deck& deck) {
  const bool hasForces = deck.sectionForcesFrom > 0 && block.step >= deck.sectionForcesFrom;
  return hasForces ? StressContent::sectionForces : StressContent::stress;
}

Contents readContents(const std::string& results, const std::string& status, const Deck& deck,
                      const WarningSink& warn) {
  Contents contents;
  FrdReader reader(results);
  Frames frames(status, deck.stepTitles, nullptr, warn);
  std::size_t ordinal = 0;
  while (const std::optional<FrdBlock> next = reader.next([](const FrdResult&) { return false; })) {
    if (const auto* nodes = std::get_if<FrdNodes>(&*next)) contents.nodes += nodes->labels.size();
    if (const auto* elements = std::get_if<FrdElements>(&*next)) {
      for (const FrdElementGroup& group : elements->groups) contents.elements += group.labels.size();
    }
    const auto* result = std::get_if<FrdResult>(&*next);
    if (result == nullptr) continue;
    const std::size_t place = ordinal++;
    if (result->rows == 0) continue;
    contents.isBinary = contents.isBinary || result->format != RowFormat::text;
    std::vector<MappedField> fields = mapResult(*result, stressContentOf(*result, deck));
    const Frames::Frame& frame = frames.find(*result, namesOfFields(fields));
    contents.blocks.push_back(
        {place, result->name, result->step, frame.index, frame.info, std::move(fields), result->rows});
  }
  contents.isCutOff = reader.isCutOff();
  return contents;
}

namespace {

std::set<std::string> fieldNames(const Contents& contents) {
  std::set<std::string> names;
  for (const ContentsBlock& block : contents.blocks) {
    for (const MappedField& field : block.fields) names.insert(field.name);
  }
  return names;
}

// "1-5" or "3" of the frames of a step.
std::string frameNumbers(const Contents& contents, int step) {
  std::set<int> numbers;
  for (const ContentsBlock& block : contents.blocks) {
    if (block.step == step) numbers.insert(block.info.incrementNumber);
  }
  return *numbers.begin() == *numbers.rbegin() ? fmt::format("{}", *numbers.begin())
                                               : fmt::format("{}-{}", *numbers.begin(), *numbers.rbegin());
}

std::set<int> stepNumbers(const Contents& contents) {
  std::set<int> steps;
  for (const ContentsBlock& block : contents.blocks) steps.insert(block.step);
  return steps;
}

std::string whatThereIs(const Contents& contents) {
  std::vector<std::string> steps;
  for (const int step : stepNumbers(contents)) {
    steps.push_back(fmt::format("step {} (frames {})", step, frameNumbers(contents, step)));
  }
  if (steps.empty()) return "the file holds no results";
  return fmt::format("the file holds {} with the fields {}", fmt::join(steps, ", "),
                     fmt::join(fieldNames(contents), ", "));
}

void requireAsked(const Contents& contents, const Selection& selection, const std::string& results) {
  const std::set<std::string> names = fieldNames(contents);
  const std::set<int> steps = stepNumbers(contents);
  const auto refuse = [&](const std::string& what) {
    throw ImportError(results, 0, fmt::format("there is no {}; {}", what, whatThereIs(contents)));
  };
  for (const std::string& field : selection.fields) {
    const auto isIt = [&](const std::string& name) { return upperCased(name) == upperCased(field); };
    if (std::none_of(names.begin(), names.end(), isIt)) refuse(fmt::format("field {}", field));
  }
  for (const int step : selection.steps) {
    if (!steps.contains(step)) refuse(fmt::format("step {}", step));
  }
}

bool takesFrame(const FrameChoice& choice, const ContentsBlock& block, int lastFrame) {
  switch (choice.kind) {
    case FrameChoice::Kind::all:
      return true;
    case FrameChoice::Kind::first:
      return block.frame == 0;
    case FrameChoice::Kind::last:
      return block.frame == lastFrame;
    case FrameChoice::Kind::range:
      return block.info.incrementNumber >= choice.from && block.info.incrementNumber <= choice.to;
  }
  return false;
}

}  // namespace

void select(Contents& contents, const Selection& selection, const std::string& results) {
  if (selection.isEverything()) return;
  requireAsked(contents, selection, results);
  std::map<int, int> lastFrames;
  for (const ContentsBlock& block : contents.blocks) {
    lastFrames[block.step] = std::max(lastFrames[block.step], block.frame);
  }
  const std::string all = whatThereIs(contents);
  for (ContentsBlock& block : contents.blocks) {
    const bool isTaken =
        selection.takesStep(block.step) && takesFrame(selection.frames, block, lastFrames.at(block.step));
    std::erase_if(block.fields,
                  [&](const MappedField& field) { return !isTaken || !selection.takesField(field.name); });
  }
  std::erase_if(contents.blocks, [](const ContentsBlock& block) { return block.fields.empty(); });
  if (contents.blocks.empty()) throw ImportError(results, 0, "nothing is selected; " + all);
}

}  // namespace importers::calculix
