#include "importers/run/choice.h"

#include <fmt/core.h>

#include <algorithm>

#include "importers/input/diagnostics.h"
#include "importers/input/text_fields.h"

namespace importers {

namespace {

bool isOneOf(const std::vector<std::string>& names, std::string_view name) {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& one) { return upperCased(one) == upperCased(name); });
}

bool hasField(const Outline& outline, const std::string& name) {
  return std::any_of(outline.steps.begin(), outline.steps.end(), [&](const OutlineStep& step) {
    return std::any_of(step.fields.begin(), step.fields.end(),
                       [&](const OutlineField& field) { return isOneOf({name}, field.name); });
  });
}

bool hasStep(const Outline& outline, int number) {
  return std::any_of(outline.steps.begin(), outline.steps.end(),
                     [&](const OutlineStep& step) { return step.number == number; });
}

void requireAsked(const Outline& outline, const Selection& selection, const std::string& file) {
  const auto refuse = [&](const std::string& what) {
    throw ImportError(file, 0, fmt::format("there is no {}; {}", what, whatThereIs(outline)));
  };
  for (const std::string& field : selection.fields) {
    if (!hasField(outline, field)) refuse(fmt::format("field {}", field));
  }
  for (const int step : selection.steps) {
    if (!hasStep(outline, step)) refuse(fmt::format("step {}", step));
  }
  std::vector<std::string> sets;
  for (const OutlineSet& set : outline.sets) sets.push_back(set.name);
  for (const std::string& set : selection.sets) {
    if (isOneOf(sets, set)) continue;
    throw ImportError(
        file, 0,
        fmt::format("there is no set {}; {}", set, sets.empty() ? "there are none" : "the sets are " + listed(sets)));
  }
}

std::vector<bool> chosenFrames(const OutlineStep& step, const FrameChoice& choice) {
  const std::size_t count = step.frames.size();
  std::vector<bool> chosen(count, choice.kind == FrameChoice::Kind::all);
  if (count == 0) return chosen;
  if (choice.kind == FrameChoice::Kind::first) chosen.front() = true;
  if (choice.kind == FrameChoice::Kind::last) chosen.back() = true;
  if (choice.kind != FrameChoice::Kind::range) return chosen;
  for (std::size_t i = 0; i < count; ++i) {
    const int number = step.frames[i].incrementNumber;
    chosen[i] = number >= choice.from && number <= choice.to;
  }
  return chosen;
}

bool hasAny(const OutlineField& field, const std::vector<bool>& frames) {
  return std::any_of(field.frames.begin(), field.frames.end(),
                     [&](const OutlineRows& rows) { return frames[rows.frame]; });
}

}  // namespace

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

bool Selection::takesField(std::string_view name) const { return fields.empty() || isOneOf(fields, name); }

bool Selection::takesSet(std::string_view name) const { return sets.empty() || isOneOf(sets, name); }

bool Selection::takesStep(int step) const {
  return steps.empty() || std::find(steps.begin(), steps.end(), step) != steps.end();
}

Choice choose(const Outline& outline, const Selection& selection, const std::string& file) {
  requireAsked(outline, selection, file);
  // Choosing fields or frames means that rows are wanted.
  const bool needsRows = !selection.fields.empty() || selection.frames.kind == FrameChoice::Kind::range;
  Choice choice;
  bool isAny = selection.isEverything();
  for (const OutlineStep& step : outline.steps) {
    Choice::Step& taken = choice.steps_.emplace_back();
    taken.frames = chosenFrames(step, selection.frames);
    taken.fields.resize(step.fields.size());
    if (!selection.takesStep(step.number)) continue;
    taken.isTaken = !needsRows;
    for (std::size_t i = 0; i < step.fields.size(); ++i) {
      taken.fields[i] = selection.takesField(step.fields[i].name);
      taken.isTaken = taken.isTaken || (taken.fields[i] && hasAny(step.fields[i], taken.frames));
    }
    isAny = isAny || taken.isTaken;
  }
  if (!isAny) throw ImportError(file, 0, "nothing is selected; " + whatThereIs(outline));
  for (const OutlineSet& set : outline.sets) choice.sets_.push_back(selection.takesSet(set.name));
  return choice;
}

namespace {

// Takes the frames out that no field has any more.
void dropEmptyFrames(OutlineStep& step) {
  std::vector<std::size_t> places(step.frames.size(), 0);
  for (const OutlineField& field : step.fields) {
    for (const OutlineRows& rows : field.frames) places[rows.frame] = 1;
  }
  std::vector<odbstore::FrameInfo> kept;
  for (std::size_t frame = 0; frame < places.size(); ++frame) {
    const bool isUsed = places[frame] == 1;
    places[frame] = kept.size();
    if (isUsed) kept.push_back(std::move(step.frames[frame]));
  }
  step.frames = std::move(kept);
  for (OutlineField& field : step.fields) {
    for (OutlineRows& rows : field.frames) rows.frame = places[rows.frame];
  }
}

}  // namespace

void keepChosen(Outline& outline, const Choice& choice) {
  std::vector<OutlineStep> kept;
  for (std::size_t number = 0; number < outline.steps.size(); ++number) {
    if (!choice.takesStep(number)) continue;
    OutlineStep& step = outline.steps[number];
    for (std::size_t field = 0; field < step.fields.size(); ++field) {
      std::erase_if(step.fields[field].frames, [&](const OutlineRows& rows) {
        return !choice.takes({number, field, rows.frame});
      });
    }
    std::erase_if(step.fields, [](const OutlineField& field) { return field.frames.empty(); });
    dropEmptyFrames(step);
    kept.push_back(std::move(step));
  }
  outline.steps = std::move(kept);
  std::vector<OutlineSet> sets;
  for (std::size_t set = 0; set < outline.sets.size(); ++set) {
    if (choice.takesSet(set)) sets.push_back(std::move(outline.sets[set]));
  }
  outline.sets = std::move(sets);
}

}  // namespace importers
