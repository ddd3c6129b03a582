// The histories of one point of the model, or of one set of it.
#pragma once

#include <memory>
#include <utility>

#include "odbaccess/odb_HistoryOutput.h"
#include "odbaccess/odb_HistoryPoint.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class HistoryRegionStorage;
}

class odb_HistoryRegion {
 public:
  explicit odb_HistoryRegion(std::shared_ptr<const odb_detail::HistoryRegionStorage> storage)
      : storage_(std::move(storage)) {}

  odb_String name() const;
  odb_String description() const;
  odb_HistoryPoint historyPoint() const;
  // By name, bytes ascending.
  odb_Repository<odb_String, odb_HistoryOutput> historyOutputs() const;

 private:
  std::shared_ptr<const odb_detail::HistoryRegionStorage> storage_;
};

using odb_HistoryRegionRepository = odb_Repository<odb_String, odb_HistoryRegion>;
