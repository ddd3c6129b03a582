// Steps and frames of a CalculiX run, out of what each result block says of itself.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "importers/calculix/frd_reader.h"
#include "importers/calculix/step_mass.h"
#include "importers/calculix/step_times.h"
#include "importers/diagnostics.h"
#include "odbstore/writer.h"

namespace importers::calculix {

// Blocks with the same step and frame counter make one frame. Frames of modes, buckling factors and steady-state
// dynamics are numbered from 1 in their step, because the solver gives all of them the same increment; the state that a
// buckling step starts from has 0; all others keep their increment. The value of a frame is the time in its step, the
// frequency or the buckling factor. All blocks have to be shown, also those that are not imported: what the frames of a
// step are is known from all of them. Steps and frames are written when they are first needed.
class Frames {
 public:
  struct Frame {
    int index = 0;  // in its step, from 0
    odbstore::FrameInfo info;
    std::set<std::string> fields;
    std::optional<odbstore::FrameId> id;  // once it is written
  };

  // `statusPath` names the status file, which need not exist. One that contradicts the results is passed over with a
  // warning. Without a writer frames can be found, but not written.
  Frames(const std::string& statusPath, std::vector<std::string> stepTitles, odbstore::Writer* writer,
         const WarningSink& warn)
      : statusPath_(statusPath),
        times_(readStepTimes(statusPath)),
        stepTitles_(std::move(stepTitles)),
        writer_(writer),
        warn_(warn) {}

  // The mass of the steps that are written from now on.
  void setMass(const StepMass& mass) { mass_ = mass; }

  // The frame that a block belongs to; `fields` are the names it brings. A frame that has one of them already is
  // another one than the block's. Good until the next call.
  Frame& find(const FrdResult& block, const std::vector<std::string>& fields);

  // The same frame as the database has it.
  odbstore::FrameId write(const FrdResult& block, const std::vector<std::string>& fields);

  // How many have been written.
  int stepCount() const { return stepCount_; }
  int frameCount() const { return frameCount_; }
  // "step 2, time 0.5": the last frame begun, with its total time.
  const std::string& lastPlace() const { return lastPlace_; }

 private:
  struct Step {
    std::optional<odbstore::StepId> id;  // once it is written
    double start = 0.0;                  // total time
    double end = 0.0;
    int frames = 0;    // all of them
    int numbered = 0;  // those that are numbered
  };

  Step& stepOf(const FrdResult& block);
  double startOf(int step) const;
  double timeInStep(const FrdResult& block, Step& step);
  odbstore::StepId writeStep(int number, Step& step);
  odbstore::FrameInfo describe(const FrdResult& block, Step& step);

  std::string statusPath_;
  StepTimes times_;
  std::vector<std::string> stepTitles_;
  odbstore::Writer* writer_;
  const WarningSink& warn_;
  std::optional<StepMass> mass_;
  std::map<int, Step> steps_;
  std::map<std::pair<int, int>, Frame> frames_;  // by step and frame counter
  int stepCount_ = 0;
  int frameCount_ = 0;
  std::string lastPlace_;
};

}  // namespace importers::calculix
