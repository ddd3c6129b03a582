// What of a field does not change from frame to frame, made ready once.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "odbaccess/location_cache.h"
#include "odbaccess/location_storage.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_FieldLocation.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_String.h"
#include "odbstore/reader.h"

namespace odb_detail {

// A block of a field: where its rows lie and which of its columns is what.
class BlockPlan {
 public:
  BlockPlan(const odbstore::StoredBlock& block, const odbstore::FieldInfo& field,
            std::shared_ptr<LocationStorage> location);

  const odbstore::StoredBlock& block() const { return block_; }
  LocationStorage& location() const { return *location_; }
  int width() const { return static_cast<int>(block_.width()); }
  bool isTensor() const { return odbstore::isTensorType(block_.type()); }

  // By component label of the field: the column that holds it, -1 when none does.
  const std::vector<int>& columnsOfField() const { return columnsOfField_; }
  // Whether columnsOfField() is 0, 1, 2, ... so that a stored row serves as it is.
  bool isInFieldOrder() const { return inFieldOrder_; }
  // By tensor component, in the canonical order: the column that holds it, -1 when none does.
  const std::array<int, 6>& columnsOfTensor() const { return columnsOfTensor_; }
  // Whether rows have the components from 11 on in their places and nothing else.
  bool isCanonical() const { return isCanonical_; }
  // The columns of the rows that the bulk interface hands out: canonical places for tensors on elements, as stored for
  // all else.
  const std::vector<int>& bulkColumns() const { return bulkColumns_; }
  // Whether these are the stored rows as they are.
  bool isWholeRow() const { return isWholeRow_; }
  // The block's own labels, else those of its field.
  const odb_Sequence<odb_String>& componentLabels() const { return componentLabels_; }
  // The locations of a field that has this block alone.
  const odb_SequenceFieldLocation& locationsOfIt() const { return locations_; }

 private:
  void findColumnsOfField(const std::vector<std::string>& labels);
  void findColumnsOfTensor();
  void findBulkColumns();

  const odbstore::StoredBlock& block_;
  std::shared_ptr<LocationStorage> location_;
  std::vector<int> columnsOfField_;
  bool inFieldOrder_ = false;
  std::array<int, 6> columnsOfTensor_{};
  bool isCanonical_ = false;
  std::vector<int> bulkColumns_;
  bool isWholeRow_ = false;
  odb_Sequence<odb_String> componentLabels_;
  odb_SequenceFieldLocation locations_;
};

// A field in all frames in which it says the same of itself.
class FieldPlan {
 public:
  // `field` belongs to `step`.
  FieldPlan(std::shared_ptr<const odbstore::StoredStep> step, const odbstore::StoredField& field,
            std::shared_ptr<const odbstore::FieldInfo> info, LocationCache& locations);

  const odbstore::FieldInfo& info() const { return *info_; }
  const odb_String& name() const { return name_; }
  const odb_String& description() const { return description_; }
  const odb_Sequence<odb_String>& componentLabels() const { return componentLabels_; }
  const odb_Sequence<odb_InvariantEnum>& validInvariants() const { return validInvariants_; }
  const std::vector<BlockPlan>& blocks() const { return blocks_; }

 private:
  std::shared_ptr<const odbstore::StoredStep> step_;  // keeps the blocks of the file alive
  std::shared_ptr<const odbstore::FieldInfo> info_;
  odb_String name_;
  odb_String description_;
  odb_Sequence<odb_String> componentLabels_;
  odb_Sequence<odb_InvariantEnum> validInvariants_;
  std::vector<BlockPlan> blocks_;
};

// The locations of some blocks: each position once, in the order of the blocks, with the section points there.
odb_SequenceFieldLocation locationsOf(const std::vector<const BlockPlan*>& blocks);

}  // namespace odb_detail
