// Texts in XML.
#pragma once

#include <string>
#include <string_view>

namespace vtk_export {

// With the characters that mean something in XML as their entities, for attributes and content. What is not UTF-8, and
// control characters, which XML cannot have, are "?".
std::string xmlText(std::string_view text);

}  // namespace vtk_export
