#include "report/page_template.h"

#include <stdexcept>

// The bundle as it stands in the source tree. An assembler takes a file of any size in no time.
asm(".pushsection .rodata\n"
    "kolvex_report_page: .incbin \"" KOLVEX_REPORT_PAGE
    "\"\n"
    "kolvex_report_page_end: .byte 0\n"
    ".global kolvex_report_page\n"
    ".global kolvex_report_page_end\n"
    ".popsection\n");

extern "C" {
extern const char kolvex_report_page[];
extern const char kolvex_report_page_end[];
}

namespace report {

namespace {

constexpr std::string_view kTitle = "<!--title-->";
constexpr std::string_view kData = "<!--data-->";

std::size_t placeOf(std::string_view page, std::string_view mark) {
  const std::size_t place = page.find(mark);
  if (place == std::string_view::npos) throw std::logic_error("the page has no place for " + std::string(mark));
  return place;
}

}  // namespace

PageTemplate pageTemplate() {
  const std::string_view page(kolvex_report_page,
                              static_cast<std::size_t>(kolvex_report_page_end - kolvex_report_page));
  const std::size_t title = placeOf(page, kTitle);
  const std::size_t data = placeOf(page, kData);
  return {page.substr(0, title), page.substr(title + kTitle.size(), data - title - kTitle.size()),
          page.substr(data + kData.size())};
}

}  // namespace report
