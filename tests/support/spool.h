// Rows that wait until their final place is known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/descriptor.h"

namespace odbstore {

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
  base::Descriptor file_;
  std::int64_t size_ = 0;
};

}  // namespace odbstore
