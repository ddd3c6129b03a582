#include "batch/run/input_run.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <system_error>
#include <utility>

#include "base/file_error.h"
#include "base/stale_files.h"
#include "batch/run/log_tail.h"
#include "batch/run/memory_use.h"
#include "batch/state/small_files.h"

namespace batch {

namespace {

// Relative to the directory of the input, which the programs work in.
constexpr const char* kDatabaseName = "database.odb";
constexpr const char* kUpgradedName = "upgradedOdb.odb";

// How long a request to end may take from a program to the runner.
constexpr std::chrono::milliseconds kRequestPause{500};

constexpr std::chrono::milliseconds kMemoryPause{20};

void removeFile(const std::string& path) {
  if (::unlink(path.c_str()) == 0 || errno == ENOENT) return;
  throw base::FileError(path, "", fmt::format("cannot be removed: {}", std::strerror(errno)));
}

std::int64_t nanosecondsSince1970() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::string megabytes(std::uint64_t bytes) { return fmt::format("{:.0f} MB", static_cast<double>(bytes) / 1e6); }

}  // namespace

InputRun::InputRun(const RunPlan& plan, const BatchInput& input, std::string directory, InputLock lock)
    : plan_(plan), input_(input), directory_(std::move(directory)), lock_(std::move(lock)) {
  for (const char* name : {kStatusName, kMarkerName, kParamsName}) removeFile(inDirectory(name));
  if (::ftruncate(lock_.file(), 0) != 0) {
    throw base::FileError(inDirectory(kLogName), "", fmt::format("cannot be emptied: {}", std::strerror(errno)));
  }
  recognised_ = plan_.recognise(input_.path);
  record_.input = input_.path;
  record_.settings = plan_.settings.sum();
  record_.version = plan_.version;
  record_.tries = 0;
  beginTry();
}

InputRun::~InputRun() {
  if (child_ == nullptr) return;
  child_.reset();
  removeDatabase();
}

void InputRun::beginTry() {
  ++record_.tries;
  hasFailed_ = false;
  if (plan_.timeout.count() > 0) deadline_ = Clock::now() + plan_.timeout;
  record_.files = stampsOf(recognised_.files);
  if (!record_.files.front().isThere) {
    fail("input missing", "");
    return;
  }
  beginPhase(recognised_.isDatabase ? Phase::extracting : Phase::importing);
}

// The extraction appends ".odb" to a name that does not contain it; such a database gets a link.
std::string InputRun::databaseArgument() {
  if (!recognised_.isDatabase) return kDatabaseName;
  if (input_.path.find(".odb") != std::string::npos) return input_.path;
  removeFile(inDirectory(kDatabaseName));
  if (::symlink(input_.path.c_str(), inDirectory(kDatabaseName).c_str()) != 0) {
    throw base::FileError(inDirectory(kDatabaseName), "", fmt::format("cannot be made: {}", std::strerror(errno)));
  }
  return kDatabaseName;
}

void InputRun::beginPhase(Phase phase) {
  phase_ = phase;
  ProgramCall call = {"", {}, directory_, lock_.file()};
  if (phase == Phase::importing) {
    call.path = plan_.import;
    call.arguments = {input_.path, "-o", kDatabaseName};
    call.arguments.insert(call.arguments.end(), plan_.settings.importOptions.begin(),
                          plan_.settings.importOptions.end());
  } else {
    call.path = plan_.extraction;
    call.arguments = {"-odb", databaseArgument(), "-config", plan_.configuration};
  }
  try {
    child_ = std::make_unique<ChildProcess>(call);
  } catch (const std::system_error& error) {
    fail("cannot be started", error.what());
    return;
  }
  planNextLook(Clock::now());
}

void InputRun::planNextLook(Clock::time_point now) {
  nextLook_ = deadline_;
  if (plan_.memory > 0) nextLook_ = std::min(nextLook_, now + kMemoryPause);
}

void InputRun::fail(std::string reason, std::string detail) {
  hasFailed_ = true;
  nextLook_ = Clock::time_point();  // long ago, and not so long that the time since then overflows
  record_.reason = std::move(reason);
  record_.detail = std::move(detail);
}

void InputRun::checkLimits(Clock::time_point now) {
  if (now >= deadline_) {
    fail("time limit", fmt::format("took longer than {:.3g} s", static_cast<double>(plan_.timeout.count()) / 1e3));
  } else if (plan_.memory > 0 && residentMemory(child_->id()) > plan_.memory) {
    fail("memory limit", "took more than " + megabytes(plan_.memory));
  }
}

// Whoever ends a whole job asks all its programs to end, the runner now and then last.
bool InputRun::isAskedToEnd(int status) {
  return WIFSIGNALED(status) &&
         (WTERMSIG(status) == SIGTERM || WTERMSIG(status) == SIGINT || WTERMSIG(status) == SIGHUP);
}

void InputRun::judge(int status) {
  const char* const what = phase_ == Phase::importing ? "import" : "extraction";
  if (WIFSIGNALED(status)) {
    fail("crashed", fmt::format("{}: {}", what, ::strsignal(WTERMSIG(status))));
  } else if (WEXITSTATUS(status) != 0) {
    fail(fmt::format("{} failed", what), lastWords(lock_.file()));
  } else if (phase_ == Phase::importing) {
    beginPhase(Phase::extracting);
  } else {
    judgeExtraction();
  }
}

// Its status is 0 even where it has failed: the marker tells.
void InputRun::judgeExtraction() {
  if (::access(inDirectory(kMarkerName).c_str(), F_OK) != 0) {
    fail("extraction failed", lastWords(lock_.file()));
    return;
  }
  const std::optional<ParamsSum> params = sumOfParams(inDirectory(kParamsName));
  if (params) {
    record_.params = *params;
    isOver_ = true;
  } else {
    fail("extraction failed", "params.txt cannot be read");
  }
}

void InputRun::removeDatabase() {
  if (plan_.keepsDatabases) return;
  ::unlink(inDirectory(kDatabaseName).c_str());
  // Only an import that was ended leaves such.
  if (!recognised_.isDatabase) base::clearStaleFiles(inDirectory(kDatabaseName));
  ::unlink(inDirectory(kUpgradedName).c_str());
}

Record InputRun::finish() {
  child_.reset();
  removeDatabase();
  record_.isDone = !hasFailed_;
  if (record_.isDone) record_.reason = record_.detail = "";
  if (record_.isDone && plan_.findMissing) record_.missing = plan_.findMissing(directory_);
  record_.seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
  record_.ended = nanosecondsSince1970();
  if (plan_.isSynced && record_.isDone) {
    for (const char* name : {kParamsName, kMarkerName}) syncToDisk(inDirectory(name));
  }
  writeRecord(directory_, record_, plan_.isSynced);
  if (plan_.isSynced) syncToDisk(directory_.substr(0, directory_.rfind('/')));
  isOver_ = true;
  return record_;
}

std::optional<Record> InputRun::look(Clock::time_point now) {
  hasTriedAgain_ = false;
  if (child_ != nullptr && child_->hasEnded()) {
    const int status = child_->reap();
    if (isAskedToEnd(status)) {
      child_.reset();
      askedToEnd_ = status;
      nextLook_ = now + kRequestPause;
    } else {
      judge(status);
    }
  } else if (askedToEnd_) {
    if (now >= nextLook_) judge(*std::exchange(askedToEnd_, std::nullopt));
  } else if (child_ != nullptr && now >= nextLook_) {
    planNextLook(now);
    checkLimits(now);
  }
  if (isOver_) return finish();
  if (!hasFailed_) return std::nullopt;
  if (record_.tries > plan_.retries || record_.reason == "input missing") return finish();
  child_.reset();
  hasTriedAgain_ = true;
  beginTry();
  return std::nullopt;
}

}  // namespace batch
