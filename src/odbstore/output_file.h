// Files that appear under their name only when they are complete, and files without a name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace odbstore {

// The temporary name under which a file grows in the directory of its final name. Whoever leaves without
// publish() leaves nothing behind.
class OutputFile {
 public:
  // Picks a name that does not exist; the file itself is made by whoever writes it.
  explicit OutputFile(const std::string& finalPath);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::string& finalPath() const { return finalPath_; }
  const std::string& temporaryPath() const { return temporaryPath_; }

  // Brings the finished file to the disk and renames it. Throws StoreError.
  void publish();

 private:
  std::string finalPath_;
  std::string temporaryPath_;
  bool published_ = false;
};

// A growing file without a name, for rows whose final place is not known yet.
class Spool {
 public:
  // In the directory of `besidePath`, which also names the file in messages.
  explicit Spool(const std::string& besidePath);
  ~Spool();
  Spool(const Spool&) = delete;
  Spool& operator=(const Spool&) = delete;

  // Appends and returns the offset at which the bytes lie. Throws StoreError.
  std::int64_t append(const void* bytes, std::size_t size);
  void read(std::int64_t offset, void* bytes, std::size_t size) const;
  // Gives the room of bytes back that nobody reads again, where the file system can.
  void release(std::int64_t offset, std::size_t size) const;

 private:
  std::string name_;
  int file_ = -1;
  std::int64_t size_ = 0;
};

}  // namespace odbstore
