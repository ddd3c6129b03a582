// A field of a step: one quantity, in all frames that have it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "odbstore/schema.h"
#include "odbstore/stored_block.h"

namespace odbstore {

class DatabaseFile;
class FrameSlabs;

class StoredField {
 public:
  // Field `index` of the catalog.
  StoredField(std::shared_ptr<const DatabaseFile> file, std::shared_ptr<const FrameSlabs> frames,
              std::vector<StoredBlock> itsBlocks, std::size_t index);

  std::string name;
  FieldInfo info;                   // what it says of itself, unless it says something else in a frame
  std::vector<StoredBlock> blocks;  // in the order of the file

  // What it says of itself in a frame that has it; the same object as long as that is the same. One thread at a time.
  std::shared_ptr<const FieldInfo> infoIn(int frame) const;

  bool existsIn(int frame) const;
  // Those that have it, in the order in which the file lists them.
  std::vector<int> frames() const;

 private:
  FieldInfo infoOf(std::int32_t form) const;

  std::shared_ptr<const DatabaseFile> file_;
  std::shared_ptr<const FrameSlabs> frames_;
  std::size_t index_;
  mutable std::int32_t lastForm_ = -1;
  mutable std::shared_ptr<const FieldInfo> lastInfo_;
};

}  // namespace odbstore
