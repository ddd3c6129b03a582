// The node sets or the element sets of a deck while it is read.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "importers/calculix/deck/deck_labels.h"
#include "importers/calculix/deck/deck_set.h"
#include "importers/input/diagnostics.h"
#include "importers/input/line_reader.h"

namespace importers::calculix {

// Lists become labels when the whole deck has been read, because sets may come before the mesh.
class DeckSets {
 public:
  // `order` counts all sets of the deck and must live as long.
  DeckSets(odbstore::SetKind kind, int& order) : kind_(kind), order_(order) {}

  // Opens a set, for the first time or again; `name` as spelled, with its quotes. The reference stays good.
  DeckSet& open(const std::string& name, const LineReader& lines, const WarningSink& warn);

  void addLabel(DeckSet& set, int label);

  // Adds what a data line of labels and names of sets lists: of another set those members that it has so far. A name
  // that no set has yet is a warning, a malformed number an ImportError.
  void addMembers(DeckSet& set, std::string_view line, const LineReader& lines, const WarningSink& warn);

  // Adds a data line of a GENERATE list: first, last, increment. The last two may be missing.
  void addRange(DeckSet& set, std::string_view line, const LineReader& lines);

  // All sets by canonical name, their labels in order. Labels that the mesh does not have are left out, with a warning
  // that counts them.
  std::map<std::string, DeckSet> finish(const MeshLabels& mesh, LabelBudget& budget, const WarningSink& warn);

 private:
  // What one list adds to a set: so many of the labels in labels_, all of another set, or a range.
  struct Piece {
    enum class Kind { labels, set, range };
    DeckSet* to = nullptr;
    DeckSet* from = nullptr;
    Kind kind = Kind::labels;
    int first = 0;  // of a range; of labels their count
    int last = 0;
    int increment = 1;
  };
  // Labels that are not of the mesh.
  struct Strangers {
    std::uint64_t count = 0;
    std::set<const DeckSet*> sets;
    SourcePlace place;  // of the first of them
  };

  void addPiece(const Piece& piece, const MeshLabels& mesh, LabelBudget& budget, Strangers& strangers);
  void warnOf(const Strangers& strangers, const WarningSink& warn) const;

  odbstore::SetKind kind_;
  int& order_;
  std::map<std::string, DeckSet> sets_;
  std::vector<Piece> pieces_;
  std::vector<int> labels_;
  std::size_t taken_ = 0;  // of labels_, in finish()
};

// A label from a data line; throws ImportError for anything else.
int labelFrom(std::string_view item, const LineReader& lines);

// A number from a data line, with an exponent written with E or D; throws ImportError for anything else.
double realFrom(std::string_view item, const LineReader& lines);

}  // namespace importers::calculix
