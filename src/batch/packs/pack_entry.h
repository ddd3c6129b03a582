// One entry of a pack, what one input has left: a head, three texts, a line feed.
//
//     result ID LENGTH SUM LENGTH SUM LENGTH SUM SUM<LF>
//
// Lengths in bytes (decimal) and CRC32C (eight hexadecimal digits) are those of the status record, of params.txt and of
// the log, which follow in this order; the last sum is that of the line before it. So an entry can be passed without
// being read, and one that is cut off anywhere is recognised.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "batch/state/params_sum.h"

namespace batch {

enum PackPart : std::size_t { kStatusPart, kParamsPart, kLogPart, kPackParts };

using PackTexts = std::array<std::string, kPackParts>;

struct PackHead {
  std::string id;                             // of the input: no blank, no line feed, at most 110 bytes
  std::array<ParamsSum, kPackParts> parts{};  // of the texts
  std::uint64_t length = 0;                   // bytes of the head itself

  // Bytes from the beginning of the entry to a part, and to the next entry.
  std::uint64_t beginOf(PackPart part) const;
  std::uint64_t entryLength() const { return beginOf(kPackParts) + 1; }
};

// No head is longer.
inline constexpr std::size_t kLongestHead = 512;

// The whole entry.
std::string entryText(const std::string& id, const PackTexts& texts);

// The head that `text` begins with; nothing if it does not begin with a whole one.
std::optional<PackHead> headFrom(std::string_view text);

}  // namespace batch
