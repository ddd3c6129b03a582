#include "base/diagnostic.h"

#include <fmt/core.h>

#include "base/control_characters.h"

namespace base {

namespace {

const char* wordOf(Severity severity) {
  switch (severity) {
    case Severity::note:
      return "note: ";
    case Severity::warning:
      return "warning: ";
    default:
      return "error: ";
  }
}

}  // namespace

std::string textOf(const Place& place) {
  std::string text = escaped(place.file);
  if (place.line > 0) text += fmt::format(":{}", place.line);
  if (!place.object.empty()) text += fmt::format(": {}", escaped(place.object));
  return text;
}

std::string textOf(const Place& place, const std::string& reason) {
  std::string text = textOf(place);
  if (!text.empty()) text += ": ";
  text += escaped(reason);
  if (place.byte) text += fmt::format(" (before byte {})", *place.byte);
  return text;
}

std::string textOf(const Diagnostic& diagnostic) {
  return textOf(diagnostic.place, wordOf(diagnostic.severity) + diagnostic.reason);
}

}  // namespace base
