// What the parts of a scan share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/file_error.h"
#include "hdf5/group.h"
#include "odbscan/met_objects.h"
#include "odbstore/catalog_builder.h"

namespace odbscan {

// The catalog in the making, and what has been met on the way.
class ScanContext : public MetObjects {
 public:
  // With `isPatient` faults of an object are recorded and the scan goes on with the others.
  ScanContext(int layout, bool isPatient) : catalog(layout), layout_(layout), isPatient_(isPatient) {}

  odbstore::CatalogBuilder catalog;

  int layout() const { return layout_; }
  const std::vector<base::FileError>& problems() const { return problems_; }

  // Runs `action` and returns whether it succeeded; a patient scan records the failure, another one throws.
  template <class Action>
  bool guarded(Action&& action) {
    if (!isPatient_) {
      action();
      return true;
    }
    try {
      action();
      return true;
    } catch (const base::FileError& error) {
      problems_.push_back(error);
      return false;
    }
  }

  void addLocation(const std::string& id, const odbstore::LocationEntry& location);
  // The place in the catalog of the location of an id; nothing when there is none.
  std::optional<std::size_t> findLocation(const std::string& id) const;

  // The array that a data set is. A slab is what lies along its first dimension where that is `isSlabbed` or it is
  // packed, else the whole.
  std::int32_t addArray(const h5::Dataset& dataset, bool isSlabbed);
  // The same of labels and the like: integers in one dimension.
  std::int32_t addLabels(const h5::Dataset& dataset);

 private:
  int layout_;
  bool isPatient_;
  std::vector<base::FileError> problems_;
  std::unordered_map<std::string, std::size_t> locations_;
};

// The names behind the links of a group that may be absent, bytes ascending.
std::vector<std::string> memberNames(const std::optional<h5::Group>& group);
std::vector<std::string> memberNames(const h5::Group& group);
// The group of a name, met once.
h5::Group memberOf(ScanContext& context, const h5::Group& group, const std::string& name);

// The parts of a scan. The root group must be open.
void scanModel(const h5::Group& root, ScanContext& context);
void scanLocations(const h5::Group& root, ScanContext& context);
void scanSteps(const h5::Group& root, ScanContext& context);
void scanFields(const h5::Group& step, ScanContext& context);
void scanHistories(const h5::Group& step, ScanContext& context);

}  // namespace odbscan
