#include "batch/run/runner.h"

#include <fmt/core.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include "base/file_error.h"
#include "batch/run/working_files.h"
#include "batch/state/completion_record.h"
#include "batch/state/input_lock.h"

namespace batch {

namespace {

// How often inputs locked by another run are tried again, and how often the passing of time is reported.
constexpr std::chrono::milliseconds kPause{250};

void makeDirectory(const std::string& path) {
  if (::mkdir(path.c_str(), 0777) == 0 || errno == EEXIST) return;
  throw base::FileError(path, "", fmt::format("cannot be made: {}", std::strerror(errno)));
}

std::vector<std::string> pathsOf(const std::vector<FileStamp>& files) {
  std::vector<std::string> paths;
  for (const FileStamp& file : files) paths.push_back(file.path);
  return paths;
}

}  // namespace

Runner::Runner(const BatchDirectory& directory, const RunPlan& plan, Signals& signals, EventSink tell)
    : directory_(directory), plan_(plan), results_(directory, plan.slice), signals_(signals), tell_(std::move(tell)) {}

void Runner::tell(EventKind kind, const BatchInput& input, const Record* record) {
  progress_.running = running_.size();
  progress_.elsewhere = elsewhere_.size();
  const Event event = {kind, &input, record};
  tell_(&event, progress_);
}

bool Runner::isStillTrue(const Result& result, const BatchInput& input) const {
  const Record& record = result.record;
  if (!isOf(record, {input.path, plan_.settings.sum(), plan_.version})) return false;
  if (record.files != stampsOf(pathsOf(record.files))) return false;
  if (record.isDone) return result.hasItsParams();
  // A failure of an earlier run may have had a reason that is gone; one from beside this run has not.
  return plan_.skipsFailed || record.ended >= began_;
}

// Whether there is nothing left to do; counts it then.
bool Runner::isFinished(const BatchInput& input) {
  const auto result = results_.find(input, [&](const Result& found) { return isStillTrue(found, input); });
  if (!result) return false;
  const Record& record = result->record;
  ++(record.isDone ? progress_.before : progress_.failed);
  if (!record.isDone) ++progress_.why[record.reason];
  if (!record.isDone && !plan_.keepsGoing && !plan_.skipsFailed) isStopping_ = true;
  tell(EventKind::kept, input, &record);
  return true;
}

void Runner::findLeftBehind() {
  if (plan_.pack == nullptr) return;
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(directory_.path(), none)) {
    leftBehind_.insert(entry.path().filename().string());
  }
}

// Removes what a runner has left that was killed after packing a result.
void Runner::tidy(const BatchInput& input) {
  const std::string directory = directory_.directoryOf(input);
  if (::access((directory + "/" + kStatusName).c_str(), F_OK) == 0) return;
  const InputLock lock(directory + "/" + kLogName);
  if (lock.claim() == Claim::taken) removeWorkingFiles(directory);
}

Runner::Taken Runner::take(const BatchInput& input) {
  if (isFinished(input)) {
    if (leftBehind_.erase(input.id) > 0) tidy(input);
    return Taken::finished;
  }
  const std::string directory = directory_.directoryOf(input);
  makeDirectory(directory);
  const std::string log = directory + "/" + kLogName;
  InputLock lock(log);
  if (lock.claim() == Claim::impossible) {
    throw base::FileError(log, "", fmt::format("cannot be opened: {}", std::strerror(errno)));
  }
  if (lock.claim() == Claim::elsewhere) return Taken::elsewhere;
  // It may have been finished since, by the one who had the lock.
  results_.refresh();
  if (isFinished(input)) {
    if (::access((directory + "/" + kStatusName).c_str(), F_OK) != 0) removeWorkingFiles(directory);
    return Taken::finished;
  }
  running_.emplace_back(plan_, input, directory, std::move(lock));
  tell(EventKind::started, input, nullptr);
  return Taken::started;
}

void Runner::conclude(InputRun& run, const Record& record) {
  ++(record.isDone ? progress_.done : progress_.failed);
  if (!record.isDone) ++progress_.why[record.reason];
  if (!record.isDone && !plan_.keepsGoing) isStopping_ = true;
  tell(record.isDone ? EventKind::done : EventKind::failed, run.input(), &record);
}

void Runner::lookAfterAll() {
  const Clock::time_point now = Clock::now();
  for (auto run = running_.begin(); run != running_.end();) {
    if (isInterrupted_ && run->wasAskedToEnd()) {
      run = running_.erase(run);
      continue;
    }
    const std::optional<Record> record = run->look(now);
    if (run->hasTriedAgain()) tell(EventKind::triedAgain, run->input(), &run->record());
    if (!record) {
      ++run;
      continue;
    }
    // Taken out first: it counts no longer as running.
    std::list<InputRun> over;
    over.splice(over.begin(), running_, run++);
    conclude(over.front(), *record);
  }
}

void Runner::lookAtOthers() {
  const Clock::time_point now = Clock::now();
  if (now < nextLookAtOthers_) return;
  nextLookAtOthers_ = now + kPause;
  for (auto input = elsewhere_.begin(); input != elsewhere_.end() && isFree();) {
    endLeftBehind(directory_.directoryOf(**input) + "/" + kLogName);
    const BatchInput& waiting = **input;
    const auto here = input++;
    if (take(waiting) != Taken::elsewhere) elsewhere_.erase(here);
  }
}

// Until a child ends, a limit is reached, somebody interrupts; not at all where there is more to start.
void Runner::wait(bool isIdle) {
  Clock::time_point next = Clock::now() + kPause;
  for (const InputRun& run : running_) next = std::min(next, run.nextLook());
  next = std::min(next, end_);
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
  const int patience = isIdle ? static_cast<int>(std::max<std::int64_t>(left.count(), 0)) : 0;
  pollfd readable{signals_.file(), POLLIN, 0};
  const int ready = ::poll(&readable, 1, patience);
  if (ready > 0 && signals_.takeInterruption()) {
    if (!isInterrupted_) end_ = Clock::now() + plan_.grace;
    if (isInterrupted_) end_ = Clock::now();  // who asks twice has no patience
    isInterrupted_ = isStopping_ = true;
  }
  if (ready == 0 && isIdle) {
    progress_.running = running_.size();
    progress_.elsewhere = elsewhere_.size();
    tell_(nullptr, progress_);
  }
}

bool Runner::isOver(std::size_t left) const {
  if (isInterrupted_ && Clock::now() >= end_) return true;
  if (!running_.empty()) return false;
  return isStopping_ || (left == 0 && elsewhere_.empty());
}

Progress Runner::run(const std::vector<BatchInput>& inputs) {
  progress_ = {};
  progress_.inputs = inputs.size();
  began_ =
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
  findLeftBehind();
  std::size_t next = 0;
  const auto hasMore = [&] { return isFree() && next < inputs.size(); };
  while (!isOver(inputs.size() - next)) {
    if (hasMore()) {
      if (take(inputs[next]) == Taken::elsewhere) elsewhere_.push_back(&inputs[next]);
      ++next;
    } else if (isFree()) {
      lookAtOthers();
    }
    const bool isIdle = !hasMore();
    if (isIdle && isOver(inputs.size() - next)) break;
    wait(isIdle);
    lookAfterAll();
  }
  running_.clear();
  progress_.running = 0;
  progress_.elsewhere = elsewhere_.size();
  return progress_;
}

}  // namespace batch
