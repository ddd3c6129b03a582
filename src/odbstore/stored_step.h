// A step of the analysis.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "odbstore/schema.h"
#include "odbstore/stored_field.h"

namespace odbstore {

class FrameSlabs;
class LocationTable;

struct StoredHistoryRegion {
  std::string name;
  HistoryRegionInfo info;
  std::vector<std::string> outputs;  // names, bytes ascending
};

// Outlives the reader that it comes from. Not thread-safe.
class StoredStep {
 public:
  // Step `index` of the catalog.
  StoredStep(std::shared_ptr<LocationTable> locations, std::size_t index);

  const std::string& name() const { return name_; }
  StepInfo info() const;

  int frameCount() const;
  // Frame 0 <= frame < frameCount().
  FrameInfo frame(int frame) const;
  int incrementNumber(int frame) const;
  std::vector<FrameInfo> frames() const;

  // By name, in ascending byte order. Made at the first call.
  const std::vector<StoredField>& fields() const;
  // Null if there is no field of that name.
  const StoredField* findField(const std::string& name) const;

  // Names, in ascending byte order.
  std::vector<std::string> historyRegions() const;
  // Throws StoreError if there is no region of that name.
  StoredHistoryRegion historyRegion(const std::string& region) const;
  HistorySamples historySamples(const std::string& region, const std::string& output) const;

 private:
  std::vector<StoredField> makeFields() const;
  std::vector<StoredBlock> makeBlocks(std::size_t field, const std::shared_ptr<const FrameSlabs>& frames) const;
  // The index of a frame among all of the catalog.
  std::size_t placeOf(int frame) const;
  // The region's index in the catalog.
  std::size_t findRegion(const std::string& region) const;

  std::shared_ptr<LocationTable> locations_;
  std::size_t index_;
  std::string name_;
  mutable std::optional<std::vector<StoredField>> fields_;
};

}  // namespace odbstore
