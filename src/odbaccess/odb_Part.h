// Parts of the model.
#pragma once

#include "odbaccess/odb_DiscreteEntity.h"
#include "odbaccess/odb_Repository.h"

class odb_Part : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;
};

using odb_PartRepository = odb_Repository<odb_String, odb_Part>;
