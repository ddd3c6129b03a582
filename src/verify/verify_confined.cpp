#include "verify/verify_confined.h"

#include <fmt/format.h>

#include <string_view>

#include "base/limited_child.h"
#include "odbstore/preflight.h"

namespace verify {

namespace {

// Below what a child can answer.
constexpr std::size_t kMostText = 60000;

constexpr char kHasChecksums = 'C';
constexpr char kHasNone = '-';

// The verdict as one string: whether there are checksums, then the findings, each with a NUL behind it.
std::string packed(const Verdict& verdict) {
  std::string text(1, verdict.hasChecksums ? kHasChecksums : kHasNone);
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
  verdict.hasChecksums = text.starts_with(kHasChecksums);
  text.remove_prefix(1);
  for (std::size_t end = text.find('\0'); end != std::string_view::npos; end = text.find('\0')) {
    verdict.findings.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
}

}  // namespace

Verdict verifyConfined(const std::string& path) {
  Verdict verdict;
  verdict.path = path;
  try {
    const base::ChildLimits limits = base::limitsFor(odbstore::checkBeforeOpening(path).bytes);
    unpack(base::runLimited(path, limits, [&] { return packed(verifyFile(path)); }), verdict);
  } catch (const std::exception& error) {
    verdict.findings.emplace_back(error.what());
  }
  return verdict;
}

}  // namespace verify
