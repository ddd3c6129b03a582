#include "importers/calculix/frd/frd_binary.h"

#include <fmt/format.h>

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

constexpr std::size_t kPiece = std::size_t{1} << 18;  // bytes read at once: they stay in the cache

// Calls `take(record, first, n)` for pieces of `count` records of `size` bytes: n of them from the first-th on.
template <class Take>
void readRecords(FrdLines& lines, std::size_t count, std::size_t size, Take&& take) {
  lines.requireRecords(count, size);
  const std::size_t perPiece = std::max<std::size_t>(kPiece / size, 1);
  std::vector<char> piece(std::min(count, perPiece) * size);
  for (std::size_t first = 0; first < count; first += perPiece) {
    const std::size_t n = std::min(perPiece, count - first);
    lines.requireBytes(piece.data(), n * size);
    take(piece.data(), first, n);
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
  if constexpr (std::is_same_v<Number, float>) {
    std::memcpy(row, record, width * sizeof(float));
  } else {
    for (std::size_t i = 0; i < width; ++i) {
      Number number = 0;
      std::memcpy(&number, record + i * sizeof(Number), sizeof(Number));
      row[i] = static_cast<float>(number);
    }
  }
}

template <class Number>
void readRowsOf(FrdLines& lines, std::size_t count, FrdResult& result) {
  const std::size_t width = result.components.size();
  const std::size_t size = recordSize(result);
  result.labels.resize(count);
  result.values.resize(count * width);
  readRecords(lines, count, size, [&](const char* records, std::size_t first, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      const char* const record = records + i * size;
      std::memcpy(&result.labels[first + i], record, sizeof(std::int32_t));
      unpackRow<Number>(record + sizeof(std::int32_t), width, result.values.data() + (first + i) * width);
    }
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
    // Behind the last element of a file that is cut off there is nothing to tell whether there would be more.
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
