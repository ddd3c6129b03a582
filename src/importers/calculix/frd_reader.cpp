#include "importers/calculix/frd_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <map>

#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

constexpr std::size_t kNumberWidth = 12;
constexpr std::size_t kNumbersPerLine = 6;
constexpr std::size_t kFirstNumberColumn = 14;
constexpr std::size_t kNodesPerLine = 10;
// Counts in headers are trusted no further than this before the rows themselves have been seen.
constexpr std::size_t kLargestReserve = 1U << 20;

struct ElementType {
  const char* name;
  std::vector<int> order;  // place in the file of the deck's i-th node
};

// Node order against the deck: the edge nodes of hexahedra and wedges on top and at the sides change places, and a
// line has its ends first.
const ElementType* elementType(int code) {
  static const std::array<ElementType, 12> types = {{
      {"HEX8", {0, 1, 2, 3, 4, 5, 6, 7}},
      {"WEDGE6", {0, 1, 2, 3, 4, 5}},
      {"TET4", {0, 1, 2, 3}},
      {"HEX20", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 16, 17, 18, 19, 12, 13, 14, 15}},
      {"WEDGE15", {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 13, 14, 9, 10, 11}},
      {"TET10", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
      {"TRI3", {0, 1, 2}},
      {"TRI6", {0, 1, 2, 3, 4, 5}},
      {"QUAD4", {0, 1, 2, 3}},
      {"QUAD8", {0, 1, 2, 3, 4, 5, 6, 7}},
      {"LINE2", {0, 1}},
      {"LINE3", {0, 2, 1}},
  }};
  return code >= 1 && code <= static_cast<int>(types.size()) ? &types[static_cast<std::size_t>(code) - 1] : nullptr;
}

bool startsWith(std::string_view line, std::string_view key) { return line.substr(0, key.size()) == key; }

}  // namespace

std::string elementTypeName(int code) {
  const ElementType* const type = elementType(code);
  return type != nullptr ? type->name : fmt::format("TYPE{}", code);
}

FrdReader::FrdReader(const std::string& path) : lines_(path) {
  std::string_view line;
  if (!lines_.next(line)) lines_.fail("the file is empty");
  if (!startsWith(line, "    1C")) lines_.fail("is not a result file: it does not start with the record 1C");
  while (lines_.next(line)) {
    if (!startsWith(line, "    1U") && !startsWith(line, "    1C")) {
      pending_ = line;
      hasPending_ = true;
      return;
    }
    const std::string_view text = trimmed(columns(line, 7, 66));
    if (startsWith(text, "PGM")) {
      header_.program = trimmed(text.substr(3));
    } else if (startsWith(text, "VERSION")) {
      header_.program += " " + std::string(trimmed(text.substr(7)));
    } else if (lines_.lineNumber() == 2) {
      header_.title = text;
    }
  }
}

std::string_view FrdReader::require() {
  std::string_view line;
  if (!lines_.next(line)) throw CutOff{};
  return line;
}

int FrdReader::integerAt(std::string_view line, std::size_t column, std::size_t width, const char* what) const {
  const std::string_view text = columns(line, column, width);
  const std::optional<int> value = integerFrom(text);
  if (!value) lines_.fail(fmt::format("{} \"{}\" is not a whole number", what, text));
  return *value;
}

// The number of rows that a block header announces; blank in the files of flow networks.
std::size_t FrdReader::countAt(std::string_view line) const {
  if (trimmed(columns(line, 25, 12)).empty()) return 0;
  const int count = integerAt(line, 25, 12, "the count");
  if (count < 0) lines_.fail("the count is negative");
  return static_cast<std::size_t>(count);
}

void FrdReader::requireAscii(std::string_view line, char ascii) const {
  const std::string_view format = trimmed(line.size() > 72 ? line.substr(72) : std::string_view());
  if (!format.empty() && format.back() != ascii) {
    lines_.fail(
        "the block is binary; only ASCII result files can be imported (ask the solver for *NODE FILE and *EL FILE)");
  }
}

std::optional<FrdBlock> FrdReader::next() {
  try {
    for (;;) {
      std::string line;
      if (hasPending_) {
        line = std::move(pending_);
        hasPending_ = false;
      } else {
        line = require();
      }
      if (startsWith(line, " 9999")) return std::nullopt;
      if (startsWith(line, "    2C")) return readNodes(line);
      if (startsWith(line, "    3C")) return readElements(line);
      if (startsWith(line, "  100C")) return readResult(line);
      if (startsWith(line, "    1PSTEP")) {
        increment_ = integerAt(line, 37, 12, "the increment");
        step_ = integerAt(line, 49, 12, "the step");
      } else if (!startsWith(line, "    1")) {
        lines_.fail("a block was expected here");
      }
    }
  } catch (const CutOff&) {
    cutOff_ = true;
    return std::nullopt;
  }
}

FrdNodes FrdReader::readNodes(std::string_view header) {
  requireAscii(header, '1');
  FrdNodes nodes;
  const std::size_t announced = std::min(countAt(header), kLargestReserve);
  nodes.labels.reserve(announced);
  nodes.coordinates.reserve(3 * announced);
  for (;;) {
    const std::string_view line = require();
    if (startsWith(line, " -3")) return nodes;
    if (!startsWith(line, " -1")) lines_.fail("a node was expected here");
    nodes.labels.push_back(integerAt(line, 4, 10, "the node"));
    for (std::size_t i = 0; i < 3; ++i) {
      const std::string_view text = columns(line, kFirstNumberColumn + i * kNumberWidth, kNumberWidth);
      const std::optional<double> value = numberFrom(text);
      if (!value) lines_.fail(fmt::format("the coordinate \"{}\" is not a number", text));
      nodes.coordinates.push_back(*value);
    }
  }
}

FrdElements FrdReader::readElements(std::string_view header) {
  requireAscii(header, '1');
  FrdElements elements;
  std::map<int, std::size_t> groupOfCode;
  std::vector<int> nodes;
  for (std::string_view line = require(); !startsWith(line, " -3"); line = require()) {
    if (!startsWith(line, " -1")) lines_.fail("an element was expected here");
    const int label = integerAt(line, 4, 10, "the element");
    const int code = integerAt(line, 14, 5, "the type code");
    const ElementType* const type = elementType(code);
    if (type == nullptr) lines_.fail(fmt::format("the element type code {} is not known", code));
    nodes.clear();
    while (nodes.size() < type->order.size()) {
      line = require();
      if (!startsWith(line, " -2")) lines_.fail("the nodes of an element were expected here");
      const std::size_t onLine = std::min(type->order.size() - nodes.size(), kNodesPerLine);
      for (std::size_t i = 0; i < onLine; ++i) nodes.push_back(integerAt(line, 4 + 10 * i, 10, "the node"));
    }
    const auto [known, isNew] = groupOfCode.emplace(code, elements.groups.size());
    if (isNew) elements.groups.push_back({code, static_cast<int>(type->order.size()), {}, {}});
    FrdElementGroup& group = elements.groups[known->second];
    group.labels.push_back(label);
    for (const int place : type->order) group.connectivity.push_back(nodes[static_cast<std::size_t>(place)]);
  }
  return elements;
}

void FrdReader::readComponents(FrdResult& result, int count) {
  for (int i = 0; i < count; ++i) {
    const std::string_view line = require();
    if (!startsWith(line, " -5")) lines_.fail("a component was expected here");
    // A component that is computed from the others is announced, but has no numbers.
    const bool isComputed = integerFrom(columns(line, 34, 5)).value_or(0) == 1;
    if (isComputed) continue;
    result.components.push_back(
        {std::string(trimmed(columns(line, 6, 8))), integerFrom(columns(line, 19, 5)).value_or(1)});
  }
  if (result.components.empty()) lines_.fail("the field has no components");
}

void FrdReader::readNumbers(std::string_view line, std::size_t count, std::vector<float>& out) const {
  for (std::size_t i = 0; i < count; ++i) {
    const std::string_view text = columns(line, kFirstNumberColumn + i * kNumberWidth, kNumberWidth);
    // The usual number first, without detours; whatever is special about the others is found out slowly.
    const char* begin = text.data();
    const char* const end = begin + text.size();
    while (begin != end && *begin == ' ') ++begin;
    float value = 0.0F;
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error != std::errc() || stop != end) {
      const std::optional<double> number = numberFrom(text);
      if (!number) lines_.fail(fmt::format("\"{}\" is not a number", text));
      value = static_cast<float>(*number);
    }
    out.push_back(value);
  }
}

void FrdReader::readRows(FrdResult& result, std::size_t rows) {
  const std::size_t width = result.components.size();
  result.labels.reserve(std::min(rows, kLargestReserve));
  result.values.reserve(std::min(rows, kLargestReserve) * width);
  for (std::string_view line = require(); !startsWith(line, " -3"); line = require()) {
    if (!startsWith(line, " -1")) lines_.fail("a row of results was expected here");
    result.labels.push_back(integerAt(line, 4, 10, "the node"));
    readNumbers(line, std::min(width, kNumbersPerLine), result.values);
    for (std::size_t done = kNumbersPerLine; done < width; done += kNumbersPerLine) {
      line = require();
      if (!startsWith(line, " -2")) lines_.fail("the continuation of a row was expected here");
      readNumbers(line, std::min(width - done, kNumbersPerLine), result.values);
    }
  }
}

FrdResult FrdReader::readResult(std::string_view header) {
  FrdResult result;
  result.line = lines_.lineNumber();
  result.step = step_;
  result.increment = increment_;
  const std::optional<double> value = numberFrom(columns(header, 13, 12));
  if (!value) lines_.fail(fmt::format("the value \"{}\" is not a number", columns(header, 13, 12)));
  result.value = *value;
  result.kind = static_cast<AnalysisKind>(integerAt(header, 58, 1, "the analysis kind"));
  result.frameCounter = integerAt(header, 59, 5, "the frame counter");
  const std::size_t rows = countAt(header);
  requireAscii(header, '1');
  const std::string_view line = require();
  if (!startsWith(line, " -4")) lines_.fail("a field name was expected here");
  result.name = trimmed(columns(line, 6, 8));
  readComponents(result, integerAt(line, 14, 5, "the number of components"));
  readRows(result, rows);
  return result;
}

}  // namespace importers::calculix
