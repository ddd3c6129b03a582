#include "report_options.h"

#include <charconv>
#include <filesystem>

namespace report {

namespace {

// "15" or "7.5": megabytes.
std::size_t bytesFrom(const std::string& text) {
  double megabytes = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), megabytes, std::chars_format::fixed);
  if (error != std::errc() || end != text.data() + text.size() || !(megabytes >= 1 && megabytes <= 1000))
    throw tool::UsageError("\"" + text + "\" is not a number of megabytes from 1 to 1000");
  return static_cast<std::size_t>(megabytes * 1e6);
}

}  // namespace

tool::Command reportCommand(PageRequest& request) {
  tool::Command command("kolvex report", "show a database in one page for the browser");
  command.synopsis("DATABASE [options]")
      .describe(
          "Writes one HTML file that shows the model with its fields, the records of an extraction, histories and "
          "mass. The "
          "page holds all it needs: it is opened from the disk or sent by mail, and loads nothing from anywhere.")
      .describe(
          "What has no room is left out by its importance, and the page says so: it has the last frame of each step "
          "first, then displacements and equivalent stresses of the other frames, then the other fields, then "
          "components "
          "of tensors.")
      .exitStatus(0, "the page is written")
      .exitStatus(1, "a file cannot be read or written; no page is written")
      .exitStatus(2, "wrong usage")
      .example("kolvex report lug.odb")
      .example("kolvex report lug.odb --params params.txt -o lug.html")
      .example("kolvex import lug 2> import.log; kolvex report lug.odb --messages import.log")
      .seeAlso("kolvex-quarnish(1)")
      .seeAlso("kolvex-import(1)")
      .argument("DATABASE", request.database, "the database")
      .option("-o,--output", "PAGE", request.page, "the page to write (default: the database's name with .html, here)",
              tool::Completes::file)
      .option("--params", "FILE", request.params, "records of the database, as kolvex quarnish has written them",
              tool::Completes::file)
      .option("--config", "FILE", request.configuration,
              "the configuration of that extraction, for the places of engineering extremes", tool::Completes::file)
      .option("--messages", "FILE", request.messages, "what kolvex import has said on standard error, to be shown",
              tool::Completes::file)
      .option(
          "--size", "MB", [&request](const std::string& text) { request.mostBytes = bytesFrom(text); },
          "megabytes that the page may have (default: 15)");
  return command;
}

std::string pageOf(const std::string& database) {
  return std::filesystem::path(database).filename().replace_extension(".html").string();
}

}  // namespace report
