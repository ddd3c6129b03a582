// Field outputs, behind the handles.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "odbaccess/block_storage.h"
#include "odbaccess/odb_FieldBulkData.h"
#include "odbaccess/odb_FieldLocation.h"
#include "odbaccess/odb_SequenceFieldValue.h"
#include "odbaccess/step_storage.h"
#include "odbstore/reader.h"

namespace odb_detail {

using Blocks = std::vector<std::shared_ptr<const BlockStorage>>;

// A field output of one frame, whole or restricted to a set.
class FieldStorage {
 public:
  FieldStorage(std::shared_ptr<StepStorage> step, const odbstore::StoredField& field, int frame)
      : step_(std::move(step)), stored_(step_->stored()), field_(field), info_(field.infoIn(frame)), frame_(frame) {}
  // The same field with the blocks of a subset.
  FieldStorage(const FieldStorage& whole, Blocks subset)
      : step_(whole.step_),
        stored_(whole.stored_),
        field_(whole.field_),
        info_(whole.info_),
        frame_(whole.frame_),
        subset_(std::move(subset)) {}

  const std::string& name() const { return field_.name; }
  const odbstore::FieldInfo& info() const { return *info_; }
  // New blocks at each call for a whole field, so that what they read goes with them.
  Blocks blocks() const;

 private:
  std::shared_ptr<StepStorage> step_;
  std::shared_ptr<const odbstore::StoredStep> stored_;  // keeps field_ alive
  const odbstore::StoredField& field_;
  std::shared_ptr<const odbstore::FieldInfo> info_;
  int frame_;
  std::optional<Blocks> subset_;
};

struct FieldContent {
  Blocks blocks;
  odb_SequenceFieldValue values;
  odb_SequenceFieldBulkData bulk;
  odb_SequenceFieldLocation locations;
};

}  // namespace odb_detail
