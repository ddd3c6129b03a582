#include "odbaccess/block_storage.h"
#include "odbaccess/odb_FieldValue.h"
#include "odbaccess/odb_FieldValueRun.h"

int odb_FieldValueRun::count() const { return block_->rows(); }

int odb_FieldValueRun::type() const { return odb_FieldValue(block_, 0).type(); }

int odb_FieldValueRun::precision() const { return odb_FieldValue(block_, 0).precision(); }

int odb_FieldValueRun::dataCount() const { return block_->fieldRowLength(); }

const float* odb_FieldValueRun::floatData(int from, int count) { return block_->fieldRows(from, count, floats_); }

const double* odb_FieldValueRun::doubleData(int from, int count) { return block_->fieldRows(from, count, doubles_); }

void odb_FieldValueRun::magnitude(int from, int count, float* out) const {
  for (int i = 0; i < count; ++i) out[i] = odb_FieldValue(block_, from + i).magnitude();
}

void odb_FieldValueRun::mises(int from, int count, float* out) const {
  if (!block_->content()->isTensor()) {
    std::fill_n(out, count, 0.0F);
    return;
  }
  const std::vector<float>& all = block_->content()->mises();
  for (int i = 0; i < count; ++i) out[i] = all[static_cast<std::size_t>(block_->contentRow(from + i))];
}

void odb_FieldValueRun::invariant(odb_InvariantEnum code, int from, int count, float* out) const {
  if (!block_->content()->isTensor()) {
    std::fill_n(out, count, 0.0F);
    return;
  }
  const float odb_detail::Invariants::*const member = odb_detail::invariantMember(code);
  for (int i = 0; i < count; ++i) out[i] = block_->content()->invariants(block_->contentRow(from + i)).*member;
}
