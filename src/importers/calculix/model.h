// The model behind the results while they are imported: elements by type, and where rows of results lie on it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/calculix/expansion.h"
#include "importers/calculix/frd_reader.h"
#include "importers/calculix/sector_copies.h"
#include "importers/label_index.h"
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

// Rows of a nodal block spread over the nodes of the elements of one group: row i of the location is the row of the
// block at the i-th of the places.
struct ElementNodalRows {
  odbstore::LocationId location;
  odbstore::KeptPlaces places;
};

// Where the rows of a block with certain node labels lie. What is not asked for is not looked for.
class RowPlaces {
 public:
  RowPlaces(std::vector<int> labels, const std::vector<ElementGroup>& groups, odbstore::Writer& writer)
      : labels_(std::move(labels)), groups_(groups), writer_(writer) {}

  const std::vector<int>& labels() const { return labels_; }
  odbstore::LocationId nodal();
  // One entry per group that has rows; element nodes without a row are left out.
  const std::vector<ElementNodalRows>& elementNodal();
  // How many rows belong to no element, known after elementNodal().
  std::size_t looseRows() const { return looseRows_; }

 private:
  void findElementNodal();

  std::vector<int> labels_;
  const std::vector<ElementGroup>& groups_;
  odbstore::Writer& writer_;
  std::optional<odbstore::LocationId> nodal_;
  std::optional<std::vector<ElementNodalRows>> elementNodal_;
  std::size_t looseRows_ = 0;
};

// The mesh of a result file as it goes into the database.
class Model {
 public:
  // `resultsPath` is named in errors.
  Model(const Deck& deck, const std::string& resultsPath, odbstore::Writer& writer);

  // Nodes before elements, each once. A label that comes twice, and a node of an element that is none, are an
  // ImportError.
  void addNodes(const FrdNodes& nodes);
  void addElements(const FrdElements& elements);
  // The sets of the deck, with what the solver has made of their members. Those that match nothing of the mesh are
  // kept, and named in a warning.
  void addSets(const WarningSink& warn);

  // The type of an element under the name that the database has for it; empty for one that is not there.
  const std::string& typeOf(int element) const;

  bool hasNodes() const { return !nodes_.isEmpty(); }
  bool hasElements() const { return !groups_.empty(); }
  int setCount() const { return setCount_; }

  // Where the rows of a block lie; found once for all blocks with the same labels. They may lie at nodes that the model
  // does not show (those of elements that are switched off, and of networks). Two rows for one node are an ImportError.
  RowPlaces& placesOf(const FrdResult& block);

 private:
  void addGroup(const FrdElementGroup& source, std::int64_t line);
  ElementGroup& groupOf(const FrdElementGroup& source, int label);

  const Deck& deck_;
  std::string resultsPath_;
  odbstore::Writer& writer_;
  LabelIndex deckElements_;
  LabelIndex nodes_;
  LabelIndex elements_;
  Expansion expansion_;
  std::optional<std::vector<Sector>> sectors_;
  std::vector<std::string> setWarnings_;
  int setCount_ = 0;
  std::vector<ElementGroup> groups_;
  std::vector<int> firstPlaces_;                    // of each group among all elements
  std::vector<std::unique_ptr<RowPlaces>> places_;  // the ones used last, the latest first
};

}  // namespace importers::calculix
