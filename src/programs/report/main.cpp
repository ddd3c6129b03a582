// `kolvex report`: reads the arguments, writes the page, says what came of it.

#include <fmt/format.h>

#include <chrono>

#include "base/control_characters.h"
#include "report_options.h"
#include "tool/console.h"
#include "tool/program.h"

namespace {

void printSummary(const report::PageRequest& request, const report::PageSummary& summary, double seconds) {
  tool::print(fmt::format("{}: {} triangles, {} frames, {} records, {} bytes, {:.2f} s\n", base::escaped(request.page),
                          summary.triangles, summary.frames, summary.records, summary.bytes, seconds));
}

int run(std::vector<std::string> arguments) {
  const auto begin = std::chrono::steady_clock::now();
  report::PageRequest request;
  const tool::Outcome outcome = report::reportCommand(request).parse(std::move(arguments));
  if (outcome.isDone) return outcome.finish();
  if (request.page.empty()) request.page = report::pageOf(request.database);
  const report::PageSummary summary =
      report::writePage(request, [](const base::Diagnostic& said) { tool::complain(base::textOf(said)); });
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  printSummary(request, summary, seconds.count());
  tool::finishOutput();
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return tool::runProgram(argc, argv, run); }
