// The model behind the results while they are imported: elements by type, and where rows of results lie on it.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/calculix/frd_reader.h"
#include "odbstore/writer.h"

namespace importers::calculix {

// The one instance that a deck without parts has, and its part.
inline constexpr const char* kInstance = "PART-1-1";
inline constexpr const char* kPart = "PART-1";

// Elements of one type under the name that the database gives it.
struct ElementGroup {
  std::string type;
  int nodesPerElement = 0;
  std::vector<int> labels;
  std::vector<int> connectivity;  // [elements, nodesPerElement]
};

// Rows of a nodal block spread over the nodes of the elements of one group: row i of the location is row gather[i] of
// the block.
struct ElementNodalRows {
  odbstore::LocationId location;
  std::vector<int> gather;
};

// Where the rows of a block with certain node labels lie.
class RowPlaces {
 public:
  RowPlaces(std::vector<int> labels, const std::vector<ElementGroup>& groups, odbstore::Writer& writer)
      : labels_(std::move(labels)), groups_(groups), writer_(writer) {}

  const std::vector<int>& labels() const { return labels_; }
  odbstore::LocationId nodal();
  // One entry per group that has rows; element nodes without a row are left out.
  const std::vector<ElementNodalRows>& elementNodal();

 private:
  std::vector<int> labels_;
  const std::vector<ElementGroup>& groups_;
  odbstore::Writer& writer_;
  std::optional<odbstore::LocationId> nodal_;
  std::optional<std::vector<ElementNodalRows>> elementNodal_;
};

// The mesh of a result file as it goes into the database.
class Model {
 public:
  Model(const Deck& deck, odbstore::Writer& writer) : deck_(deck), writer_(writer) {}

  void addNodes(const FrdNodes& nodes);
  void addElements(const FrdElements& elements);
  // The sets of the deck. Those that match nothing of the mesh are kept, and named in a warning.
  void addSets(const std::string& deckPath, const WarningSink& warn);

  bool hasNodes() const { return !nodes_.empty(); }
  bool hasElements() const { return !groups_.empty(); }
  int setCount() const { return static_cast<int>(deck_.nodeSets.size() + deck_.elementSets.size()); }

  // Where the rows of a block with these node labels lie; found once for all blocks with the same labels.
  RowPlaces& placesOf(const std::vector<int>& labels);

 private:
  void addSetsOf(odbstore::SetKind kind, const std::map<std::string, DeckSet>& sets,
                 const std::unordered_set<int>& known, const std::string& deckPath, const WarningSink& warn);

  const Deck& deck_;
  odbstore::Writer& writer_;
  std::unordered_set<int> nodes_;
  std::unordered_set<int> elements_;
  std::vector<ElementGroup> groups_;
  std::vector<std::unique_ptr<RowPlaces>> places_;  // the ones used last, the latest first
};

}  // namespace importers::calculix
