#include "tables/record_lines.h"

#include <algorithm>

namespace tables {

void forEachRecord(std::string_view params,
                   const std::function<void(std::string_view name, std::string_view value)>& take) {
  while (!params.empty()) {
    const std::size_t end = std::min(params.find('\n'), params.size());
    std::string_view line = params.substr(0, end);
    params.remove_prefix(std::min(end + 1, params.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    // A value holds no tab, and a name may.
    const std::size_t tab = line.rfind('\t');
    take(line.substr(0, tab), tab == std::string_view::npos ? std::string_view() : line.substr(tab + 1));
  }
}

}  // namespace tables
