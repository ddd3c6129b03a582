#include "importers/calculix/frd_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "importers/calculix/element_codes.h"
#include "importers/diagnostics.h"
#include "importers/text_fields.h"

namespace importers::calculix {

namespace {

constexpr std::size_t kNumberWidth = 12;
constexpr std::size_t kNumbersPerLine = 6;
constexpr std::size_t kFirstNumberColumn = 14;
constexpr std::size_t kNodesPerLine = 10;
// Counts in headers are trusted no further than this before the rows themselves have been seen.
constexpr std::size_t kLargestReserve = 1U << 20;

bool startsWith(std::string_view line, std::string_view key) { return line.substr(0, key.size()) == key; }

// The keys of heading records that are no title.
bool isRunRecord(std::string_view text) {
  constexpr std::array keys = {"USER", "DATE", "TIME", "HOST", "PGM", "VERSION", "COMPILETIME", "DIR", "DBN", "MAT"};
  return std::any_of(keys.begin(), keys.end(), [&](std::string_view key) { return startsWith(text, key); });
}

}  // namespace

FrdReader::FrdReader(const std::string& path) : lines_(path) {
  std::string_view line;
  if (!lines_.next(line)) lines_.fail("the file is empty");
  if (!startsWith(line, "    1C")) lines_.fail("this is no result file of CalculiX: those start with \"    1C\"");
  while (lines_.next(line)) {
    if (!startsWith(line, "    1U") && !startsWith(line, "    1C")) {
      pending_ = line;
      hasPending_ = true;
      return;
    }
    takeHeaderLine(line);
  }
}

void FrdReader::takeHeaderLine(std::string_view line) {
  const std::string_view text = trimmed(columns(line, 7, 66));
  if (startsWith(text, "PGM")) {
    header_.program = storableText(trimmed(text.substr(3)));
  } else if (startsWith(text, "VERSION")) {
    header_.program += " " + storableText(trimmed(text.substr(7)));
  } else if (lines_.lineNumber() == 2 && !isRunRecord(text)) {
    header_.title = storableText(text);
  }
}

std::string_view FrdReader::require() {
  std::string_view line;
  if (!lines_.next(line)) throw CutOff{};
  return line;
}

std::string_view FrdReader::requireKey(std::string_view key, const char* what) {
  const std::string_view line = require();
  if (!startsWith(line, key)) lines_.fail(fmt::format("{} was expected here (\"{}\")", what, key));
  return line;
}

int FrdReader::integerAt(std::string_view line, std::size_t column, std::size_t width, const char* what) const {
  const std::string_view text = columns(line, column, width);
  const std::optional<int> value = integerFrom(text);
  if (!value) lines_.fail(fmt::format("{} \"{}\" is not a whole number", what, storableText(text)));
  return *value;
}

// The number of rows that a block header announces; flow networks leave it blank.
std::optional<std::size_t> FrdReader::countAt(std::string_view line) const {
  if (trimmed(columns(line, 25, 12)).empty()) return std::nullopt;
  const int count = integerAt(line, 25, 12, "the count");
  if (count < 0) lines_.fail("the count is negative");
  return static_cast<std::size_t>(count);
}

void FrdReader::requireCount(std::optional<std::size_t> announced, std::size_t found, std::int64_t line,
                             const char* what) const {
  if (!announced || *announced == found) return;
  throw ImportError(lines_.path(), line,
                    fmt::format("{} {} are announced here, but there are {}", *announced, what, found));
}

// The last column of a block's header tells how its rows are written.
void FrdReader::requireAscii(std::string_view line) const {
  const std::string_view format = trimmed(columns(line, 73, 8));
  if (format == "1") return;
  if (format == "2" || format == "3") {
    lines_.fail("the block is binary, which cannot be imported yet; ask the solver for *NODE FILE and *EL FILE");
  }
  lines_.fail(fmt::format("the format \"{}\" of the block is not known", storableText(format)));
}

std::optional<FrdBlock> FrdReader::next() {
  try {
    return nextBlock();
  } catch (const CutOff&) {
    cutOff_ = true;
  } catch (const ImportError&) {
    // What is wrong with a line without an end is that the rest of it is missing.
    if (lines_.isTerminated()) throw;
    cutOff_ = true;
  }
  return std::nullopt;
}

std::optional<FrdBlock> FrdReader::nextBlock() {
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
    if (!startsWith(line, "    1")) lines_.fail("no block of a result file starts like this");
    takeFrameLine(line);
  }
}

void FrdReader::takeFrameLine(std::string_view line) {
  if (startsWith(line, "    1PSTEP")) {
    increment_ = integerAt(line, 37, 12, "the increment");
    step_ = integerAt(line, 49, 12, "the step");
    nodalDiameter_.reset();
    hasFrameLine_ = true;
  } else if (startsWith(line, "    1PHID")) {
    const int diameter = integerAt(line, 25, 12, "the nodal diameter");
    // A model that is no sector of a cycle has -1 here.
    if (diameter >= 0) nodalDiameter_ = diameter;
  }
}

FrdNodes FrdReader::readNodes(std::string_view header) {
  requireAscii(header);
  FrdNodes nodes;
  nodes.line = lines_.lineNumber();
  const std::optional<std::size_t> announced = countAt(header);
  nodes.labels.reserve(std::min(announced.value_or(0), kLargestReserve));
  nodes.coordinates.reserve(3 * nodes.labels.capacity());
  for (std::string_view line = require(); !startsWith(line, " -3"); line = require()) {
    if (!startsWith(line, " -1")) lines_.fail("a node was expected here (\" -1\")");
    nodes.labels.push_back(integerAt(line, 4, 10, "the node"));
    for (std::size_t i = 0; i < 3; ++i) {
      const std::string_view text = columns(line, kFirstNumberColumn + i * kNumberWidth, kNumberWidth);
      const std::optional<double> value = numberFrom(text);
      if (!value) lines_.fail(fmt::format("the coordinate \"{}\" is not a number", storableText(text)));
      nodes.coordinates.push_back(*value);
    }
  }
  requireCount(announced, nodes.labels.size(), nodes.line, "nodes");
  return nodes;
}

// The announced count is not held against the elements: layered shells are several, announced as one.
FrdElements FrdReader::readElements(std::string_view header) {
  requireAscii(header);
  FrdElements elements;
  elements.line = lines_.lineNumber();
  std::array<std::size_t, kElementCodes + 1> groupOfCode{};  // 0: none yet, else its place + 1
  std::vector<int> nodes;
  for (std::string_view line = require(); !startsWith(line, " -3"); line = require()) {
    if (!startsWith(line, " -1")) lines_.fail("an element was expected here (\" -1\")");
    const int label = integerAt(line, 4, 10, "the element");
    const int code = integerAt(line, 14, 5, "the type code");
    if (code < 1 || code > kElementCodes) lines_.fail(fmt::format("the element type code {} is not known", code));
    const std::span<const int> order = elementCode(code).order;
    nodes.clear();
    while (nodes.size() < order.size()) {
      line = requireKey(" -2", "the nodes of an element");
      const std::size_t onLine = std::min(order.size() - nodes.size(), kNodesPerLine);
      for (std::size_t i = 0; i < onLine; ++i) nodes.push_back(integerAt(line, 4 + 10 * i, 10, "the node"));
    }
    std::size_t& place = groupOfCode[static_cast<std::size_t>(code)];
    if (place == 0) {
      elements.groups.push_back({code, static_cast<int>(order.size()), {}, {}});
      place = elements.groups.size();
    }
    FrdElementGroup& group = elements.groups[place - 1];
    group.labels.push_back(label);
    for (const int from : order) group.connectivity.push_back(nodes[static_cast<std::size_t>(from)]);
  }
  return elements;
}

void FrdReader::readComponents(FrdResult& result, int count) {
  for (int i = 0; i < count; ++i) {
    const std::string_view line = requireKey(" -5", "a component");
    // A component that is computed from the others is announced, but has no numbers.
    const bool isComputed = integerFrom(columns(line, 34, 5)).value_or(0) == 1;
    if (isComputed) continue;
    result.components.push_back(
        {storableText(trimmed(columns(line, 6, 8))), integerFrom(columns(line, 19, 5)).value_or(1)});
  }
  if (result.components.empty()) lines_.fail(fmt::format("{} has no components", result.name));
}

void FrdReader::readNumbers(std::string_view line, std::size_t count, float* out) const {
  const std::size_t end = kFirstNumberColumn - 1 + count * kNumberWidth;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t column = kFirstNumberColumn + i * kNumberWidth;
    const bool isWhole = column - 1 + kNumberWidth <= line.size();
    if (isWhole && readScientific(line.data() + column - 1, out[i])) continue;
    const std::string_view text = columns(line, column, kNumberWidth);
    const std::optional<float> number = floatFrom(text);
    if (!number) lines_.fail(fmt::format("\"{}\" is not a number", storableText(text)));
    out[i] = *number;
  }
  if (line.size() > end && !trimmed(line.substr(end)).empty()) {
    lines_.fail("there are more numbers here than the field has components");
  }
}

void FrdReader::readRows(FrdResult& result) {
  const std::size_t width = result.components.size();
  for (std::string_view line = require(); !startsWith(line, " -3"); line = require()) {
    if (!startsWith(line, " -1")) lines_.fail("a row of results was expected here (\" -1\")");
    result.labels.push_back(integerAt(line, 4, 10, "the node"));
    result.values.resize(result.values.size() + width);
    float* row = result.values.data() + result.values.size() - width;
    readNumbers(line, std::min(width, kNumbersPerLine), row);
    for (std::size_t done = kNumbersPerLine; done < width; done += kNumbersPerLine) {
      line = requireKey(" -2", "the continuation of a row");
      readNumbers(line, std::min(width - done, kNumbersPerLine), row + done);
    }
  }
}

void FrdReader::readResultHeader(FrdResult& result, std::string_view header) const {
  result.line = lines_.lineNumber();
  const std::string_view value = columns(header, 13, 12);
  if (const std::optional<double> number = numberFrom(value)) {
    result.value = *number;
  } else {
    lines_.fail(fmt::format("the value \"{}\" is not a number", storableText(value)));
  }
  const std::string_view kind = trimmed(columns(header, 58, 1));
  result.kind =
      kind.empty() ? AnalysisKind::steady : static_cast<AnalysisKind>(integerAt(header, 58, 1, "the analysis kind"));
  result.frameCounter = integerAt(header, 59, 5, "the frame counter");
  result.step = step_;
  result.increment = hasFrameLine_ ? increment_ : result.frameCounter;
  result.nodalDiameter = nodalDiameter_;
  requireAscii(header);
}

FrdResult FrdReader::readResult(std::string_view header) {
  FrdResult result;
  readResultHeader(result, header);
  const std::optional<std::size_t> announced = countAt(header);
  const std::string_view line = requireKey(" -4", "a field name");
  result.name = storableText(trimmed(columns(line, 6, 8)));
  readComponents(result, integerAt(line, 14, 5, "the number of components"));
  result.labels.reserve(std::min(announced.value_or(0), kLargestReserve));
  result.values.reserve(result.labels.capacity() * result.components.size());
  readRows(result);
  // Flow analyses announce rows of fields that they have not computed, and write none.
  if (!result.labels.empty()) requireCount(announced, result.labels.size(), result.line, "rows");
  return result;
}

}  // namespace importers::calculix
