#include "importers/calculix/frd/frd_binary.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "importers/calculix/frd/frd_elements.h"

namespace importers::calculix {

static_assert(std::endian::native == std::endian::little, "binary result files are read as they lie in memory");

namespace {

// Calls `take(records, first, n)` for pieces of `count` records of `size` bytes: n of them from the first-th on.
template <class Take>
void readRecords(FrdLines& lines, std::size_t count, std::size_t size, Take&& take) {
  lines.requireRecords(count, size);
  for (std::size_t first = 0; first < count;) {
    const std::string_view piece = lines.reader().ahead(size);
    const std::size_t n = std::min(piece.size() / size, count - first);
    if (n == 0) throw FrdLines::CutOff{};
    take(piece.data(), first, n);
    lines.reader().skipBytes(n * size, 0);
    first += n;
  }
}

// Whether the rows that a result announces have been left out.
bool hasNoRows(FrdLines& lines) { return isBlockStart(lines.reader().peekAt(0, kKeyLength)); }

std::size_t recordSize(const FrdResult& result) {
  const std::size_t number = result.format == RowFormat::doubles ? sizeof(double) : sizeof(float);
  return sizeof(std::int32_t) + result.components.size() * number;
}

template <class Number>
void unpackRow(const char* record, std::size_t width, float* row) {
  for (std::size_t i = 0; i < width; ++i) {
    Number number = 0;
    std::memcpy(&number, record + i * sizeof(Number), sizeof(Number));
    row[i] = static_cast<float>(number);
  }
}

// The copy of a row of a width that is known beforehand is a few instructions, any other one is a call.
template <class Number, std::size_t kWidth>
void unpackRows(const char* records, std::size_t n, int* labels, float* rows) {
  for (std::size_t i = 0; i < n; ++i) {
    std::memcpy(labels + i, records, sizeof(std::int32_t));
    unpackRow<Number>(records + sizeof(std::int32_t), kWidth, rows + i * kWidth);
    records += sizeof(std::int32_t) + kWidth * sizeof(Number);
  }
}

template <class Number>
void unpackRows(const char* records, std::size_t n, std::size_t width, int* labels, float* rows) {
  switch (width) {
    case 1:
      return unpackRows<Number, 1>(records, n, labels, rows);
    case 3:
      return unpackRows<Number, 3>(records, n, labels, rows);
    case 6:
      return unpackRows<Number, 6>(records, n, labels, rows);
    default:
      for (std::size_t i = 0; i < n; ++i) {
        std::memcpy(labels + i, records, sizeof(std::int32_t));
        unpackRow<Number>(records + sizeof(std::int32_t), width, rows + i * width);
        records += sizeof(std::int32_t) + width * sizeof(Number);
      }
  }
}

template <class Number>
void readRowsOf(FrdLines& lines, std::size_t count, FrdResult& result) {
  const std::size_t width = result.components.size();
  result.labels.resize(count);
  result.values.resize(count * width);
  readRecords(lines, count, recordSize(result), [&](const char* records, std::size_t first, std::size_t n) {
    unpackRows<Number>(records, n, width, result.labels.data() + first, result.values.data() + first * width);
  });
}

}  // namespace

void readBinaryNodes(FrdLines& lines, std::size_t count, FrdNodes& nodes) {
  constexpr std::size_t coordinates = 3 * sizeof(double);
  constexpr std::size_t size = sizeof(std::int32_t) + coordinates;
  lines.requireRecords(count, size);
  nodes.labels.resize(count);
  nodes.coordinates.resize(3 * count);
  readRecords(lines, count, size, [&](const char* records, std::size_t first, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      const char* const record = records + i * size;
      std::memcpy(&nodes.labels[first + i], record, sizeof(std::int32_t));
      std::memcpy(&nodes.coordinates[3 * (first + i)], record + sizeof(std::int32_t), coordinates);
    }
  });
}

void readBinaryElements(FrdLines& lines, std::size_t count, FrdElements& elements) {
  ElementGatherer gatherer(lines, elements);
  std::vector<int> nodes;
  for (std::size_t i = 0; i < count || !isBlockStart(lines.reader().peekAt(0, kKeyLength)); ++i) {
    // After the last element of a truncated file it is unknown whether there were more.
    if (i >= count && lines.reader().bytesLeft() < kKeyLength) return;
    std::array<std::int32_t, 4> head{};
    lines.requireBytes(head.data(), sizeof(head));
    const auto [label, code, group, material] = head;
    nodes.resize(gatherer.nodesOf(code));
    lines.requireBytes(nodes.data(), nodes.size() * sizeof(std::int32_t));
    gatherer.add(label, code, nodes);
  }
}

void readBinaryRows(FrdLines& lines, std::size_t count, FrdResult& result) {
  if (hasNoRows(lines)) return;
  lines.requireRecords(count, recordSize(result));
  result.rows = count;
  if (result.format == RowFormat::doubles) {
    readRowsOf<double>(lines, count, result);
  } else {
    readRowsOf<float>(lines, count, result);
  }
}

void skipBinaryRows(FrdLines& lines, std::size_t count, FrdResult& result) {
  if (hasNoRows(lines)) return;
  const std::size_t size = recordSize(result);
  lines.requireRecords(count, size);
  lines.reader().skipBytes(count * size, 0);
  result.rows = count;
}

}  // namespace importers::calculix
