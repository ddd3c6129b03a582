// What a CalculiX input deck (.inp) says of sets, element types and steps.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "importers/diagnostics.h"

namespace importers::calculix {

struct DeckSet {
  std::string name;         // as the deck spells it first
  std::string place;        // "<file>:<line>" of its first mention
  std::vector<int> labels;  // ascending, each once
};

struct Deck {
  std::string heading;  // the first line under *HEADING
  // By canonical name. Only *NSET, *ELSET, NSET= on *NODE and ELSET= on *ELEMENT make sets.
  std::map<std::string, DeckSet> nodeSets;
  std::map<std::string, DeckSet> elementSets;
  // The element types in the order of their first use, in capitals, and which element has which: two lists in the order
  // of the deck.
  std::vector<std::string> elementTypes;
  std::vector<int> elementLabels;
  std::vector<int> typeOfElement;       // place in elementTypes
  std::vector<std::string> stepTitles;  // of each step its first line of text, or empty
  // The step that first asks for SECTION FORCES, 0 where none does. From there on the solver writes them instead of
  // stresses, even if a later step asks for stresses again.
  int sectionForcesFrom = 0;
};

// Reads the deck and the files that it includes, which are looked for beside the file that names them, then beside the
// deck. A number that is none, a set without a name, and a file that is missing or includes itself are an ImportError;
// a set that takes in an unknown one is a warning. All name file and line.
Deck readDeck(const std::string& path, const WarningSink& warn);

// The name as the solver compares it: in capitals, without blanks and quotes.
std::string canonicalName(std::string_view name);

}  // namespace importers::calculix
