#include "importers/calculix/frd/frd_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <vector>

#include "importers/calculix/frd/frd_elements.h"
#include "importers/input/fixed_columns.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

constexpr std::size_t kNumberWidth = 12;
constexpr std::size_t kNumbersPerLine = 6;
constexpr std::size_t kFirstNumberColumn = 14;
constexpr std::size_t kNodesPerLine = 10;
constexpr std::string_view kRow = " -1";
constexpr std::string_view kMore = " -2";

void readNumbers(const FrdLines& lines, std::string_view line, std::size_t count, float* out) {
  const std::size_t end = kFirstNumberColumn - 1 + count * kNumberWidth;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t column = kFirstNumberColumn + i * kNumberWidth;
    const bool isWhole = column - 1 + kNumberWidth <= line.size();
    if (isWhole && readScientific(line.data() + column - 1, out[i])) continue;
    const std::string_view text = columns(line, column, kNumberWidth);
    const std::optional<float> number = floatFrom(text);
    if (!number) lines.fail(fmt::format("\"{}\" is not a number", storableText(text)));
    out[i] = *number;
  }
  if (line.size() > end && !trimmed(line.substr(end)).empty()) {
    lines.fail("there are more numbers here than the field has components");
  }
}

// The bytes of a row of a result, and its lines.
struct RowSize {
  std::size_t lines;
  std::size_t bytes;
};

RowSize rowSize(std::size_t width) {
  const std::size_t lines = (width + kNumbersPerLine - 1) / kNumbersPerLine;
  return {lines, lines * kFirstNumberColumn + width * kNumberWidth};
}

// A row as nearly all are: its one line ends where the last column does, and all numbers are printed in the usual way.
// Reading only that takes a third of the time.
bool readUsualRow(const char* line, std::size_t width, int& label, float* row) {
  if (std::string_view(line, kRow.size()) != kRow || !readLabel(line + kRow.size(), label)) return false;
  const char* column = line + kFirstNumberColumn - 1;
  for (std::size_t i = 0; i < width; ++i, column += kNumberWidth) {
    if (!readScientific(column, row[i])) return false;
  }
  return *column == '\n';
}

// Rows from here on up to the first one that is not like that.
void takeUsualRows(LineReader& reader, std::size_t width, FrdResult& result) {
  if (width > kNumbersPerLine) return;
  const std::size_t bytes = rowSize(width).bytes;
  for (;;) {
    const std::string_view text = reader.ahead(bytes);
    const std::size_t most = text.size() / bytes;
    const std::size_t before = result.labels.size();
    result.labels.resize(before + most);
    result.values.resize((before + most) * width);
    std::size_t read = 0;
    while (read < most && readUsualRow(text.data() + read * bytes, width, result.labels[before + read],
                                       result.values.data() + (before + read) * width)) {
      ++read;
    }
    result.labels.resize(before + read);
    result.values.resize((before + read) * width);
    reader.skipBytes(read * bytes, static_cast<std::int64_t>(read));
    if (read < most || most == 0) return;
  }
}

}  // namespace

void readTextNodes(FrdLines& lines, std::optional<std::size_t> announced, FrdNodes& nodes) {
  nodes.labels.reserve(std::min(announced.value_or(0), kLargestReserve));
  nodes.coordinates.reserve(3 * nodes.labels.capacity());
  for (std::string_view line = lines.require(); !line.starts_with(kEndOfRows); line = lines.require()) {
    if (!line.starts_with(kRow)) lines.fail("expected a node here (\" -1\")");
    nodes.labels.push_back(lines.integerAt(line, 4, 10, "the node"));
    for (std::size_t i = 0; i < 3; ++i) {
      const std::string_view text = columns(line, kFirstNumberColumn + i * kNumberWidth, kNumberWidth);
      const std::optional<double> value = numberFrom(text);
      if (!value) lines.fail(fmt::format("the coordinate \"{}\" is not a number", storableText(text)));
      nodes.coordinates.push_back(*value);
    }
  }
  lines.requireCount(announced, nodes.labels.size(), nodes.line, "nodes");
}

void readTextElements(FrdLines& lines, FrdElements& elements) {
  ElementGatherer gatherer(lines, elements);
  std::vector<int> nodes;
  for (std::string_view line = lines.require(); !line.starts_with(kEndOfRows); line = lines.require()) {
    if (!line.starts_with(kRow)) lines.fail("expected an element here (\" -1\")");
    const int label = lines.integerAt(line, 4, 10, "the element");
    const int code = lines.integerAt(line, 14, 5, "the type code");
    const std::size_t count = gatherer.nodesOf(code);
    nodes.clear();
    while (nodes.size() < count) {
      line = lines.requireKey(kMore, "the nodes of an element");
      const std::size_t onLine = std::min(count - nodes.size(), kNodesPerLine);
      for (std::size_t i = 0; i < onLine; ++i) nodes.push_back(lines.integerAt(line, 4 + 10 * i, 10, "the node"));
    }
    gatherer.add(label, code, nodes);
  }
}

void readTextRows(FrdLines& lines, std::optional<std::size_t> announced, FrdResult& result) {
  const std::size_t width = result.components.size();
  result.labels.reserve(std::min(announced.value_or(0), kLargestReserve));
  result.values.reserve(result.labels.capacity() * width);
  for (;;) {
    takeUsualRows(lines.reader(), width, result);
    std::string_view line = lines.require();
    if (line.starts_with(kEndOfRows)) break;
    if (!line.starts_with(kRow)) lines.fail("expected a row of results here (\" -1\")");
    result.labels.push_back(lines.integerAt(line, 4, 10, "the node"));
    result.values.resize(result.values.size() + width);
    float* const row = result.values.data() + result.values.size() - width;
    readNumbers(lines, line, std::min(width, kNumbersPerLine), row);
    for (std::size_t done = kNumbersPerLine; done < width; done += kNumbersPerLine) {
      line = lines.requireKey(kMore, "the continuation of a row");
      readNumbers(lines, line, std::min(width - done, kNumbersPerLine), row + done);
    }
  }
  lines.endBlock();
  result.rows = result.labels.size();
  // Flow analyses announce rows of fields that they have not computed, and write none.
  if (result.rows > 0) lines.requireCount(announced, result.rows, result.line, "rows");
}

void skipTextRows(FrdLines& lines, std::optional<std::size_t> announced, FrdResult& result) {
  // All rows have the same length: if the end of the block follows right after the announced rows, the block ends
  // there.
  const RowSize row = rowSize(result.components.size());
  if (announced && *announced <= lines.reader().bytesLeft() / row.bytes) {
    const std::size_t bytes = *announced * row.bytes;
    if (lines.reader().peekAt(bytes, kEndOfRows.size()) == kEndOfRows) {
      lines.reader().skipBytes(bytes, static_cast<std::int64_t>(*announced * row.lines));
      result.rows = *announced;
    }
  }
  for (std::string_view line = lines.require(); !line.starts_with(kEndOfRows); line = lines.require()) {
    if (line.starts_with(kRow)) {
      ++result.rows;
    } else if (!line.starts_with(kMore)) {
      lines.fail("expected a row of results here (\" -1\")");
    }
  }
  lines.endBlock();
  if (result.rows > 0) lines.requireCount(announced, result.rows, result.line, "rows");
}

}  // namespace importers::calculix
