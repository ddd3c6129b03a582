#include "odbaccess/database_storage.h"

#include <map>
#include <string>
#include <vector>

#include "odbaccess/entity_storage.h"
#include "odbaccess/guard.h"
#include "odbaccess/step_storage.h"

namespace odb_detail {

DatabaseStorage::DatabaseStorage(std::shared_ptr<const odbstore::Reader> reader)
    : reader_(std::move(reader)),
      locations_(std::make_shared<LocationCache>()),
      assembly_(std::make_shared<EntityStorage>(reader_, odbstore::Owner{},
                                                guarded([&] { return reader_->assemblyName(); }))) {}

odb_PartRepository& DatabaseStorage::parts() {
  if (!parts_) {
    std::map<odb_String, odb_Part> nodes;
    for (const std::string& name : guarded([&] { return reader_->parts(); })) {
      const odbstore::Owner owner{odbstore::OwnerKind::part, name};
      nodes.emplace(odb_String(name), odb_Part(std::make_shared<EntityStorage>(reader_, owner, name)));
    }
    parts_ = odb_PartRepository(std::move(nodes));
  }
  return *parts_;
}

odb_StepRepository& DatabaseStorage::steps() {
  if (!steps_) {
    std::vector<odb_Step> steps;
    for (const std::string& name : guarded([&] { return reader_->steps(); })) {
      steps.emplace_back(std::make_shared<StepStorage>(reader_, locations_, name));
    }
    steps_ = odb_StepRepository(steps);
  }
  return *steps_;
}

}  // namespace odb_detail
