// Tables for people.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace tool {

// Rows of words in columns as wide as their longest one (in characters of UTF-8), two blanks between them.
std::string aligned(const std::vector<std::vector<std::string>>& rows);

// "1-3,5": runs of numbers in ascending order.
std::string runsOf(const std::set<int>& numbers);

}  // namespace tool
