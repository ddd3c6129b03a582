// Two files of records held against each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "inspect/compare/tolerances.h"

namespace inspect {

// A record whose values differ by more than its tolerance. Of values with several numbers, the centre of mass or a
// history, the numbers are those that differ most.
struct RecordDifference {
  std::string name;
  std::size_t occurrence = 0;  // of a name that occurs several times, from 0
  std::string a;               // as they are written
  std::string b;
  double difference = 0.0;  // |a - b|; infinite where one of them is not finite or they are of different kinds
  double relative = 0.0;    // of the larger magnitude; infinite likewise
};

struct RecordComparison {
  std::uint64_t compared = 0;
  std::uint64_t ignored = 0;
  std::vector<RecordDifference> differences;  // by their relative size, the largest first
  std::vector<std::string> onlyInA;           // names, in the order of their file; as often as they are missing
  std::vector<std::string> onlyInB;

  bool isSame() const { return differences.empty() && onlyInA.empty() && onlyInB.empty(); }
};

// Compares texts of params.txt. A name that occurs several times is compared in the order of its occurrences. NaN
// agrees with NaN and with no number, an infinity with the same infinity alone, whatever the tolerances.
RecordComparison compareRecords(const std::string& a, const std::string& b, const Tolerances& tolerances);

}  // namespace inspect
