// Parts of the model.
//
//     odb_SetRepository& sets = odb.parts()["PART-1"].nodeSets(false);
#pragma once

#include "odbaccess/odb_DiscreteEntity.h"
#include "odbaccess/odb_Repository.h"

// Owns sets that hold in every instance of the part. Good while the database is open.
class odb_Part : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;
};

// By name, bytes ascending.
using odb_PartRepository = odb_Repository<odb_String, odb_Part>;
