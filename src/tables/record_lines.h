// The lines of params.txt.
#pragma once

#include <functional>
#include <string_view>

namespace tables {

// Calls take(name, value) for each line: what stands before the last tab, and behind it, a carriage return at the end
// not among it. A line without a tab is a name without a value.
void forEachRecord(std::string_view params,
                   const std::function<void(std::string_view name, std::string_view value)>& take);

}  // namespace tables
