// Keywords that a user may have meant.
#pragma once

#include <cstddef>
#include <string_view>

namespace inspect {

// How many letters have to be put in, left out, replaced or swapped with their neighbour to make one text of the other,
// no letter twice (the optimal string alignment distance; Damerau, CACM 7(3), 1964).
std::size_t editDistance(std::string_view a, std::string_view b);

struct NearestKeyword {
  std::string_view keyword;
  std::size_t distance = 0;  // in capitals
};

// The keyword of the configuration, PERCENTAGE among them, that is nearest to a word, be it in capitals or not: one
// that is a letter away, else one that the word is a part of, else the one with the least distance.
NearestKeyword nearestKeyword(std::string_view word);

}  // namespace inspect
