// `kolvex export`: reads the arguments, writes the series, says what came of it.

#include <fmt/format.h>

#include <filesystem>

#include "base/control_characters.h"
#include "base/diagnostic.h"
#include "export_options.h"
#include "inspect/open_database.h"
#include "tool/console.h"
#include "tool/program.h"
#include "tool/terminal_line.h"

namespace {

using vtk_export::ExportOptions;

std::string outputOf(const ExportOptions& options) {
  if (!options.request.output.empty()) return options.request.output;
  return std::filesystem::path(options.database).replace_extension(".pvd").string();
}

void write(ExportOptions options) {
  options.request.output = outputOf(options);
  tool::TerminalLine line = tool::TerminalLine::onErrors();
  const std::string named = base::escaped(options.request.output);
  const auto warn = [&line](const base::Diagnostic& said) {
    line.wipe();
    tool::complain(base::textOf(said));
  };
  const auto show = [&](std::size_t done, std::size_t all) {
    if (line.isDue()) line.draw(fmt::format("{}: {} of {} frames", named, done, all));
  };
  const auto database = inspect::openDatabase(options.database);
  const vtk_export::ExportSummary summary = vtk_export::exportVtu(*database, options.request, warn, show);
  line.wipe();
  tool::print(fmt::format("{}: {} frames, {} fields, {} sets, {} points, {} cells, {} bytes\n", named, summary.frames,
                          summary.fields, summary.sets, summary.points, summary.cells, summary.bytes));
}

int run(std::vector<std::string> arguments) {
  ExportOptions options;
  const tool::Command command = vtk_export::exportCommand(options);
  const tool::Outcome outcome = command.parse(std::move(arguments));
  if (outcome.isDone) return outcome.finish();
  if (options.format.empty()) return command.refuse("--to is missing: vtu").finish();
  write(std::move(options));
  tool::finishOutput();
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return tool::runProgram(argc, argv, run); }
