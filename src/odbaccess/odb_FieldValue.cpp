#include "odbaccess/odb_FieldValue.h"

#include "odbaccess/block_storage.h"

namespace {

using odb_detail::BlockStorage;

// An invariant of a row; 0 for anything but a tensor.
float ofTensor(const BlockStorage* block, int row, odb_InvariantEnum code) {
  if (block == nullptr || !block->content()->isTensor()) return 0.0F;
  const int stored = block->storedRow(row);
  const odb_detail::InvariantStretch& found = block->content()->invariantsAround(stored);
  return found.numbers[stored % odb_detail::InvariantStretch::kRows][odb_detail::invariantPlace(code)];
}

}  // namespace

int odb_FieldValue::type() const { return block_ ? block_->content()->block().type() : odb_Enum::scalar; }

int odb_FieldValue::precision() const {
  return block_ && block_->content()->block().isDouble() ? odb_Enum::doublePrecision : odb_Enum::singlePrecision;
}

const float* odb_FieldValue::floatData() const { return block_ ? block_->fieldRow<float>(row_) : nullptr; }

const double* odb_FieldValue::doubleData() const { return block_ ? block_->fieldRow<double>(row_) : nullptr; }

int odb_FieldValue::dataCount() const { return block_ ? block_->fieldRowLength() : 0; }

float odb_FieldValue::magnitude() const {
  if (type() != odb_Enum::vector) return 0.0F;
  return static_cast<float>(block_->content()->magnitude(block_->storedRow(row_)));
}

float odb_FieldValue::mises() const {
  if (!block_ || !block_->content()->isTensor()) return 0.0F;
  return odb_detail::misesOf(block_->content()->tensor(block_->storedRow(row_)));
}

float odb_FieldValue::tresca() const { return ofTensor(block_.get(), row_, odb_Enum::tresca); }
float odb_FieldValue::press() const { return ofTensor(block_.get(), row_, odb_Enum::press); }
float odb_FieldValue::inv3() const { return ofTensor(block_.get(), row_, odb_Enum::inv3); }
float odb_FieldValue::maxPrincipal() const { return ofTensor(block_.get(), row_, odb_Enum::maxPrincipal); }
float odb_FieldValue::midPrincipal() const { return ofTensor(block_.get(), row_, odb_Enum::midPrincipal); }
float odb_FieldValue::minPrincipal() const { return ofTensor(block_.get(), row_, odb_Enum::minPrincipal); }

float odb_FieldValue::maxInPlanePrincipal() const {
  return ofTensor(block_.get(), row_, odb_Enum::maxInPlanePrincipal);
}

float odb_FieldValue::minInPlanePrincipal() const {
  return ofTensor(block_.get(), row_, odb_Enum::minInPlanePrincipal);
}

float odb_FieldValue::outOfPlanePrincipal() const {
  return ofTensor(block_.get(), row_, odb_Enum::outOfPlanePrincipal);
}
