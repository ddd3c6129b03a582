// Parts as they are placed in the assembly.
//
//     const odb_Instance& lug = odb.rootAssembly().instances()["PART-1-1"];
//     std::printf("%s, %d sets\n", lug.partName().cStr(), lug.elementSets(false).size());
#pragma once

#include "odbaccess/odb_DiscreteEntity.h"
#include "odbaccess/odb_Repository.h"

// Owns the sets of this placement; those of the part belong to the part. Good while the database is open.
class odb_Instance : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;

  // The name of the part that is placed here.
  odb_String partName() const;
};

// By name, bytes ascending.
using odb_InstanceRepository = odb_Repository<odb_String, odb_Instance>;
