#include "result/completion.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

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

// Makes the file under the temporary name, or one like it where another user has put something that cannot be removed.
// Returns -1 with the reason in errno.
int makeTemporary(std::string& path) {
  ::unlink(path.c_str());
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file >= 0 || errno != EEXIST) return file;
  path += ".XXXXXX";
  const int other = ::mkostemp(path.data(), O_CLOEXEC);
  if (other < 0) return other;
  // It is to have the rights of any other new file.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(other, 0666 & ~mask);
  return other;
}

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

Marker::Marker(std::string path)
    : path_(std::move(path)),
      temporary_(path_ + ".tmp"),
      descriptor_(makeTemporary(temporary_)),
      reason_(errno),
      file_(descriptor_) {
  if (descriptor_ < 0) return;
  struct stat made {};
  if (::fstat(descriptor_, &made) != 0) {
    // What cannot be told from another file is none.
    reason_ = errno;
    descriptor_ = -1;
    ::unlink(temporary_.c_str());
    return;
  }
  device_ = made.st_dev;
  number_ = made.st_ino;
}

Marker::~Marker() {
  if (!isNamed_ && isInPlace()) ::unlink(temporary_.c_str());
}

bool Marker::isInPlace() const {
  struct stat named {};
  return descriptor_ >= 0 && ::lstat(temporary_.c_str(), &named) == 0 && named.st_dev == device_ &&
         named.st_ino == number_;
}

bool Marker::publish() {
  errno = reason_;
  if (descriptor_ < 0) return false;
  file_ << "Done\n";
  if (!file_.close()) return false;
  // What another run has put there is not this one's word.
  errno = ENOENT;
  isNamed_ = isInPlace() && std::rename(temporary_.c_str(), path_.c_str()) == 0;
  return isNamed_;
}
