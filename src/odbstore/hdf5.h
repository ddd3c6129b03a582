// The border to HDF5: its handles, calls and failures, wrapped once. No other folder includes HDF5's header, and
// inside this one only sources include this header.
//
// Every failure is a StoreError that names the file and the object and carries HDF5's own explanation.
#pragma once

#include <hdf5.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "odbstore/store_error.h"

namespace odbstore::h5 {

// An HDF5 identifier and the call that closes it.
class Handle {
 public:
  using Closer = herr_t (*)(hid_t);

  Handle() = default;
  Handle(hid_t id, Closer close) : id_(id), close_(close) {}
  Handle(Handle&& other) noexcept;
  Handle& operator=(Handle&& other) noexcept;
  ~Handle();

  hid_t get() const { return id_; }
  explicit operator bool() const { return id_ >= 0; }

 private:
  hid_t id_ = -1;
  Closer close_ = nullptr;
};

// How much of HDF5 a file may use. Strict refuses what is not in the profile of layout 2 before it is
// read: links that are not hard, strings of variable length, storage that is neither contiguous nor chunked
// with gzip and Fletcher-32.
enum class Profile { strict, free };

// What every object of an open file shares: its name for messages, its profile, its identifier.
struct FileContext {
  std::string name;
  std::int64_t bytes = 0;
  Profile profile = Profile::strict;
  Handle id;
  std::optional<int> descriptor;  // HDF5's own, of a file open for reading
};

// Starts the library, once per process, and silences its own printing of errors.
void startHdf5();

// Why the last HDF5 call of this thread failed, in HDF5's words; empty when it did not say.
std::string lastHdf5Error();

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
  // What tells one object of a file from another under whatever link it was found.
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

using Dims = std::vector<hsize_t>;

// How the numbers of a new data set are laid out.
struct Storage {
  bool gzip = false;
  bool fletcher32 = false;
  bool reserved = false;  // their room in the file is taken at once; somebody else fills it

  bool chunked() const { return gzip || fletcher32; }
};

// Bytes of a file that hold slabs of a data set, one after the other along its first dimension.
struct Stretch {
  std::int64_t offset = 0;
  std::int64_t bytes = 0;
  std::int64_t firstSlab = 0;
  std::int64_t slabBytes = 0;  // of each; what is packed has one slab in a stretch
};

class Dataset : public Object {
 public:
  Dataset(Handle id, std::string path, std::shared_ptr<const FileContext> file);

  const Dims& dims() const { return dims_; }
  // Number of numbers in all, checked against what the file can hold.
  std::int64_t count() const;
  bool isFloat() const { return class_ == H5T_FLOAT; }
  bool isInteger() const { return class_ == H5T_INTEGER; }
  // Whether the numbers have that very type in the file.
  bool holds(hid_t type) const;
  // Bytes of one number as stored.
  std::size_t numberSize() const { return numberSize_; }

  // The whole content. readInts fails on a number outside of int32.
  std::vector<int> readInts() const;
  std::vector<float> readFloats() const;
  std::vector<double> readDoubles() const;
  std::vector<std::string> readStrings() const;

  // Slab `index` along the first dimension into `out`, which has room for it.
  void readSlab(hsize_t index, float* out) const;
  void readSlab(hsize_t index, double* out) const;

  // Whether the numbers stand in the file one after the other as this machine holds them, so that readDirect() can take
  // them from there.
  bool isDirect() const { return direct_.has_value(); }
  // Where in the file contiguous numbers start; nothing where they are not contiguous or have no room yet.
  std::optional<std::int64_t> offset() const;
  // All of it, slab by slab where it is chunked. Of the strict profile only.
  std::vector<Stretch> stretches() const;
  // Numbers `first` to `first + count - 1` of the whole data set into `out`, without HDF5; isDirect() must hold.
  // Threads may call it at the same time.
  void readDirect(std::int64_t first, std::int64_t count, void* out) const;
  void writeSlab(hsize_t index, const float* rows) const;
  void writeSlab(hsize_t index, const double* rows) const;

  // All numbers, of the type that the data set was created with.
  void write(const void* numbers, hid_t memoryType) const;

 private:
  // Where in which open file the numbers stand.
  struct Direct {
    int file;
    std::int64_t offset;
  };

  void readShape(hid_t space);
  void checkType(hid_t type) const;
  void checkProfile(hid_t type) const;
  void checkContiguous(std::int64_t start) const;
  void checkChunked(hid_t plist) const;
  std::int64_t bytes() const;
  std::optional<Direct> findDirect(hid_t type) const;
  void transferSlab(hsize_t index, hid_t memoryType, void* out, bool writing) const;
  void requireFloat() const;
  void readAll(hid_t memoryType, void* out) const;

  Dims dims_;
  H5T_class_t class_ = H5T_NO_CLASS;
  std::size_t numberSize_ = 0;
  std::optional<Direct> direct_;
};

enum class LinkOrder { byName, byCreation };
enum class MemberKind { group, dataset, other };

class Group : public Object {
 public:
  Group(Handle id, std::string path, std::shared_ptr<const FileContext> file);

  bool has(const std::string& link) const;
  MemberKind kindOf(const std::string& link) const;

  // A member; its absence or another kind of object under that link is an error.
  Group group(const std::string& link) const;
  Dataset dataset(const std::string& link) const;
  std::optional<Group> findGroup(const std::string& link) const;
  std::optional<Dataset> findDataset(const std::string& link) const;

  // The link names. By creation only where the group tracks it; by name (bytes ascending) otherwise.
  std::vector<std::string> links(LinkOrder order = LinkOrder::byName) const;

  Group createGroup(const std::string& link, bool trackOrder = false) const;
  Dataset createDataset(const std::string& link, hid_t type, const Dims& dims, Storage storage = {}) const;
  void createInts(const std::string& link, std::span<const int> values) const;
  void createDoubles(const std::string& link, std::span<const double> values, const Dims& dims) const;
  void createStrings(const std::string& link, std::span<const std::string> values) const;

 private:
  std::string memberPath(const std::string& link) const;
  // Nothing where there is no such link; another kind of object under it is an error.
  std::optional<Handle> findMember(const std::string& link) const;
  std::optional<Handle> findMember(const std::string& link, H5I_type_t kind) const;
  Handle present(const std::string& link, std::optional<Handle> member) const;
};

// Opens a file for reading and returns its root group. The profile follows the file's layout attribute:
// `layout` receives it. What is no database of ours is an error that says what it is instead.
Group openFile(const std::string& path, int& layout);
// The same, with another name than its path in messages.
Group openFile(const std::string& path, const std::string& name, int& layout);

// Creates a file of the strict profile under `path`, emptying one that exists; `name` goes into messages.
Group createFile(const std::string& path, const std::string& name);

// Hands everything written so far to the operating system.
void flushFile(const Group& root);

// The bytes that a file under construction takes so far.
std::int64_t sizeOfFile(const Group& root);

}  // namespace odbstore::h5
