// Characters that divide records and lines, and that terminals obey. Names must not have them, and messages show them
// as text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace base {

// How many bytes at the start of `text` are one character of UTF-8 (RFC 3629); 0 when they are none.
std::size_t utf8Length(std::string_view text);

// Whether there is a control character (U+0000 to U+001F, U+007F to U+009F) in UTF-8, or a byte of 0x80 to 0x9F that
// belongs to no character: a terminal that knows Latin-1 alone obeys those.
bool hasControlCharacter(std::string_view text);

// The text with `\x` and two hexadecimal digits for each byte of such a character. A text that is escaped already stays
// as it is.
std::string escaped(std::string_view text);

}  // namespace base
