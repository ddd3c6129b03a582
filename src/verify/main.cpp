// `kolvex verify`: reads the arguments, checks each file, prints the result.

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "base/control_characters.h"
#include "base/diagnostic.h"
#include "tool/program.h"
#include "verify/verify_file.h"
#include "verify/verify_options.h"

namespace {

using verify::State;

int statusOf(State state) {
  switch (state) {
    case State::sound:
      return 0;
    case State::withoutChecksums:
      return 3;
    case State::oldLayout:
      return 4;
    case State::noFile:
      return 5;
    default:
      return 1;
  }
}

// Findings count in the status even if nobody can read them.
void complain(const std::string& text) { std::fputs((text + '\n').c_str(), stderr); }

void report(const verify::Verdict& verdict, bool isQuiet) {
  for (const base::Diagnostic& finding : verdict.findings) complain(base::textOf(finding.place, finding.reason));
  if (isQuiet) return;
  if (verdict.state == State::damaged) fmt::print("{}: damaged\n", base::escaped(verdict.path));
  if (verdict.state == State::sound) fmt::print("{}: sound\n", base::escaped(verdict.path));
}

int run(std::vector<std::string> arguments) {
  verify::VerifyOptions options;
  const tool::Outcome outcome = verify::verifyCommand(options).parse(std::move(arguments));
  if (outcome.isDone) return outcome.finish();
  State worst = State::sound;
  for (const std::string& file : options.files) {
    const verify::Verdict verdict = verify::verifyFile(file);
    report(verdict, options.isQuiet);
    worst = std::max(worst, verdict.state);
  }
  if (std::fflush(stdout) != 0) throw std::system_error(errno, std::generic_category(), "standard output");
  return statusOf(worst);
}

}  // namespace

int main(int argc, char** argv) { return tool::runProgram(argc, argv, run); }
