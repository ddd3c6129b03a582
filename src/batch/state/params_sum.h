// What params.txt holds, in two numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace batch {

struct ParamsSum {
  std::uint64_t length = 0;  // bytes
  std::uint32_t sum = 0;     // CRC32C

  friend bool operator==(const ParamsSum&, const ParamsSum&) = default;
};

// Reads the file, a piece in memory at a time. Nothing if it is not there, cannot be read or is not a regular file.
std::optional<ParamsSum> sumOfParams(const std::string& path);

// The same of a text.
ParamsSum sumOfText(const std::string& text);

}  // namespace batch
