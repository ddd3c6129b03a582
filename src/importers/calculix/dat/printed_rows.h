// Whether a printed table has a row for all that its set has: the last one of a file may end before its time.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "importers/calculix/dat/dat_formats.h"
#include "importers/calculix/deck/deck.h"

namespace importers::calculix {

class PrintedRows {
 public:
  explicit PrintedRows(const Deck& deck) : deck_(&deck) {}

  // The rows that are added from now on are those of this table.
  void start(const DatFormat& format, const DatTable& head);
  void add(const DatValues& row);
  // Whether rows are missing. Known by the set in the deck, by what other elements of the same type have, or by the
  // table of the same title and set before; what is not known is not missing.
  bool areMissing() const;

 private:
  struct ElementRows {
    int element = 0;
    std::size_t rows = 0;
  };

  bool lackNodes() const;
  bool lackElements() const;
  bool lackPoints() const;

  const Deck* deck_;
  const DatFormat* format_ = nullptr;
  std::string set_;
  std::size_t count_ = 0;
  std::size_t countBefore_ = 0;
  std::vector<ElementRows> elements_;
  std::map<std::pair<std::string, std::string>, std::size_t> counts_;  // by title and set
};

}  // namespace importers::calculix
