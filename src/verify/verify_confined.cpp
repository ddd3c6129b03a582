#include "verify/verify_confined.h"

#include <fmt/format.h>

#include <string_view>

#include "base/limited_child.h"
#include "odbstore/preflight.h"
#include "odbstore/store_error.h"

namespace verify {

namespace {

// Below what a child can answer.
constexpr std::size_t kMostText = 60000;

// A letter for each state, in their order.
constexpr std::string_view kLetters = "swond";

// The verdict as one string: the letter of its state, then the findings, each with a NUL behind it.
std::string packed(const Verdict& verdict) {
  std::string text(1, kLetters[static_cast<std::size_t>(verdict.state)]);
  std::size_t left = verdict.findings.size();
  for (const std::string& finding : verdict.findings) {
    if (text.size() + finding.size() > kMostText) break;
    text += finding + '\0';
    --left;
  }
  if (left > 0) text += fmt::format("{}: findings that are not shown: {}", verdict.path, left) + '\0';
  return text;
}

void unpack(std::string_view text, Verdict& verdict) {
  const std::size_t state = text.empty() ? std::string_view::npos : kLetters.find(text.front());
  // A child that went astray may have sent anything.
  if (state == std::string_view::npos) throw odbstore::StoreError(verdict.path, "", "reading it came to no verdict");
  verdict.state = static_cast<State>(state);
  text.remove_prefix(1);
  for (std::size_t end = text.find('\0'); end != std::string_view::npos; end = text.find('\0')) {
    verdict.findings.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
}

}  // namespace

Verdict verifyConfined(const std::string& path) {
  Verdict verdict{path, State::sound, {}};
  const auto fail = [&](State state, const std::exception& error) {
    verdict.state = state;
    verdict.findings.emplace_back(error.what());
  };
  try {
    const base::ChildLimits limits = base::limitsFor(odbstore::checkBeforeOpening(path).bytes);
    unpack(base::runLimited(path, limits, [&] { return packed(verifyFile(path)); }), verdict);
  } catch (const base::NoFileError& error) {
    fail(State::noFile, error);
  } catch (const std::exception& error) {
    fail(State::damaged, error);
  }
  return verdict;
}

}  // namespace verify
