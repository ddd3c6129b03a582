// Files that appear under their name only when they are complete, and files without a name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace odbstore {

// An open file, closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int file = -1) : file_(file) {}
  ~Descriptor();
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;

  int get() const { return file_; }
  explicit operator bool() const { return file_ >= 0; }

 private:
  int file_;
};

// The temporary name under which a file grows in the directory of its final name: the final name and ".tmp.", then six
// letters and digits. Whoever leaves without publish() leaves nothing behind; what a process that was killed left is
// cleared away by the next one that writes a file of that final name. Several may do so at once: each has a file of its
// own, and the last to publish has the name.
class OutputFile {
 public:
  // Makes the file, empty, and holds a lock on it. A final name that is a link stays one: the file is made where it
  // points. A final name that is anything but a regular file or free is refused. Throws StoreError.
  explicit OutputFile(const std::string& finalPath);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::string& finalPath() const { return finalPath_; }
  const std::string& temporaryPath() const { return temporaryPath_; }

  // Brings the finished file to the disk and renames it. Throws StoreError; unless the message says that the file is
  // complete, an older file of the final name is as it was.
  void publish();

 private:
  std::string finalPath_;
  std::string target_;  // where the final name leads
  std::string temporaryPath_;
  Descriptor file_;
  bool published_ = false;
};

// A growing file without a name, for rows whose final place is not known yet.
class Spool {
 public:
  // In the directory of `besidePath`, which also names the file in messages.
  explicit Spool(const std::string& besidePath);

  // Appends and returns the offset at which the bytes lie. Throws StoreError.
  std::int64_t append(const void* bytes, std::size_t size);
  void read(std::int64_t offset, void* bytes, std::size_t size) const;
  // Gives the room of bytes back that nobody reads again, where the file system can.
  void release(std::int64_t offset, std::size_t size) const;

 private:
  std::string name_;
  Descriptor file_;
  std::int64_t size_ = 0;
};

}  // namespace odbstore
