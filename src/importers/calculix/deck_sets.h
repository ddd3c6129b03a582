// The node sets or the element sets of a deck while it is read.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "importers/calculix/deck.h"
#include "importers/diagnostics.h"
#include "importers/line_reader.h"

namespace importers::calculix {

class DeckSets {
 public:
  // Opens a set, for the first time or again. The reference stays good.
  DeckSet& open(const std::string& name, const LineReader& lines);

  // Adds what a data line of labels and names of sets lists. A name that no set has yet is a warning, text that looks
  // like a number and is none an ImportError.
  void addMembers(DeckSet& set, std::string_view line, const LineReader& lines, const WarningSink& warn) const;

  // Adds what a data line of a GENERATE list means: first, last, increment. The last two may be missing.
  static void addRange(DeckSet& set, std::string_view line, const LineReader& lines);

  // All sets by canonical name, their labels in order.
  std::map<std::string, DeckSet> finish();

 private:
  std::map<std::string, DeckSet> sets_;
};

// A label out of a data line; an ImportError if it is none.
int labelFrom(std::string_view item, const LineReader& lines);

// A number out of a data line, its exponent written with E or D; an ImportError if it is none.
double realFrom(std::string_view item, const LineReader& lines);

}  // namespace importers::calculix
