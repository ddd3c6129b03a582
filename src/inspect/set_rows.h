// Whether a set has rows at a location.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "inspect/label_set.h"
#include "inspect/model_sets.h"
#include "odbstore/reader.h"

namespace inspect {

// Reads labels, never rows: those of a location once, those of a set once for all locations that are known when it is
// first asked for. One thread at a time.
class SetRows {
 public:
  // `sets` are all of the database's (model_sets.h) and live as long.
  SetRows(std::shared_ptr<const odbstore::DatabaseFile> file, const std::vector<ModelSet>& sets);

  // The number of a location in what follows; the same for the same object.
  std::size_t add(const std::shared_ptr<const odbstore::StoredLocation>& location);

  // Whether set `set` has a row at location `location`: an element set where rows have elements, a node set where they
  // have nodes. Throws odbstore::StoreError where labels cannot be read.
  bool touch(std::size_t set, std::size_t location);

 private:
  struct Location {
    std::shared_ptr<const odbstore::StoredLocation> stored;
    std::string instance;
    std::optional<LabelSet> elements;
    std::optional<LabelSet> nodes;
  };

  void extend(std::size_t set);
  const LabelSet* labelsOf(Location& location, odbstore::SetKind kind);

  std::shared_ptr<const odbstore::DatabaseFile> file_;
  const std::vector<ModelSet>& sets_;
  std::vector<Location> locations_;
  std::unordered_map<const odbstore::StoredLocation*, std::size_t> numbers_;
  std::vector<std::vector<bool>> touched_;  // by set, then location, as far as they are known
};

}  // namespace inspect
