// Parts as they are placed in the assembly.
#pragma once

#include "odbaccess/odb_DiscreteEntity.h"
#include "odbaccess/odb_Repository.h"

class odb_Instance : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;

  // The name of the part that is placed here.
  odb_String partName() const;
};

using odb_InstanceRepository = odb_Repository<odb_String, odb_Instance>;
