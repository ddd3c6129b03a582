#include "odbaccess/block_storage.h"
#include "odbaccess/odb_FieldValue.h"

namespace {

using odb_detail::BlockContent;
using odb_detail::BlockStorage;

// An invariant of a row; 0 for anything but a tensor.
template <class Invariant>
float ofTensor(const BlockStorage* block, int row, Invariant&& invariant) {
  if (block == nullptr || !block->content()->isTensor()) return 0.0F;
  return static_cast<float>(invariant(block->content()->tensor(block->contentRow(row))));
}

template <std::size_t Place>
double principal(const odb_detail::Tensor& tensor) {
  return odb_detail::principalValuesOf(tensor)[Place];
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
  return static_cast<float>(block_->content()->magnitude(block_->contentRow(row_)));
}

float odb_FieldValue::mises() const { return ofTensor(block_.get(), row_, odb_detail::misesOf); }
float odb_FieldValue::tresca() const { return ofTensor(block_.get(), row_, odb_detail::trescaOf); }
float odb_FieldValue::press() const { return ofTensor(block_.get(), row_, odb_detail::pressOf); }
float odb_FieldValue::inv3() const { return ofTensor(block_.get(), row_, odb_detail::inv3Of); }
float odb_FieldValue::maxPrincipal() const { return ofTensor(block_.get(), row_, principal<0>); }
float odb_FieldValue::midPrincipal() const { return ofTensor(block_.get(), row_, principal<1>); }
float odb_FieldValue::minPrincipal() const { return ofTensor(block_.get(), row_, principal<2>); }

float odb_FieldValue::maxInPlanePrincipal() const {
  return ofTensor(block_.get(), row_, odb_detail::maxInPlanePrincipalOf);
}

float odb_FieldValue::minInPlanePrincipal() const {
  return ofTensor(block_.get(), row_, odb_detail::minInPlanePrincipalOf);
}

float odb_FieldValue::outOfPlanePrincipal() const {
  return ofTensor(block_.get(), row_, [](const odb_detail::Tensor& s) { return s[2]; });
}
