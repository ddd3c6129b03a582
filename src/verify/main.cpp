// `kolvex verify`: reads the arguments, checks each file, says what came of it.

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>

#include "process/prepare_process.h"
#include "verify/verify_confined.h"
#include "verify/verify_options.h"

namespace {

constexpr int kSound = 0;
constexpr int kDamaged = 1;
constexpr int kWithoutChecksums = 3;

// Findings that nobody hears still count in the status.
void complain(const std::string& text) { std::fputs((text + '\n').c_str(), stderr); }

int report(const verify::Verdict& verdict, bool isQuiet) {
  for (const std::string& finding : verdict.findings) complain(finding);
  if (!verdict.findings.empty()) {
    if (!isQuiet) fmt::print("{}: damaged\n", verdict.path);
    return kDamaged;
  }
  if (!verdict.hasChecksums) {
    complain(verdict.path + ": has no checksums: what its numbers were cannot be told");
    return kWithoutChecksums;
  }
  if (!isQuiet) fmt::print("{}: sound\n", verdict.path);
  return kSound;
}

// The worst of two states of files.
int worse(int one, int other) {
  if (one == kDamaged || other == kDamaged) return kDamaged;
  return one == kSound ? other : one;
}

}  // namespace

int main(int argc, char** argv) {
  prepareProcess();
  try {
    const verify::VerifyOptions options = verify::parseVerifyOptions({argv + 1, argv + argc});
    if (options.isDone) {
      std::fputs(options.message.c_str(), options.status == 0 ? stdout : stderr);
      return options.status;
    }
    int status = kSound;
    for (const std::string& file : options.files)
      status = worse(status, report(verify::verifyConfined(file), options.isQuiet));
    if (std::fflush(stdout) != 0) throw std::system_error(errno, std::generic_category(), "standard output");
    return status;
  } catch (const std::exception& error) {
    complain(error.what());
    return kDamaged;
  }
}
