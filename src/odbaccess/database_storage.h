// Databases, behind the handles.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "odbaccess/location_cache.h"
#include "odbaccess/odb_Assembly.h"
#include "odbaccess/odb_Part.h"
#include "odbaccess/odb_StepRepository.h"
#include "odbstore/reader.h"

namespace odb_detail {

// An open database. What of the model has been asked for is kept.
class DatabaseStorage {
 public:
  explicit DatabaseStorage(std::shared_ptr<const odbstore::Reader> reader);

  const odbstore::Reader& reader() const { return *reader_; }
  odb_Assembly& assembly() { return assembly_; }
  odb_PartRepository& parts();
  odb_StepRepository& steps();

  bool isClosed() const { return closed_; }
  void close() { closed_ = true; }

 private:
  std::shared_ptr<const odbstore::Reader> reader_;
  std::shared_ptr<LocationCache> locations_;
  odb_Assembly assembly_;
  std::optional<odb_PartRepository> parts_;
  std::optional<odb_StepRepository> steps_;
  bool closed_ = false;
};

}  // namespace odb_detail
