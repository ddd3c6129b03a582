// What a CalculiX input deck (.inp) says of sets, element types and steps.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "importers/diagnostics.h"

namespace importers::calculix {

struct DeckSet {
  std::string name;         // as the deck spells it first
  std::vector<int> labels;  // ascending, each once
};

struct Deck {
  std::string heading;  // the first line under *HEADING
  // By name in capitals without blanks, as the solver takes names. Only *NSET, *ELSET, NSET= on *NODE and ELSET= on
  // *ELEMENT make sets.
  std::map<std::string, DeckSet> nodeSets;
  std::map<std::string, DeckSet> elementSets;
  // The element types in the order of their first use, and the label ranges that have them.
  std::vector<std::string> elementTypes;
  std::unordered_map<int, int> typeOfElement;  // label to place in elementTypes
  std::vector<std::string> stepTitles;         // of each step its first line of text, or empty
};

// Reads the deck and the files that it includes. A number that is none, a set without a name, or a file that includes
// itself is an ImportError; a set that takes in an unknown one is a warning.
Deck readDeck(const std::string& path, const WarningSink& warn);

// The name as the solver compares it: in capitals, without blanks and quotes.
std::string canonicalName(std::string_view name);

}  // namespace importers::calculix
