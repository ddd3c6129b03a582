// Steps and frames of a CalculiX run, out of what each result block and each printed table says of itself.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "importers/calculix/frd_reader.h"
#include "importers/calculix/step_times.h"
#include "importers/diagnostics.h"
#include "odbstore/schema.h"

namespace importers::calculix {

// What the value of a frame is.
enum class FrameKind {
  time,          // total time
  mode,          // a frequency
  baseState,     // of a buckling step
  bucklingMode,  // a factor
  steadyState    // a frequency
};

FrameKind frameKindOf(const FrdResult& block);

struct RunFrame {
  int step = 0;
  FrameKind kind = FrameKind::time;
  double value = 0.0;  // as the solver prints it
  std::optional<int> nodalDiameter;
  odbstore::FrameInfo info;
  std::set<std::string> fields;  // of the result file
};

// The number of a frame among all that are known, in the order in which they became known.
using FrameNumber = std::size_t;

// Blocks with the same step and frame counter make one frame. Frames of modes, buckling factors and steady-state
// dynamics are numbered from 1 in their step, because the solver gives all of them the same increment; the state that a
// buckling step starts from has 0; all others keep their increment. The value of a frame is the time in its step, the
// frequency or the buckling factor. All blocks have to be shown, also those that are not imported: what the frames of a
// step are is known from all of them.
class Frames {
 public:
  // `statusPath` names the status file, which need not exist. One that contradicts the results is passed over with a
  // warning.
  Frames(const std::string& statusPath, const WarningSink& warn)
      : statusPath_(statusPath), times_(readStepTimes(statusPath)), warn_(&warn) {}

  // The frame that a block belongs to; `fields` are the names it brings. A frame that has one of them already is
  // another one than the block's.
  FrameNumber find(const FrdResult& block, const std::vector<std::string>& fields);

  // A frame that the result file lacks, at its place in the step. `increment` is 0 where it is not known, and the
  // number of the mode.
  FrameNumber insert(int step, FrameKind kind, int increment, double value);

  // Counts times anew from the starts of their steps. Needed when frames have been inserted: a step that the status
  // file does not know starts where those before it end.
  void settleTimes();

  const RunFrame& operator[](FrameNumber frame) const { return frames_[frame]; }
  std::size_t size() const { return frames_.size(); }
  // The frames of each step in their order.
  const std::map<int, std::vector<FrameNumber>>& steps() const { return order_; }
  const StepTimes& statusTimes() const { return times_; }

  // "step 2, time 0.5": the last frame of the result file, with its total time.
  const std::string& lastPlace() const { return lastPlace_; }

 private:
  struct Step {
    double start = 0.0;  // total time
    double end = 0.0;
    int numbered = 0;  // the frames that are numbered
  };

  Step& stepOf(int number);
  double startOf(int step) const;
  double timeInStep(const RunFrame& frame, int increment, Step& step);
  void describeTime(RunFrame& frame, int increment, Step& step);
  void describe(RunFrame& frame, int increment);

  std::string statusPath_;
  StepTimes times_;
  const WarningSink* warn_;
  std::map<int, Step> steps_;
  std::vector<RunFrame> frames_;
  std::map<int, std::vector<FrameNumber>> order_;
  std::map<std::pair<int, int>, FrameNumber> byCounter_;  // step and frame counter
  std::string lastPlace_;
};

// Where each frame stands in its step, from 0.
std::vector<int> placesInSteps(const Frames& frames);

}  // namespace importers::calculix
