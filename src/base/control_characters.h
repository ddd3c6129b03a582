// Control characters: they separate records and lines, and terminals act on them. Names must not contain them, and
// messages show them escaped.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace base {

// The number of bytes of the UTF-8 character (RFC 3629) at the start of `text`; 0 if there is none.
std::size_t utf8Length(std::string_view text);

// Whether there is a control character (U+0000 to U+001F, U+007F to U+009F) in UTF-8, or a byte of 0x80 to 0x9F outside
// any character, which a Latin-1 terminal acts on.
bool hasControlCharacter(std::string_view text);

// The text with `\x` and two hexadecimal digits for each byte of such a character. Escaped text is unchanged.
std::string escaped(std::string_view text);

}  // namespace base
