#include "verify/findings.h"

#include <fmt/core.h>

namespace verify {

namespace {

// Nobody reads more.
constexpr std::size_t kMostFindings = 1000;

}  // namespace

void Findings::add(const std::string& object, const std::string& reason) {
  verdict_.state = State::damaged;
  const std::string words = base::textOf(placeOf(object), reason);
  if (known_.size() >= kMostFindings) {
    more_ += known_.contains(words) ? 0 : 1;
    return;
  }
  if (known_.insert(words).second) verdict_.findings.push_back({base::Severity::error, placeOf(object), reason});
}

void Findings::close() {
  if (more_ == 0) return;
  verdict_.findings.push_back(base::note(placeOf(""), fmt::format("further findings, not shown: {}", more_)));
}

}  // namespace verify
