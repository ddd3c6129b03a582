// The exceptions of the store.
#pragma once

#include <stdexcept>
#include <string>

namespace odbstore {

// what() is "<file>: <object in it>: <reason>", the object left out where the file as a whole is meant.
class StoreError : public std::runtime_error {
 public:
  StoreError(const std::string& file, const std::string& object, const std::string& reason)
      : std::runtime_error(file + (object.empty() ? "" : ": " + object) + ": " + reason) {}
};

// Where the file should stand there is nothing, nothing that may be read, or no regular file.
class NoFileError : public StoreError {
 public:
  NoFileError(const std::string& file, const std::string& reason) : StoreError(file, "", reason) {}
};

}  // namespace odbstore
