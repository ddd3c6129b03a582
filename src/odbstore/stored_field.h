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
  FieldInfo info;                   // unless a frame has its own
  std::vector<StoredBlock> blocks;  // in file order

  // The info in a frame that has the field; the same object as long as nothing differs. Not thread-safe.
  std::shared_ptr<const FieldInfo> infoIn(int frame) const;

  bool existsIn(int frame) const;
  // The frames that have it, in the order in which the file lists them.
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
