#include "importers/input/diagnostics.h"

#include <algorithm>
#include <memory>
#include <set>

namespace importers {

namespace {

constexpr std::size_t kMostListed = 20;

}  // namespace

std::string placeIn(const std::string& file, std::int64_t line) {
  return line > 0 ? file + ":" + std::to_string(line) : file;
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  const std::size_t shown = std::min(names.size(), kMostListed);
  for (std::size_t i = 0; i < shown; ++i) text += (i > 0 ? ", " : "") + names[i];
  if (shown < names.size()) text += " and " + std::to_string(names.size() - shown) + " more";
  return text;
}

WarningSink onceOnly(const WarningSink& warn) {
  const auto said = std::make_shared<std::set<std::string>>();
  return [said, &warn](const std::string& text) {
    if (said->insert(text).second) warn(text);
  };
}

ImportError::ImportError(const std::string& file, std::int64_t line, const std::string& reason)
    : std::runtime_error(placeIn(file, line) + ": error: " + reason), line_(line), reason_(reason) {}

}  // namespace importers
