#include "batch/state/input_lock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <optional>
#include <set>

namespace batch {

namespace {

struct flock wholeFile() {
  struct flock range {};
  range.l_type = F_WRLCK;
  range.l_whence = SEEK_SET;
  return range;
}

Claim lock(int file) {
  struct flock range = wholeFile();
  if (::fcntl(file, F_OFD_SETLK, &range) == 0) return Claim::taken;
  return errno == EAGAIN || errno == EACCES ? Claim::elsewhere : Claim::taken;
}

// A lock on a file without a name excludes nobody.
bool isRemoved(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && status.st_nlink == 0;
}

// A number in the name of a directory entry.
std::optional<int> numberIn(const std::filesystem::path& path) {
  const std::string name = path.filename().string();
  int number = 0;
  const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), number);
  if (failure != std::errc() || end != name.data() + name.size()) return std::nullopt;
  return number;
}

// As what a process has a file open.
struct Holding {
  bool asOutput = false;
  bool asRunner = false;  // under another number than the standard streams'
};

Holding holdingOf(const std::filesystem::path& process, const struct stat& log) {
  Holding holding;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(process / "fd", ignored)) {
    struct stat opened {};
    struct stat link {};
    if (::stat(entry.path().c_str(), &opened) != 0 || ::lstat(entry.path().c_str(), &link) != 0) continue;
    // The link's rights are those that the file is open with: who only looks at the log is not meant.
    if ((link.st_mode & S_IWUSR) == 0) continue;
    if (opened.st_dev != log.st_dev || opened.st_ino != log.st_ino) continue;
    const bool isStandard = numberIn(entry.path()).value_or(0) <= STDERR_FILENO;
    (isStandard ? holding.asOutput : holding.asRunner) = true;
  }
  return holding;
}

}  // namespace

InputLock::InputLock(const std::string& log)
    : file_(::open(log.c_str(), O_RDWR | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0666)) {
  if (!file_ && errno != ENOENT) return;
  claim_ = file_ ? lock(file_.get()) : Claim::elsewhere;
  if (claim_ == Claim::taken && isRemoved(file_.get())) claim_ = Claim::elsewhere;
}

bool isLocked(const std::string& log) {
  const base::Descriptor file(::open(log.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct flock range = wholeFile();
  return file && ::fcntl(file.get(), F_OFD_GETLK, &range) == 0 && range.l_type != F_UNLCK;
}

bool endLeftBehind(const std::string& log) {
  struct stat status {};
  if (::stat(log.c_str(), &status) != 0) return false;
  std::set<pid_t> groups;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
    const std::optional<int> process = numberIn(entry.path());
    if (!process || *process == ::getpid()) continue;
    const Holding holding = holdingOf(entry.path(), status);
    if (holding.asRunner) return false;
    // Only groups of a runner's own making: a shell that has redirected its output there is none.
    if (holding.asOutput && ::getpgid(*process) == *process) groups.insert(*process);
  }
  for (const pid_t group : groups) ::kill(-group, SIGKILL);
  return !groups.empty();
}

}  // namespace batch
