// Rows of one field in one frame that come in several deliveries, as the tables of several printed sets do.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <span>
#include <unordered_set>
#include <vector>

#include "odbstore/schema.h"

namespace importers {

class MergedRows {
 public:
  // Appends those rows whose labels have not come yet; the first of several counts. `values` are [rows, width]; all
  // calls have the same position and width.
  void add(odbstore::Position position, const odbstore::LocationLabels& labels, std::span<const double> values);

  const odbstore::LocationLabels& labels() const { return labels_; }
  const std::vector<double>& values() const { return values_; }

 private:
  using Key = std::array<int, 3>;  // element, integration point, node
  struct Hash {
    std::size_t operator()(const Key& key) const;
  };

  std::unordered_set<Key, Hash> known_;
  odbstore::LocationLabels labels_;
  std::vector<double> values_;
};

}  // namespace importers
