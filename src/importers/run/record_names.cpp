#include "importers/run/record_names.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <vector>

#include "base/control_characters.h"
#include "importers/input/text_fields.h"
#include "importers/run/set_names.h"

namespace importers {

namespace {

// The parts of record names between a field's name and its extreme.
constexpr std::array<std::string_view, 19> kQuantities = {"mises",
                                                          "mag",
                                                          "1",
                                                          "2",
                                                          "3",
                                                          "11",
                                                          "22",
                                                          "33",
                                                          "12",
                                                          "13",
                                                          "23",
                                                          "tresca",
                                                          "press",
                                                          "inv3",
                                                          "maxprincipal",
                                                          "midprincipal",
                                                          "minprincipal",
                                                          "maxinplaneprincipal",
                                                          "mininplane_principal"};
constexpr std::string_view kOutOfPlane = "outofplane_principal";
constexpr std::string_view kBetween = "__";

bool isQuantity(std::string_view text) {
  return text == kOutOfPlane || std::find(kQuantities.begin(), kQuantities.end(), text) != kQuantities.end();
}

// The names of fields so far, and of all sets, cleaned: decides whether another field's records have names of their
// own.
class Names {
 public:
  explicit Names(const Outline& outline) {
    for (const OutlineSet& set : outline.sets) sets_.insert(nameInRecords(set.name));
  }

  bool isFree(const std::string& field) const {
    if (fields_.contains(field)) return false;
    return std::none_of(fields_.begin(), fields_.end(),
                        [&](const std::string& other) { return clash(field, other) || clash(other, field); });
  }

  void take(const std::string& field) { fields_.insert(field); }

 private:
  // Whether a record of `field` may be one of `other` over another set: <set>__<field> is the same text as
  // <longer set>__<other>. Also "U__mag", a scalar, beside the vector "U".
  bool clash(const std::string& field, const std::string& other) const {
    if (field.starts_with(other + std::string(kBetween)) && isQuantity(field.substr(other.size() + kBetween.size()))) {
      return true;
    }
    if (!field.ends_with("_" + other)) return false;
    const std::string front = field.substr(0, field.size() - other.size());  // "_", "__", "x__"
    if (front == "_") return hasSetBefore("_");
    if (!front.ends_with(kBetween)) return false;
    const std::string middle = front.substr(0, front.size() - kBetween.size());
    return sets_.contains(middle) || hasSetBefore(std::string(kBetween) + middle);
  }

  // Whether some set is called like another one and `ending`.
  bool hasSetBefore(const std::string& ending) const {
    return std::any_of(sets_.begin(), sets_.end(), [&](const std::string& set) {
      return set.ends_with(ending) && sets_.contains(set.substr(0, set.size() - ending.size()));
    });
  }

  std::set<std::string> sets_;
  std::set<std::string> fields_;
};

void renameFields(Outline& outline, const std::string& file, const WarningSink& warn) {
  Names names(outline);
  std::map<std::string, std::string> final;  // by the source's name: a field has one name in all steps
  for (const OutlineStep& step : outline.steps) {
    for (const OutlineField& field : step.fields) {
      if (final.contains(field.name)) continue;
      std::string name = field.name;
      for (int number = 2; !names.isFree(nameInRecords(name)); ++number)
        name = fmt::format("{}_{}", field.name, number);
      names.take(nameInRecords(name));
      if (name != field.name) {
        warn(base::note(
            {file}, fmt::format("the field {} is called {} because record names must be unique", field.name, name)));
      }
      final.emplace(field.name, name);
    }
  }
  for (OutlineStep& step : outline.steps) {
    for (OutlineField& field : step.fields) field.name = final.at(field.name);
  }
}

void clean(std::string& name, const SourcePlace& place, const WarningSink& warn) {
  warnOfControlCharacters(name, place, warn);
  if (base::hasControlCharacter(name)) name = storableText(name);
}

// Two fields of a step stay two.
void cleanField(OutlineField& field, const OutlineStep& step, const std::string& file, const WarningSink& warn) {
  if (!base::hasControlCharacter(field.name)) return;
  clean(field.name, {file}, warn);
  const std::string blank = field.name;
  const auto isTaken = [&](const OutlineField& other) { return &other != &field && other.name == field.name; };
  for (int number = 2; std::any_of(step.fields.begin(), step.fields.end(), isTaken); ++number) {
    field.name = fmt::format("{}_{}", blank, number);
  }
}

void cleanNames(Outline& outline, const std::string& file, const WarningSink& warn) {
  for (OutlineSet& set : outline.sets) clean(set.name, set.place, warn);
  for (OutlineStep& step : outline.steps) {
    clean(step.name, {file}, warn);
    for (OutlineField& field : step.fields) cleanField(field, step, file, warn);
  }
}

void renumberFrames(Outline& outline, const std::string& file, const WarningSink& warn) {
  for (OutlineStep& step : outline.steps) {
    std::set<int> numbers;
    const bool isUnique = std::all_of(step.frames.begin(), step.frames.end(), [&](const odbstore::FrameInfo& frame) {
      return numbers.insert(frame.incrementNumber).second;
    });
    if (isUnique) continue;
    int number = 0;
    for (odbstore::FrameInfo& frame : step.frames) frame.incrementNumber = ++number;
    warn(base::note({file}, fmt::format("frames of {} have equal numbers; they are numbered from 1", step.name)));
  }
}

void renameSets(Outline& outline, const WarningSink& warn) {
  std::vector<NamedSet> asked;
  for (const OutlineSet& set : outline.sets) asked.push_back({set.kind, set.name, set.isOfSurface});
  const std::vector<FinalSetName> names = uniqueSetNames(asked);
  for (std::size_t i = 0; i < names.size(); ++i) {
    OutlineSet& set = outline.sets[i];
    if (names[i].isRenamed) {
      warn(base::note(set.place,
                      fmt::format("the {} set {} becomes {}, because records cannot tell it from another set",
                                  set.kind == odbstore::SetKind::node ? "node" : "element", set.name, names[i].name)));
    }
    set.name = names[i].name;
  }
}

void warnOfHiddenSets(const Outline& outline, const WarningSink& warn) {
  std::vector<std::string> hidden;
  SourcePlace place;
  for (const OutlineSet& set : outline.sets) {
    if (!isLeftOutOfRecords(set.name)) continue;
    if (hidden.empty()) place = set.place;
    hidden.push_back(set.name);
  }
  if (hidden.empty()) return;
  warn(base::warning(place, fmt::format("the sets {} will have no records: an extraction leaves out sets whose "
                                        "names contain \"Warn\" or \"Info\"",
                                        listed(hidden))));
}

}  // namespace

std::string historyRecord(const std::string& output, const std::string& label) {
  return label.empty() ? nameInRecords(output) : nameInRecords(output) + "_" + label;
}

void keepNamesApart(Outline& outline, const std::string& file, const WarningSink& warn) {
  cleanNames(outline, file, warn);
  renumberFrames(outline, file, warn);
  renameSets(outline, warn);
  warnOfHiddenSets(outline, warn);
  renameFields(outline, file, warn);
}

}  // namespace importers
