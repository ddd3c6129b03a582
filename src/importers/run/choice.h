// Which steps, frames, fields and sets of a run are imported.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "importers/run/outline.h"

namespace importers {

// The frames of every step.
struct FrameChoice {
  enum class Kind { all, first, last, range };
  Kind kind = Kind::all;
  int from = 0;  // of a range, as the database numbers frames; both ends belong to it
  int to = 0;
};

// "all", "first", "last", "N" or "N-M"; nothing for any other text.
std::optional<FrameChoice> frameChoiceFrom(std::string_view text);

// What a user asks for. Empty lists choose everything.
struct Selection {
  std::vector<std::string> fields = {};  // names in the database, in upper or lower case
  std::vector<int> steps = {};
  FrameChoice frames = {};
  std::vector<std::string> sets = {};  // likewise names, in any case

  // Whether all results are chosen.
  bool isEverything() const { return fields.empty() && steps.empty() && frames.kind == FrameChoice::Kind::all; }
  bool takesField(std::string_view name) const;
  bool takesStep(int step) const;
  bool takesSet(std::string_view name) const;
};

// The same in terms of an outline.
class Choice {
 public:
  bool takes(const RowsId& rows) const {
    const Step& step = steps_[rows.step];
    return step.isTaken && step.fields[rows.field] && step.frames[rows.frame];
  }
  // Histories come with their step.
  bool takesStep(std::size_t step) const { return steps_[step].isTaken; }
  bool takesSet(std::size_t set) const { return sets_[set]; }

 private:
  struct Step {
    bool isTaken = false;
    std::vector<bool> frames;
    std::vector<bool> fields;
  };
  friend Choice choose(const Outline& outline, const Selection& selection, const std::string& file);

  std::vector<Step> steps_;
  std::vector<bool> sets_;
};

// Where a field, set or step that is asked for is not there, or no step is left, an ImportError for `file` lists what
// there is. Steps without such frames stay for their mass and histories, unless fields or numbers of frames are asked
// for.
Choice choose(const Outline& outline, const Selection& selection, const std::string& file);

// Takes out of an outline what is not chosen. Places in it are other ones then.
void keepChosen(Outline& outline, const Choice& choice);

}  // namespace importers
