#include "result/completion.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

#include "result/result_file.h"

namespace {

bool isThere(const char* path) {
  struct stat status {};
  return ::lstat(path, &status) == 0 || errno != ENOENT;
}

// So long another run may have the lock that is not at work any more: it has just written its marker, or was killed and
// leaves a child that has not noticed.
constexpr std::chrono::milliseconds kPatience{500};
constexpr std::chrono::milliseconds kPause{5};

// False as well where there are no locks.
bool isLockedElsewhere(int directory) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (::flock(directory, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) return false;
    if (std::chrono::steady_clock::now() >= end) return true;
    std::this_thread::sleep_for(kPause);
  }
  return false;
}

// Removes a name however its scope is left, and keeps the reason in errno.
struct RemovedAtEnd {
  const std::string& path;

  ~RemovedAtEnd() {
    const int reason = errno;
    ::unlink(path.c_str());
    errno = reason;
  }
};

}  // namespace

DirectoryLock::DirectoryLock(const char* directory)
    : directory_(::open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
      isElsewhere_(directory_ >= 0 && isLockedElsewhere(directory_)) {}

DirectoryLock::~DirectoryLock() {
  if (directory_ >= 0) ::close(directory_);
}

ResultPlace::ResultPlace(const std::string& path)
    : path_(path), file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666)) {}

ResultPlace::~ResultPlace() {
  if (file_ >= 0) ::close(file_);
}

bool ResultPlace::isInPlace() const {
  struct stat opened {};
  struct stat named {};
  return ::fstat(file_, &opened) == 0 && ::stat(path_.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
         opened.st_ino == named.st_ino;
}

bool removeMarker(const char* path) {
  if (::unlink(path) == 0 || errno == ENOENT) return true;
  // A file system that is read-only says so even of a name that is not there.
  const int reason = errno;
  const bool isGone = !isThere(path);
  errno = reason;
  return isGone;
}

bool writeMarker(const std::string& path) {
  const std::string temporary = path + ".tmp";
  // Whatever bears that name: what is written goes into a new file.
  if (!removeMarker(temporary.c_str())) return false;
  const RemovedAtEnd removed{temporary};
  ResultFile marker(temporary);
  marker << "Done\n";
  return marker.close() && std::rename(temporary.c_str(), path.c_str()) == 0;
}
