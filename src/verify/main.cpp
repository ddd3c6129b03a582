// `kolvex verify`: reads the arguments, checks each file, says what came of it.

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>

#include "verify/verify_file.h"
#include "verify/verify_options.h"

namespace {

constexpr int kSound = 0;
constexpr int kDamaged = 1;
constexpr int kWithoutChecksums = 3;

int report(const verify::Verdict& verdict, bool isQuiet) {
  for (const std::string& finding : verdict.findings) fmt::print(stderr, "{}\n", finding);
  if (!verdict.findings.empty()) {
    if (!isQuiet) fmt::print("{}: damaged\n", verdict.path);
    return kDamaged;
  }
  if (!verdict.hasChecksums) {
    fmt::print(stderr, "{}: has no checksums: what its numbers were cannot be told\n", verdict.path);
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
  try {
    const verify::VerifyOptions options = verify::parseVerifyOptions({argv + 1, argv + argc});
    if (options.isDone) {
      fmt::print(options.status == 0 ? stdout : stderr, "{}", options.message);
      return options.status;
    }
    int status = kSound;
    for (const std::string& file : options.files)
      status = worse(status, report(verify::verifyFile(file), options.isQuiet));
    if (std::fflush(stdout) != 0) throw std::system_error(errno, std::generic_category(), "standard output");
    return status;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return kDamaged;
  }
}
