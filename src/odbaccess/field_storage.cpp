#include "odbaccess/field_storage.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace odb_detail {

Blocks FieldStorage::blocks() const {
  if (subset_) return *subset_;
  Blocks blocks;
  for (const odbstore::StoredBlock& block : field_.blocks) {
    if (!block.existsIn(frame_)) continue;
    auto content =
        std::make_shared<const BlockContent>(stored_, info_, block, frame_, step_->locations().of(block.location()));
    blocks.push_back(std::make_shared<const BlockStorage>(std::move(content)));
  }
  return blocks;
}

}  // namespace odb_detail
