// Values of records in JSON (RFC 8259).
#pragma once

#include <string>
#include <string_view>

namespace tables {

// Numbers as they stand, tuples as arrays, "None" as null, everything else as a string: "inf", "nan" too, which JSON
// has no numbers for. Bytes that are not UTF-8 become U+FFFD.
std::string jsonOfValue(std::string_view value);

std::string jsonOfText(std::string_view text);

}  // namespace tables
