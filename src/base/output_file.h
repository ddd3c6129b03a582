// Files that appear under their name only when they are complete.
#pragma once

#include <string>

#include "base/descriptor.h"

namespace base {

// A file that is written under a temporary name in the directory of its final name: the final name, ".tmp." and six
// letters and digits. Without publish() the file is removed. Temporary files of killed processes are removed by the
// next process that writes the same final name. Several may write at once: each has its own file, and the last to
// publish gets the name.
class OutputFile {
 public:
  // Creates the empty file and locks it. If the final name is a symbolic link, its target is written. Throws FileError,
  // also if the final name exists and is not a regular file.
  explicit OutputFile(const std::string& finalPath);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::string& finalPath() const { return finalPath_; }
  const std::string& temporaryPath() const { return temporaryPath_; }

  // Flushes the finished file to disk and renames it. Throws FileError; unless the message says that the file is
  // complete, an existing file of the final name is unchanged.
  void publish();

 private:
  std::string finalPath_;
  std::string target_;  // where the final name leads
  std::string temporaryPath_;
  Descriptor file_;
  bool published_ = false;
};

}  // namespace base
