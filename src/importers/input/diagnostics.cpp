#include "importers/input/diagnostics.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "base/control_characters.h"

namespace importers {

namespace {

constexpr std::size_t kMostListed = 20;

}  // namespace

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  const std::size_t shown = std::min(names.size(), kMostListed);
  for (std::size_t i = 0; i < shown; ++i) text += (i > 0 ? ", " : "") + names[i];
  if (shown < names.size()) text += " and " + std::to_string(names.size() - shown) + " more";
  return text;
}

void warnOfControlCharacters(const std::string& name, const SourcePlace& place, const WarningSink& warn) {
  if (!base::hasControlCharacter(name)) return;
  warn(base::warning(place, "the name \"" + name + "\" has control characters, which become blanks"));
}

WarningSink onceOnly(const WarningSink& warn) {
  const auto said = std::make_shared<std::set<std::string>>();
  return [said, &warn](const base::Diagnostic& diagnostic) {
    if (said->insert(base::textOf(diagnostic)).second) warn(diagnostic);
  };
}

ImportError::ImportError(SourcePlace place, std::string reason)
    : std::runtime_error(base::textOf(base::Diagnostic{base::Severity::error, place, reason})),
      place_(std::move(place)),
      reason_(std::move(reason)) {}

ImportError::ImportError(std::string file, std::int64_t line, std::string reason)
    : ImportError(SourcePlace{std::move(file), line}, std::move(reason)) {}

}  // namespace importers
