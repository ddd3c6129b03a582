#include "verify/findings.h"

#include <fmt/format.h>

#include "base/control_characters.h"

namespace verify {

namespace {

// Nobody reads more.
constexpr std::size_t kMostFindings = 1000;

}  // namespace

void Findings::addText(const std::string& text) {
  verdict_.state = State::damaged;
  if (known_.size() >= kMostFindings) {
    more_ += known_.contains(text) ? 0 : 1;
    return;
  }
  if (known_.insert(text).second) verdict_.findings.push_back(text);
}

void Findings::close() {
  if (more_ > 0)
    verdict_.findings.push_back(
        fmt::format("{}: findings that are not shown: {}", base::escaped(verdict_.path), more_));
}

}  // namespace verify
