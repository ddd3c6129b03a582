#include "result/completion.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "result/result_file.h"

namespace {

bool isRegular(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
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

// Without waiting: opening a pipe would wait for somebody to read from it.
ResultLock::ResultLock(const std::string& path)
    : path_(path), file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666)) {
  if (file_ < 0 || !isRegular(file_)) return;
  isElsewhere_ = ::flock(file_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

ResultLock::~ResultLock() {
  if (file_ >= 0) ::close(file_);
}

bool ResultLock::isInPlace() const {
  struct stat opened {};
  struct stat named {};
  return ::fstat(file_, &opened) == 0 && ::stat(path_.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
         opened.st_ino == named.st_ino;
}

bool removeMarker(const std::string& path) { return ::unlink(path.c_str()) == 0 || errno == ENOENT; }

bool writeMarker(const std::string& path) {
  const std::string temporary = path + ".tmp";
  // Whatever bears that name: what is written goes into a new file.
  if (!removeMarker(temporary)) return false;
  const RemovedAtEnd removed{temporary};
  ResultFile marker(temporary);
  marker << "Done\n";
  return marker.close() && std::rename(temporary.c_str(), path.c_str()) == 0;
}
