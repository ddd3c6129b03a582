// Steps and frames of a CalculiX run, out of what each result block says of itself.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "importers/calculix/frd_reader.h"
#include "importers/calculix/step_times.h"
#include "odbstore/writer.h"

namespace importers::calculix {

// Blocks with the same step and frame counter make one frame. Frames of modes, buckling factors and steady-state
// dynamics are numbered from 1 in their step, because the solver gives all of them the same increment; all others keep
// their increment. The value of a frame is the time in its step, the frequency or the buckling factor.
class Frames {
 public:
  Frames(StepTimes times, std::vector<std::string> stepTitles, odbstore::Writer& writer)
      : times_(std::move(times)), stepTitles_(std::move(stepTitles)), writer_(writer) {}

  // The frame that a block belongs to; `fields` are the names it brings. A frame that has one of them already is
  // another one than the block's.
  odbstore::FrameId frameOf(const FrdResult& block, const std::vector<std::string>& fields);

  int stepCount() const { return static_cast<int>(steps_.size()); }
  int frameCount() const { return frameCount_; }
  // "step 2, time 0.5": the last frame begun.
  const std::string& lastPlace() const { return lastPlace_; }

 private:
  struct Step {
    odbstore::StepId id;
    double start = 0.0;  // total time
    double end = 0.0;
    int frames = 0;
  };
  struct Frame {
    odbstore::FrameId id;
    std::set<std::string> fields;
  };

  Step& stepOf(const FrdResult& block);
  double startOf(int step) const;
  odbstore::FrameInfo describe(const FrdResult& block, Step& step);

  StepTimes times_;
  std::vector<std::string> stepTitles_;
  odbstore::Writer& writer_;
  std::map<int, Step> steps_;
  std::map<std::pair<int, int>, Frame> frames_;  // by step and frame counter
  int frameCount_ = 0;
  std::string lastPlace_;
};

}  // namespace importers::calculix
