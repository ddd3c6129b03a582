// History regions, behind the handles.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "odbstore/reader.h"

namespace odb_detail {

class HistoryRegionStorage {
 public:
  HistoryRegionStorage(std::shared_ptr<const odbstore::StoredStep> step, std::string name)
      : step_(std::move(step)), name_(std::move(name)) {}

  const std::string& name() const { return name_; }
  const std::shared_ptr<const odbstore::StoredStep>& step() const { return step_; }

  // What the file says of the region, put together at first use.
  const odbstore::StoredHistoryRegion& stored() const {
    if (!stored_) stored_ = step_->historyRegion(name_);
    return *stored_;
  }

 private:
  std::shared_ptr<const odbstore::StoredStep> step_;
  std::string name_;
  mutable std::optional<odbstore::StoredHistoryRegion> stored_;
};

}  // namespace odb_detail
