// Words: numbers against the C library, names there and back.
#include <cmath>
#include <cstring>
#include <limits>

#include "fuzz_input.h"
#include "importers/calculix/dat/dat_reader.h"
#include "importers/input/fixed_columns.h"
#include "importers/input/text_fields.h"
#include "importers/run/choice.h"
#include "odbstore/names.h"

namespace {

bool isPlainDecimal(const std::string& text) { return text.find_first_not_of("0123456789+-.eE") == std::string::npos; }

// Where both take the whole text for a number it must be the same one.
void checkNumber(const std::string& text) {
  const std::optional<double> number = importers::numberFrom(text);
  if (!number || !isPlainDecimal(text)) return;
  char* end = nullptr;
  const double expected = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size()) return;
  // Below the range of doubles the C library still has the small ones that we take for nothing.
  const bool isTiny = std::abs(expected) < std::numeric_limits<double>::min();
  require(*number == expected || (isTiny && std::abs(*number) < std::numeric_limits<double>::min()));
}

void checkLabel(const std::string& text) {
  int quick = 0;
  if (text.size() != 10 || !importers::readLabel(text.data(), quick)) return;
  require(importers::integerFrom(text) == quick);
}

void checkScientific(const std::string& text) {
  float quick = 0;
  if (text.size() != 12 || !importers::readScientific(text.data(), quick)) return;
  const std::optional<float> slow = importers::floatFrom(text);
  require(slow && std::memcmp(&quick, &*slow, sizeof(float)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  checkNumber(text);
  checkScientific(text.substr(0, 12));
  checkLabel(text.substr(0, 10));
  importers::integerFrom(text);
  importers::frameChoiceFrom(text);
  importers::calculix::parseDatTitle(text);
  const std::string storable = importers::storableText(text);
  require(importers::storableText(storable) == storable);
  if (!text.empty()) require(odbstore::nameFromLink(odbstore::linkFromName(text)) == text);
  return 0;
}
