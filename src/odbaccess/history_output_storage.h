// Histories, behind the handles.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "odbstore/reader.h"

namespace odb_detail {

struct HistoryOutputStorage {
  HistoryOutputStorage(std::shared_ptr<const odbstore::StoredStep> ofStep, std::string ofRegion, std::string itsName)
      : step(std::move(ofStep)), region(std::move(ofRegion)), name(std::move(itsName)) {}

  std::shared_ptr<const odbstore::StoredStep> step;
  std::string region;
  std::string name;
};

}  // namespace odb_detail
