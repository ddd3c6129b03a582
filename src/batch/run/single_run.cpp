#include "batch/run/single_run.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "base/file_error.h"
#include "batch/run/input_run.h"
#include "batch/state/small_files.h"

namespace batch {

namespace {

using Clock = InputRun::Clock;

constexpr const char* kStrict = "--strict";
constexpr std::chrono::milliseconds kLongestPause{250};
// How long programs that were ended may take to go.
constexpr std::chrono::seconds kPatience{5};

InputLock lockOf(const std::string& directory) {
  const std::string log = directory + "/" + kLogName;
  const Clock::time_point end = Clock::now() + kPatience;
  bool wasLeftBehind = false;
  while (true) {
    InputLock lock(log);
    if (lock.claim() == Claim::taken) return lock;
    if (lock.claim() == Claim::impossible)
      throw base::FileError(log, "", fmt::format("cannot be opened: {}", std::strerror(errno)));
    wasLeftBehind = endLeftBehind(log) || wasLeftBehind;
    if (!wasLeftBehind || Clock::now() > end) throw base::FileError(directory, "", "another run is at work there");
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

class SingleRun {
 public:
  SingleRun(const RunPlan& plan, const std::string& input, const std::string& directory, Signals& signals,
            const std::function<void()>& wait)
      : plan_(plan), input_{input, ""}, directory_(directory), signals_(signals), wait_(wait) {}

  // Nothing where it was interrupted.
  std::optional<Record> attempt(const RunPlan& plan) {
    InputLock lock = lockOf(directory_);
    writeSmallFile(plan.configuration, plan.settings.configuration);
    InputRun run(plan, input_, directory_, std::move(lock));
    while (true) {
      if (const std::optional<Record> record = run.look(Clock::now())) return record;
      if (isInterrupted(run.nextLook())) break;
    }
    return std::nullopt;
  }

 private:
  bool isInterrupted(Clock::time_point nextLook) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(std::min(nextLook, Clock::now() + kLongestPause) - Clock::now());
    pollfd readable{signals_.file(), POLLIN, 0};
    const int ready = ::poll(&readable, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready == 0) wait_();
    return ready > 0 && signals_.takeInterruption();
  }

  const RunPlan& plan_;
  const BatchInput input_;
  const std::string& directory_;
  Signals& signals_;
  const std::function<void()>& wait_;
};

void removeResults(const std::string& directory) {
  for (const char* name : {kMarkerName, kParamsName}) ::unlink((directory + "/" + name).c_str());
}

bool hasOption(const RunPlan& plan, const char* option) {
  const auto& options = plan.settings.importOptions;
  return std::find(options.begin(), options.end(), option) != options.end();
}

}  // namespace

std::optional<Record> runSingle(const RunPlan& plan, const std::string& input, const std::string& directory,
                                Signals& signals, const std::function<void()>& wait) {
  if (::mkdir(directory.c_str(), 0777) != 0 && errno != EEXIST)
    throw base::FileError(directory, "", fmt::format("cannot be made: {}", std::strerror(errno)));
  SingleRun runs(plan, input, directory, signals, wait);
  RunPlan strict = plan;
  if (!hasOption(plan, kStrict)) strict.settings.importOptions.emplace_back(kStrict);
  std::optional<Record> record = runs.attempt(strict);
  const bool mayBeTriedAgain =
      record && !record->isDone && record->reason == "import failed" && !hasOption(plan, kStrict);
  if (mayBeTriedAgain) {
    RunPlan loose = plan;
    loose.findMissing = [&plan, lost = record->detail](const std::string& where) {
      const std::string more = plan.findMissing ? plan.findMissing(where) : "";
      return more.empty() ? lost : lost + "; " + more;
    };
    record = runs.attempt(loose);
  }
  if (!record) removeResults(directory);
  return record;
}

}  // namespace batch
