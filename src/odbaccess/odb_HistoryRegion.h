// The histories of one point of the model, or of one set of it.
//
//     const odb_HistoryRegion& region = step.historyRegions()["Node 2665 of TIP"];
//     const odb_Repository<odb_String, odb_HistoryOutput> outputs = region.historyOutputs();
//     if (const odb_HistoryOutput* u1 = outputs.ConstFind("U1")) use(u1->data());
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

// A handle. What cannot be read is an odb_Exception.
class odb_HistoryRegion {
 public:
  explicit odb_HistoryRegion(std::shared_ptr<const odb_detail::HistoryRegionStorage> storage)
      : storage_(std::move(storage)) {}

  odb_String name() const;
  odb_String description() const;
  odb_HistoryPoint historyPoint() const;
  // By name, bytes ascending. Made at each call.
  odb_Repository<odb_String, odb_HistoryOutput> historyOutputs() const;

 private:
  std::shared_ptr<const odb_detail::HistoryRegionStorage> storage_;
};

// By name, bytes ascending.
using odb_HistoryRegionRepository = odb_Repository<odb_String, odb_HistoryRegion>;
