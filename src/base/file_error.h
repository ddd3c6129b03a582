// An error in a file.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "base/diagnostic.h"

namespace base {

// what() is "<file>: <object in it>: <reason>", without the object if the error concerns the whole file. The parts are
// available separately.
class FileError : public std::runtime_error {
 public:
  FileError(std::string file, std::string object, std::string reason)
      : FileError(Place{std::move(file), 0, {}, std::move(object)}, std::move(reason)) {}

  // The file as its user named it.
  const std::string& file() const { return place_.file; }
  // The path of the object in the file; empty for the file as a whole.
  const std::string& object() const { return place_.object; }
  const std::string& reason() const { return reason_; }

 private:
  FileError(Place place, std::string reason)
      : std::runtime_error(textOf(place, reason)), place_(std::move(place)), reason_(std::move(reason)) {}

  Place place_;
  std::string reason_;
};

// The file does not exist, may not be read, or is not a regular file.
class NoFileError : public FileError {
 public:
  NoFileError(std::string file, std::string reason) : FileError(std::move(file), "", std::move(reason)) {}
};

}  // namespace base
