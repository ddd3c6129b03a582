// The page without its data: markup, style and the bundled script (src/report/page), which are in the program.
#pragma once

#include <string_view>

namespace report {

// Each of the texts before, between and after the places where something goes in.
struct PageTemplate {
  std::string_view beforeTitle;
  std::string_view beforeData;
  std::string_view afterData;
};

// Good for ever.
PageTemplate pageTemplate();

}  // namespace report
