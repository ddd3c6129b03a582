// Finds out which rows of a field belong to one block, where they come frame by frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "odbwriter/database_writer.h"

namespace odbstore {

// What rows of another frame must have in common with those of a block to belong to it.
struct BlockKey {
  int location = -1;
  int type = 0;
  std::vector<std::string> componentLabels;  // their own, else those of the field in their frame
  bool isDouble = false;
  std::int64_t width = 0;

  bool operator==(const BlockKey&) const = default;
};

class BlockSeries {
 public:
  // The block that the next rows of a frame belong to, from 0. The blocks of a frame keep their order: the next rows
  // may only join a block after the one before it.
  std::size_t next(int frame, const BlockKey& key);

  std::size_t count() const { return keys_.size(); }
  const BlockKey& key(std::size_t block) const { return keys_[block]; }

 private:
  std::vector<BlockKey> keys_;
  std::map<int, std::size_t> nextBlock_;  // by frame
};

// How such a block is declared: `info` is what the field says of itself, and in frames where it says something else
// (`isChanging`) the block says itself what it would take from it.
DatabaseWriter::BlockForm formOf(const BlockKey& key, const FieldInfo& info, bool isChanging, std::vector<int> frames);

}  // namespace odbstore
