// Names of the database on the line that is being typed.
#pragma once

#include <string>
#include <vector>

namespace inspect {

// For `--step`, `--field` and `--set`; nothing where the line names no database that can be read.
std::vector<std::string> completeNames(const std::string& option, const std::vector<std::string>& words);

}  // namespace inspect
