// Files that appear under their name only when they are complete.
#pragma once

#include <string>

#include "base/descriptor.h"

namespace base {

// The temporary name under which a file grows in the directory of its final name: the final name and ".tmp.", then six
// letters and digits. Whoever leaves without publish() leaves nothing behind; what a process that was killed left is
// cleared away by the next one that writes a file of that final name. Several may do so at once: each has a file of its
// own, and the last to publish has the name.
class OutputFile {
 public:
  // Makes the file, empty, and holds a lock on it. A final name that is a link stays one: the file is made where it
  // points. A final name that is anything but a regular file or free is refused. Throws FileError.
  explicit OutputFile(const std::string& finalPath);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::string& finalPath() const { return finalPath_; }
  const std::string& temporaryPath() const { return temporaryPath_; }

  // Brings the finished file to the disk and renames it. Throws FileError; unless the message says that the file is
  // complete, an older file of the final name is as it was.
  void publish();

 private:
  std::string finalPath_;
  std::string target_;  // where the final name leads
  std::string temporaryPath_;
  Descriptor file_;
  bool published_ = false;
};

}  // namespace base
