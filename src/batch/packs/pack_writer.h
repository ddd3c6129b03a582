// Appends to a pack, the only one to do so.
#pragma once

#include <cstdint>
#include <string>

#include "base/descriptor.h"
#include "batch/packs/pack_entry.h"

namespace batch {

class PackWriter {
 public:
  // Opens the file, and makes it and its directory if they are missing. Throws base::FileError.
  explicit PackWriter(std::string path);

  const std::string& path() const { return path_; }

  // Takes the lock of the file, which goes with this process, and cuts off what follows the last whole entry: an entry
  // that a crash has cut off or damaged. False if another process has the lock. Does not wait. On a file system without
  // locks it is taken for free. Throws base::FileError. Required before append().
  bool claim();

  // Appends one entry; with `isSynced` it is on the disk when this returns. Throws base::FileError; the file is as it
  // was before then.
  void append(const std::string& id, const PackTexts& texts, bool isSynced);

 private:
  void cut() const;

  std::string path_;
  base::Descriptor file_;
  std::uint64_t end_ = 0;
};

}  // namespace batch
