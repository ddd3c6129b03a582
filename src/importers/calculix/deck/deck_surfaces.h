// The surfaces of a deck, which become sets.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/deck_keyword.h"
#include "importers/calculix/deck/deck_labels.h"
#include "importers/input/diagnostics.h"
#include "importers/input/line_reader.h"

namespace importers::calculix {

class DeckSurfaces {
 public:
  // `order` counts all sets of the deck and must live as long.
  explicit DeckSurfaces(int& order) : order_(order) {}

  // *SURFACE; an ImportError without a name.
  void start(const Keyword& keyword, const LineReader& lines);
  // A node, an element or a set, with the face where the surface is one of elements.
  void takeData(std::string_view line, const LineReader& lines);

  // Gives the deck, whose sets and mesh are complete, a set for every surface: of nodes a node set; of elements a set
  // of them and one of the nodes of their faces. They have the name of the surface, with kSurfaceSuffix if the deck has
  // a set of that name. An unknown set or face is a warning.
  void addSets(Deck& deck, LabelBudget& budget, const WarningSink& warn) const;

 private:
  struct Part {
    SourcePlace place;
    std::string member;  // a label or the name of a set
    std::string face;    // in capitals
  };
  struct Surface {
    std::string name;  // as spelled, with quotes
    SourcePlace place;
    int order = 0;
    bool isOfNodes = false;
    std::vector<Part> parts;
  };

  static std::vector<int> membersOf(const Part& part, const std::map<std::string, DeckSet>& sets, LabelBudget& budget,
                                    const WarningSink& warn);

  int& order_;
  std::vector<Surface> surfaces_;
};

inline constexpr const char* kSurfaceSuffix = "-SURFACE";

}  // namespace importers::calculix
