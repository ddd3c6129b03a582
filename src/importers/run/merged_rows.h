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

// The labels of rows where they lie: those that odbstore::LocationLabels has, for the position of the rows.
struct RowLabels {
  RowLabels(std::span<const int> ofNodes, std::span<const int> ofElements, std::span<const int> ofPoints)
      : nodes(ofNodes), elements(ofElements), integrationPoints(ofPoints) {}
  RowLabels(const odbstore::LocationLabels& labels)
      : nodes(labels.nodes), elements(labels.elements), integrationPoints(labels.integrationPoints) {}

  odbstore::LocationLabels copied() const {
    return {{nodes.begin(), nodes.end()},
            {elements.begin(), elements.end()},
            {integrationPoints.begin(), integrationPoints.end()}};
  }

  std::span<const int> nodes;
  std::span<const int> elements;
  std::span<const int> integrationPoints;
};

class MergedRows {
 public:
  // Appends the rows with new labels; of several with equal labels the first counts. `values` are [rows, width]; all
  // calls have the same position and width.
  void add(odbstore::Position position, const RowLabels& labels, std::span<const double> values);

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
