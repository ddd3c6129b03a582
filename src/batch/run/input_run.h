// A running input: its programs one after the other, its limits, its result.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "batch/run/child_process.h"
#include "batch/run/run_plan.h"
#include "batch/state/completion_record.h"
#include "batch/state/input_lock.h"

namespace batch {

class InputRun {
 public:
  using Clock = std::chrono::steady_clock;

  // Removes what an earlier run has left in `directory`, and starts the first program. The lock is the input's and is
  // given up with this object. `plan` and `input` must live as long. Throws base::FileError.
  InputRun(const RunPlan& plan, const BatchInput& input, std::string directory, InputLock lock);
  // Ends its programs if they are still at work, and leaves no record: the input is given back. If results are packed
  // its working files are removed.
  ~InputRun();
  InputRun(const InputRun&) = delete;
  InputRun& operator=(const InputRun&) = delete;

  const BatchInput& input() const { return input_; }

  // Looks after it: starts the next program when one has ended, ends all of them at a limit, tries again. Never waits.
  // Returns the record once, when the input is done or has failed for good; it is written by then.
  std::optional<Record> look(Clock::time_point now);

  // Whether its program has ended because somebody asked it to, a moment ago: if the runner is asked too, the input has
  // not failed.
  bool wasAskedToEnd() const { return askedToEnd_.has_value(); }

  // When it has to be looked after even though no program ends.
  Clock::time_point nextLook() const { return nextLook_; }

  // Whether the last look started another try, and why.
  bool hasTriedAgain() const { return hasTriedAgain_; }
  const Record& record() const { return record_; }

 private:
  enum class Phase { importing, extracting };

  void beginTry();
  void beginPhase(Phase phase);
  void planNextLook(Clock::time_point now);
  void checkLimits(Clock::time_point now);
  void fail(std::string reason, std::string detail);
  static bool isAskedToEnd(int status);
  void judge(int status);
  void judgeExtraction();
  std::string databaseArgument();
  std::string inDirectory(const char* name) const { return directory_ + "/" + name; }
  void removeDatabase();
  void writeResult();
  void packResult();
  Record finish();

  const RunPlan& plan_;
  const BatchInput& input_;
  std::string directory_;
  InputLock lock_;
  Recognised recognised_;
  Record record_;
  Phase phase_ = Phase::extracting;
  std::unique_ptr<ChildProcess> child_;
  std::optional<int> askedToEnd_;  // the status of the program
  bool hasFailed_ = false;
  bool isOver_ = false;
  bool hasTriedAgain_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point deadline_ = Clock::time_point::max();
  Clock::time_point nextLook_ = Clock::time_point::max();
};

}  // namespace batch
