#include "batch/packs/pack_entry.h"

#include <fmt/core.h>

#include <charconv>

namespace batch {

namespace {

constexpr std::string_view kFirstWord = "result";

std::string_view takeWord(std::string_view& text) {
  const std::size_t end = text.find(' ');
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return word;
}

template <class Number>
bool isNumber(std::string_view text, Number& to, int base) {
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), to, base);
  return failure == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::uint64_t PackHead::beginOf(PackPart part) const {
  std::uint64_t begin = length;
  for (std::size_t before = 0; before < part; ++before) begin += parts[before].length;
  return begin;
}

std::string entryText(const std::string& id, const PackTexts& texts) {
  std::string head = fmt::format("{} {}", kFirstWord, id);
  for (const std::string& text : texts) {
    const ParamsSum sum = sumOfText(text);
    head += fmt::format(" {} {:08x}", sum.length, sum.sum);
  }
  head += fmt::format(" {:08x}\n", sumOfText(head).sum);
  for (const std::string& text : texts) head += text;
  return head + "\n";
}

std::optional<PackHead> headFrom(std::string_view text) {
  // A length beyond this is of no file, and sums of such do not overflow.
  constexpr std::uint64_t kLongestPart = std::uint64_t{1} << 60U;
  const std::size_t lineEnd = text.substr(0, kLongestHead).find('\n');
  if (lineEnd == std::string_view::npos) return std::nullopt;
  std::string_view line = text.substr(0, lineEnd);
  const std::size_t lastBlank = line.rfind(' ');
  std::uint32_t sum = 0;
  if (lastBlank == std::string_view::npos || !isNumber(line.substr(lastBlank + 1), sum, 16)) return std::nullopt;
  line = line.substr(0, lastBlank);
  if (sumOfText(std::string(line)).sum != sum || takeWord(line) != kFirstWord) return std::nullopt;
  PackHead head;
  head.id = takeWord(line);
  head.length = lineEnd + 1;
  for (ParamsSum& part : head.parts) {
    if (!isNumber(takeWord(line), part.length, 10) || part.length > kLongestPart) return std::nullopt;
    if (!isNumber(takeWord(line), part.sum, 16)) return std::nullopt;
  }
  return line.empty() && !head.id.empty() ? std::optional(head) : std::nullopt;
}

}  // namespace batch
