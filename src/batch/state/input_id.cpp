#include "batch/state/input_id.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>

namespace batch {

namespace {

constexpr std::size_t kMostOfName = 48;

// FNV-1a with 64 bits (Fowler, Noll, Vo), and the mixing at the end of MurmurHash3, as the last bytes of a path differ
// most and are mixed least.
std::uint64_t sumOf(const std::string& text) {
  std::uint64_t sum = 0xcbf29ce484222325U;
  for (const char c : text) sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  sum = (sum ^ (sum >> 33U)) * 0xff51afd7ed558ccdU;
  sum = (sum ^ (sum >> 33U)) * 0xc4ceb9fe1a85ec53U;
  return sum ^ (sum >> 33U);
}

// 60 bits, five for each character.
std::string charactersOf(std::uint64_t sum) {
  constexpr const char* kDigits = "0123456789abcdefghjkmnpqrstvwxyz";
  std::string text;
  for (int i = 0; i < 12; ++i, sum >>= 5U) text += kDigits[sum & 31U];
  return text;
}

// Neither hidden nor like an option.
std::string clean(std::string name) {
  name.erase(0, std::min(name.find_first_not_of(".-"), name.size()));
  name.resize(std::min(name.size(), kMostOfName));
  for (char& c : name) {
    const bool isPlain = std::isalnum(static_cast<unsigned char>(c)) != 0 && static_cast<unsigned char>(c) < 128;
    if (!isPlain && c != '.' && c != '-') c = '_';
  }
  return name;
}

}  // namespace

std::string inputId(const std::string& absolutePath) {
  const std::filesystem::path path(absolutePath);
  const std::string folder = clean(path.parent_path().filename().string());
  std::string name = clean(path.stem().string());
  if (name.empty()) name = "input";
  return (folder.empty() ? name : folder + "." + name) + "-" + charactersOf(sumOf(absolutePath));
}

}  // namespace batch
