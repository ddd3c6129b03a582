#include "inspect/name_choice.h"

#include <fnmatch.h>

#include <algorithm>

namespace inspect {

bool NameChoice::takes(std::string_view name) const {
  const std::string text(name);
  return patterns_.empty() || std::any_of(patterns_.begin(), patterns_.end(), [&](const std::string& pattern) {
           return pattern == text || ::fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
         });
}

}  // namespace inspect
