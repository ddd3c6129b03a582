// Runs inputs side by side until all are done, and does nothing twice.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <string>
#include <unordered_set>
#include <vector>

#include "batch/packs/results.h"
#include "batch/run/input_run.h"
#include "batch/run/run_plan.h"
#include "batch/run/signals.h"
#include "batch/state/batch_directory.h"

namespace batch {

// How far a run has got; every input is in one of the numbers.
struct Progress {
  std::size_t inputs = 0;
  std::size_t before = 0;  // done by an earlier run, or by one beside this one
  std::size_t done = 0;    // by this run
  std::size_t failed = 0;  // of all inputs, by whichever runner
  std::size_t running = 0;
  std::size_t elsewhere = 0;               // that another run has
  std::map<std::string, std::size_t> why;  // failed ones by their reason

  std::size_t finished() const { return before + done + failed; }
};

enum class EventKind {
  kept,        // what came of it was known
  started,     // its first program is running
  triedAgain,  // the record says why
  done,
  failed  // by this run
};

struct Event {
  EventKind kind = EventKind::started;
  const BatchInput* input = nullptr;
  const Record* record = nullptr;  // null if it has just started
};

// Called for every event, and with null when time has passed without one.
using EventSink = std::function<void(const Event*, const Progress&)>;

class Runner {
 public:
  // All must outlive the runner. `signals` reports ended children and interruptions.
  Runner(const BatchDirectory& directory, const RunPlan& plan, Signals& signals, EventSink tell);

  // Runs those of the inputs whose record does not say that they are done, or that another run has failed with since
  // this one began. Inputs that another run is at work on are waited for, and taken over when it dies. Stops at the
  // first failure unless the plan keeps going, and at an interruption: what runs then ends and is given back. Throws
  // base::FileError where a record cannot be written: what is done then stays done, what runs is given back.
  Progress run(const std::vector<BatchInput>& inputs);

  bool isInterrupted() const { return isInterrupted_; }

 private:
  using Clock = InputRun::Clock;
  enum class Taken { finished, started, elsewhere };

  Taken take(const BatchInput& input);
  bool isStillTrue(const Result& result, const BatchInput& input) const;
  bool isFinished(const BatchInput& input);
  void findLeftBehind();
  void tidy(const BatchInput& input);
  void lookAfterAll();
  void lookAtOthers();
  void conclude(InputRun& run, const Record& record);
  void wait(bool isIdle);
  bool isOver(std::size_t left) const;
  // Whether one more may be started.
  bool isFree() const { return running_.size() < plan_.jobs && !isStopping_; }
  void tell(EventKind kind, const BatchInput& input, const Record* record);

  const BatchDirectory& directory_;
  const RunPlan& plan_;
  Results results_;
  std::unordered_set<std::string> leftBehind_;  // directories, by id, that were there before, if results are packed
  Signals& signals_;
  EventSink tell_;
  Progress progress_;
  std::list<InputRun> running_;
  std::list<const BatchInput*> elsewhere_;
  std::int64_t began_ = 0;  // nanoseconds since 1970
  bool isStopping_ = false;
  bool isInterrupted_ = false;
  Clock::time_point end_ = Clock::time_point::max();  // of the grace after an interruption
  Clock::time_point nextLookAtOthers_{};
};

}  // namespace batch
