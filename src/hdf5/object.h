// What groups and data sets have in common.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "hdf5/handle.h"
#include "hdf5/noting_driver.h"

namespace h5 {

// Which features of HDF5 a file may use. Strict refuses everything outside the profile of layouts 2 and 3 before
// reading it: links other than hard ones, strings of variable length, storage other than contiguous or chunked with
// gzip and Fletcher-32. Free refuses references to other files. Own is for files that we are writing, which are not
// checked.
enum class Profile { strict, free, own };

// What every object of an open file shares: its name for messages, its profile, its identifier.
struct FileContext {
  std::string name;
  std::int64_t bytes = 0;
  Profile profile = Profile::strict;
  std::unique_ptr<NotedFile> noted;  // of a file open for reading
  Handle id;
};

// The part that groups and data sets have in common: attributes and messages.
class Object {
 public:
  const std::string& path() const { return path_; }
  hid_t id() const { return id_.get(); }

  [[noreturn]] void fail(const std::string& reason) const;
  // The same, with what HDF5 has to say of its last call.
  [[noreturn]] void failHdf5(const std::string& reason) const;
  // What a call of HDF5 has returned, unless that says that it failed.
  template <class Result>
  Result checked(Result result, const char* reason = "cannot be described") const {
    if (result < 0) failHdf5(reason);
    return result;
  }
  // Bytes of a number or text of that type.
  std::size_t sizeOf(hid_t type) const;

  bool hasAttribute(const std::string& name) const;
  std::vector<std::string> attributes() const;
  // Throws for an attribute that is not allowed in the file or cannot be one of ours.
  void checkAttribute(const std::string& name) const;
  // Identifies an object of a file, whichever link led to it.
  std::uint64_t address() const;

  // The value of an attribute, or `absent` when there is none. A wrong type or shape is an error.
  int intAttribute(const std::string& name, int absent) const;
  double doubleAttribute(const std::string& name, double absent) const;
  std::string stringAttribute(const std::string& name, const std::string& absent) const;
  std::vector<int> intsAttribute(const std::string& name) const;
  std::vector<double> doublesAttribute(const std::string& name) const;
  std::vector<std::string> stringsAttribute(const std::string& name) const;

  void writeInt(const std::string& name, int value) const;
  void writeDoubles(const std::string& name, std::span<const double> values) const;
  void writeDouble(const std::string& name, double value) const;
  void writeInts(const std::string& name, std::span<const int> values) const;
  void writeString(const std::string& name, const std::string& value) const;
  void writeStrings(const std::string& name, std::span<const std::string> values) const;

 protected:
  Object(Handle id, std::string path, std::shared_ptr<const FileContext> file)
      : id_(std::move(id)), path_(std::move(path)), file_(std::move(file)) {}

  const std::shared_ptr<const FileContext>& file() const { return file_; }

 private:
  struct Attribute {
    Handle id;
    Handle type;
    Handle space;
    H5T_class_t kind;
    std::size_t count;
  };
  // Refuses what the profile does not allow.
  Attribute openAttribute(const std::string& name) const;
  Handle createAttribute(const std::string& name, hid_t type, hid_t space) const;

  Handle id_;
  std::string path_;
  std::shared_ptr<const FileContext> file_;
};

}  // namespace h5
