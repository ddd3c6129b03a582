// The elements of a model by type, and where rows at nodes lie on them.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/label_index.h"
#include "importers/input/diagnostics.h"

namespace importers {

// Elements of one type under the name that the database gives it.
struct ElementGroup {
  std::string type;
  int nodesPerElement = 0;
  // False for springs, dashpots and their like: what lies at their nodes belongs to their neighbours.
  bool hasTensors = true;
  std::vector<int> labels;
  std::vector<int> connectivity;  // [elements, nodesPerElement], labels of nodes
};

class ElementGroups {
 public:
  // The group of a type, created if there is none yet. `place` is named in errors: a type has one number of nodes.
  ElementGroup& groupOf(const std::string& type, int nodesPerElement, bool hasTensors, const SourcePlace& place);

  const std::vector<std::unique_ptr<ElementGroup>>& all() const { return groups_; }

  // Once all are there, and before the two below.
  void index();
  // A label that two elements have.
  std::optional<int> repeated() const { return elements_.repeated(); }
  // The type of these elements if they are all of one, else "". Elements that are not there have none.
  std::string commonType(std::span<const int> elements) const;

 private:
  const std::string& typeOf(int element) const;

  std::vector<std::unique_ptr<ElementGroup>> groups_;  // in the order in which they came
  base::LabelIndex elements_;
  std::vector<std::size_t> ends_;  // of each group among all elements, once they are indexed
};

// Rows at nodes spread over the elements that have the nodes: row i of what is made is the source's row rowOf[i].
struct SpreadRows {
  std::vector<int> nodes;
  std::vector<int> elements;
  std::vector<int> rowOf;
  std::string type;           // of all elements, "" where they differ
  std::size_t looseRows = 0;  // rows of nodes that no such element has
};

// Element by element in the order of the groups, nodes in the order of the element; nodes without a row are left out,
// and so are elements without tensors. `labels` are those of the rows, each once.
SpreadRows spreadOverElements(const std::vector<std::unique_ptr<ElementGroup>>& groups, std::span<const int> labels);

}  // namespace importers
