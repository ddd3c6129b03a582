// Field outputs, behind the handles.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "odbaccess/block_storage.h"
#include "odbaccess/field_plan.h"
#include "odbaccess/odb_FieldBulkData.h"
#include "odbaccess/odb_FieldLocation.h"
#include "odbaccess/odb_SequenceFieldValue.h"

namespace odb_detail {

using Blocks = std::vector<std::shared_ptr<const BlockStorage>>;

// A field output of one frame, whole or restricted to a set.
class FieldStorage {
 public:
  FieldStorage(std::shared_ptr<const FieldPlan> plan, int frame) : plan_(std::move(plan)), frame_(frame) {}
  // The same field with the blocks of a subset.
  FieldStorage(const FieldStorage& whole, Blocks subset)
      : plan_(whole.plan_), frame_(whole.frame_), subset_(std::move(subset)) {}

  const FieldPlan& plan() const { return *plan_; }
  // New blocks at each call for a whole field, so that what they read goes with them.
  Blocks blocks() const;

 private:
  std::shared_ptr<const FieldPlan> plan_;
  int frame_;
  std::optional<Blocks> subset_;
};

// What of a field output has been asked for.
struct FieldContent {
  Blocks blocks;
  std::optional<odb_SequenceFieldValue> values;
  std::optional<odb_SequenceFieldBulkData> bulk;
  std::optional<odb_SequenceFieldLocation> locations;
};

}  // namespace odb_detail
