#include "odbaccess/odb_FieldBulkData.h"

#include "odbaccess/block_storage.h"
#include "odbaccess/odb_Enum.h"

int odb_FieldBulkData::type() const { return storage_->content()->block().type(); }

int odb_FieldBulkData::precision() const {
  return storage_->content()->block().isDouble() ? odb_Enum::doublePrecision : odb_Enum::singlePrecision;
}

odb_String odb_FieldBulkData::instanceName() const {
  return odb_String(storage_->content()->block().location()->info().instance);
}

int odb_FieldBulkData::valueCount() const { return storage_->rows(); }
int odb_FieldBulkData::width() const { return storage_->bulkWidth(); }
float* odb_FieldBulkData::data() const { return storage_->bulkRows<float>(); }
double* odb_FieldBulkData::dataDouble() const { return storage_->bulkRows<double>(); }

odb_Sequence<odb_String> odb_FieldBulkData::componentLabels() const {
  odb_Sequence<odb_String> labels;
  for (const std::string& label : storage_->content()->block().componentLabels()) labels.append(odb_String(label));
  return labels;
}

int odb_FieldBulkData::numberOfElements() const { return storage_->numberOfElements(); }
int* odb_FieldBulkData::elementLabels() const { return storage_->elementLabels(); }
int* odb_FieldBulkData::nodeLabels() const { return storage_->nodeLabels(); }
int* odb_FieldBulkData::integrationPoints() const { return storage_->integrationPoints(); }
float* odb_FieldBulkData::mises() const { return storage_->mises(); }

void odb_FieldBulkData::forEachStoredTile(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  storage_->forEachStoredTile(take);
}

int odb_FieldBulkData::storedCount() const { return storage_->storedCount(); }

const int* odb_FieldBulkData::rowOf() const { return storage_->rowOf(); }

void odb_FieldBulkData::forEachTile(const std::function<void(const odb_FieldBulkTile&)>& take) const {
  storage_->forEachTile(take);
}
