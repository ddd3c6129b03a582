// The model as a whole.
#pragma once

#include "odbaccess/odb_DiscreteEntity.h"
#include "odbaccess/odb_Instance.h"

class odb_Assembly : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;

  odb_InstanceRepository& instances() const;
};
