#include "importers/calculix/frd/frd_lines.h"

#include <fmt/core.h>

#include "importers/input/diagnostics.h"
#include "importers/input/fixed_columns.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

std::string_view FrdLines::require() {
  std::string_view line;
  if (!reader_.next(line)) throw CutOff{};
  return line;
}

std::string_view FrdLines::requireKey(std::string_view key, const char* what) {
  const std::string_view line = require();
  if (!line.starts_with(key)) fail(fmt::format("expected {} here (\"{}\")", what, key));
  return line;
}

void FrdLines::requireBytes(void* to, std::size_t size) {
  if (!reader_.readBytes(to, size)) throw CutOff{};
}

void FrdLines::requireRecords(std::size_t count, std::size_t size) const {
  if (count > reader_.bytesLeft() / size) throw CutOff{};
}

int FrdLines::integerAt(std::string_view line, std::size_t column, std::size_t width, const char* what) const {
  const std::string_view text = columns(line, column, width);
  if (int label = 0; text.size() == kLabelColumns && readLabel(text.data(), label)) return label;
  const std::optional<int> value = integerFrom(text);
  if (!value) fail(fmt::format("{} \"{}\" is not a whole number", what, storableText(text)));
  return *value;
}

std::optional<std::size_t> FrdLines::countAt(std::string_view header) const {
  if (trimmed(columns(header, 25, 12)).empty()) return std::nullopt;
  const int count = integerAt(header, 25, 12, "the count");
  if (count < 0) fail("the count is negative");
  return static_cast<std::size_t>(count);
}

void FrdLines::requireCount(std::optional<std::size_t> announced, std::size_t found, std::int64_t line,
                            const char* what) const {
  if (!announced || *announced == found) return;
  throw ImportError(path(), line, fmt::format("{} {} are announced here, but there are {}", *announced, what, found));
}

bool isBlockStart(std::string_view text) {
  return text.starts_with("    1P") || text.starts_with("  100C") || text.starts_with("    2C") ||
         text.starts_with("    3C") || text.starts_with(" 9999");
}

}  // namespace importers::calculix
