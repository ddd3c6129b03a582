// The model as a whole.
//
//     odb_Assembly& assembly = odb.rootAssembly();
//     const odb_Set& rim = assembly.elementSets(false)["RIM"];
//     const odb_Instance& lug = assembly.instances()["PART-1-1"];
#pragma once

#include "odbaccess/odb_DiscreteEntity.h"
#include "odbaccess/odb_Instance.h"

// Owns the sets that span instances, and the instances. Good while the database is open.
class odb_Assembly : public odb_DiscreteEntity {
 public:
  using odb_DiscreteEntity::odb_DiscreteEntity;

  // By name, bytes ascending.
  odb_InstanceRepository& instances() const;
};
