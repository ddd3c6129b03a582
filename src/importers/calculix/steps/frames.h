// Steps and frames of a CalculiX run, derived from the heads of its result blocks and printed tables.
//
// Of these heads of a result file (.frd) and these lines of a status file (.sta)
//
//     1PSTEP         1           4           2     increment 4 of step 2 ...
//   100CL  102 1.23461E-01     ...    0    2        ... at the total time 0.123461, frame counter 2
//     1PSTEP         2           8           2
//   100CL  103 1.23465E-01     ...    0    3
//     1PSTEP         3           1           3
//     1PHID                      1                  nodal diameter 1 ...
//     1PMODE                     3                  ... and its mode 3
//   100CL  106 208765.9273     ...    2    6MODAL   2: modes
//
//   STEP      INC     ATT  ITRS     TOT TIME     STEP TIME      INC TIME
//      2        4       1     2  0.123461E+00  0.400000E-05  0.100000E-05
//      2        8       1     2  0.123465E+00  0.800000E-05  0.100000E-05
//
// come the frames
//
//   step 2   4  4e-6       Increment 4: Step Time = 4e-06
//            8  8e-6       Increment 8: Step Time = 8e-06
//   step 3   3  208765.93  Mode 3: Frequency = 2.0877e+05, Nodal Diameter = 1
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "importers/calculix/frd/frd_reader.h"
#include "importers/calculix/steps/step_times.h"
#include "importers/input/diagnostics.h"
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
  double value = 0.0;            // as the solver prints it
  std::optional<int> increment;  // as the solver counts in time, where that is known
  int mode = 0;                  // the solver's number of a mode, from 1 for each nodal diameter
  int place = 0;                 // of a mode among all of its step, from 1
  std::optional<int> nodalDiameter;
  bool isPeriodic = false;       // whether a time starts with a period of a steady state
  int digits = 0;                // of the value
  std::set<std::string> fields;  // of the result file
  odbstore::FrameInfo info;      // known when the frames are settled
};

// The number of a frame among all that are known, in the order in which they became known.
using FrameNumber = std::size_t;

// When a step starts in total time, and how long it takes, as far as the deck says.
struct StepSpan {
  double start = 0.0;
  std::optional<double> period;
};
using StepSpans = std::map<int, StepSpan>;

// Blocks with the same step and frame counter make one frame. Modes and buckling factors are numbered as the solver
// counts them in their step, frequencies of a steady state from 1; the state that a buckling step starts from has 0;
// all others keep their increment. The value of a frame is the time in its step, the frequency or the buckling factor.
// find() must be called for all blocks, also those that are not imported: the frames of a step depend on all of them.
class Frames {
 public:
  // `statusTimes` are those of the status file, empty if there is none.
  explicit Frames(StepTimes statusTimes = {}) : times_(std::move(statusTimes)) {}

  // The frame that a block belongs to; `fields` are the names it brings. A frame that has one of them already is not
  // the block's.
  FrameNumber find(const FrdResult& block, const std::vector<std::string>& fields);

  // Adds a frame that the result file lacks; settle() puts it in its place in the step.
  FrameNumber add(const RunFrame& frame);

  // When all blocks are known: drops the times of a status file that contradicts them.
  void checkStatus();
  void dropStatus() { times_.clear(); }

  // When all frames are known: orders those of each step, and finds their numbers, values and descriptions. Where
  // frames of a step would have equal numbers they are numbered from 1, and `note` receives a text that says so.
  void settle(const StepSpans& spans, const WarningSink& note);

  const RunFrame& operator[](FrameNumber frame) const { return frames_[frame]; }
  std::size_t size() const { return frames_.size(); }
  // The frames of each step in their order.
  const std::map<int, std::vector<FrameNumber>>& steps() const { return order_; }
  const StepTimes& statusTimes() const { return times_; }

  // "step 2, time 0.5": the last frame of the result file, with its total time.
  const std::string& lastPlace() const { return lastPlace_; }

 private:
  double startOf(int step, const StepSpans& spans) const;
  double timeInStep(const RunFrame& frame, double start) const;
  void setTimes(const std::vector<FrameNumber>& frames, const StepSpans& spans);
  void order(FrameNumber frame);
  void numberStep(const std::vector<FrameNumber>& frames, const WarningSink& note);

  StepTimes times_;
  std::vector<RunFrame> frames_;
  std::vector<FrameNumber> added_;
  std::map<int, std::vector<FrameNumber>> order_;
  std::map<std::pair<int, int>, FrameNumber> byCounter_;  // step and frame counter
  std::map<int, std::pair<int, int>> firstMode_;          // of a step: frame counter and number
  std::string lastPlace_;
};

// The index of each frame in its step, from 0.
std::vector<int> placesInSteps(const Frames& frames);

}  // namespace importers::calculix
