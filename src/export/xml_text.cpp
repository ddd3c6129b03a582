#include "export/xml_text.h"

#include "base/control_characters.h"

namespace vtk_export {

std::string xmlText(std::string_view text) {
  std::string xml;
  while (!text.empty()) {
    const std::size_t length = base::utf8Length(text);
    const std::string_view character = text.substr(0, length == 0 ? 1 : length);
    text.remove_prefix(character.size());
    if (length == 0 || base::hasControlCharacter(character)) {
      xml += '?';
    } else if (character == "&") {
      xml += "&amp;";
    } else if (character == "<") {
      xml += "&lt;";
    } else if (character == ">") {
      xml += "&gt;";
    } else if (character == "\"") {
      xml += "&quot;";
    } else {
      xml += character;
    }
  }
  return xml;
}

}  // namespace vtk_export
