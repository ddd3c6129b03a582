#include "verify/verify_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace verify {

namespace {

constexpr int kUsageError = 2;

constexpr const char* kStatuses =
    "Exit status, of several files that of the worst:\n"
    "  0  all files are sound\n"
    "  3  a file has no checksums; nothing else is wrong with it\n"
    "  4  a file has layout 1 and can be read; it has no checksums\n"
    "  5  a file is not there or cannot be opened\n"
    "  1  a file is damaged, takes more than the limits to read, or is no database\n"
    "  2  wrong usage";

}  // namespace

VerifyOptions parseVerifyOptions(std::vector<std::string> arguments) {
  VerifyOptions options;
  CLI::App app("Checks output databases for damage and names what is damaged.", "kolvex verify");
  app.set_version_flag("--version", std::string("kolvex verify ") + KOLVEX_VERSION);
  app.add_option("file", options.files, "The databases")->required()->type_name("FILE");
  app.footer(kStatuses);
  app.add_flag("-q,--quiet", options.isQuiet, "Say only what is wrong");
  try {
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream err;
    options.isDone = true;
    options.status = app.exit(error, out, err) == 0 ? 0 : kUsageError;
    options.message = options.status == 0 ? out.str() : err.str();
  }
  return options;
}

}  // namespace verify
