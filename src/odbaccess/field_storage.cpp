#include "odbaccess/field_storage.h"

#include <memory>
#include <utility>

namespace odb_detail {

Blocks FieldStorage::blocks() const {
  if (subset_) return *subset_;
  Blocks blocks;
  for (const BlockPlan& plan : plan_->blocks()) {
    if (!plan.block().existsIn(frame_)) continue;
    blocks.push_back(std::make_shared<const BlockStorage>(std::make_shared<const BlockContent>(plan_, plan, frame_)));
  }
  return blocks;
}

}  // namespace odb_detail
