// What names of records of field outputs end in: a quantity and an extreme.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "odbstore/schema.h"
#include "result/extraction_switches.h"

namespace inspect {

enum class Extreme { none, max, min, engineeringMax, engineeringMin };

// "max", "min", "enggmax", "enggmin", as in names of records; empty for none.
std::string_view wordOf(Extreme extreme);

struct Ending {
  std::string text;                // "__mises__max"
  std::string_view quantity;       // "mises", "11", "mag", "1", "tresca", ...; empty for scalars
  Extreme extreme = Extreme::max;  // what the number is, whatever the text says
};

// Which tensor components there are, in the order 11, 22, 33, 12, 13, 23.
struct Components {
  bool present[6] = {};

  // As the records of the whole model have them: labels that are a component to the letter.
  void addExact(const std::vector<std::string>& labels);
  // As those of sets have them: labels that end in one.
  void addEndings(const std::vector<std::string>& labels);
};

enum class Reduction { wholeModel, set, listing };

// The records of rows of one type, in their order. A type that is neither scalar, vector nor tensor is a scalar, but
// gives nothing over sets. `Reduction::listing` are the names that are written in place of values.
std::vector<Ending> endingsOf(int type, const Components& components, Reduction reduction,
                              const ExtractionSwitches& switches);

// The records of the invariants that a field names as valid.
std::vector<Ending> invariantEndings(const std::vector<int>& valid, const ExtractionSwitches& switches);

// Every text that a name may end in before its extreme: "", "__mises", "__11", ... Good for ever.
const std::vector<std::string_view>& quantityTexts();

}  // namespace inspect
