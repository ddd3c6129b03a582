#include "show_status.h"

#include <fmt/core.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <thread>

#include "tool/console.h"
#include "tool/terminal_line.h"

namespace batch {

namespace {

std::string headText(const BatchCounts& counts) {
  return fmt::format("{} inputs: {} done, {} failed, {} running, {} missing", counts.inputs, counts.done, counts.failed,
                     counts.running, counts.missing);
}

}  // namespace

int exitStatusOf(const BatchCounts& counts) {
  if (counts.running + counts.missing > 0) return kUnfinished;
  return counts.failed > 0 ? tool::kFailed : 0;
}

std::string statusText(const BatchCounts& counts) {
  std::string text = headText(counts) + "\n";
  for (const auto& [reason, count] : counts.why) text += fmt::format("  {}: {}\n", reason, count);
  return text;
}

std::string statusJson(const BatchCounts& counts) {
  nlohmann::ordered_json json = {{"inputs", counts.inputs},   {"done", counts.done},       {"failed", counts.failed},
                                 {"running", counts.running}, {"missing", counts.missing}, {"why", counts.why}};
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

int showStatus(const StatusOptions& options) {
  const BatchDirectory directory(options.directory);
  tool::TerminalLine line = tool::TerminalLine::onOutput();
  BatchCounts counts = countInputs(directory);
  while (options.isWatched && exitStatusOf(counts) == kUnfinished) {
    // A terminal shows the last look, a file gets all of them.
    if (line.isTerminal()) {
      line.draw(headText(counts));
    } else {
      tool::print(options.isJson ? statusJson(counts) : headText(counts) + "\n");
      tool::finishOutput();
    }
    std::this_thread::sleep_for(options.pause);
    counts = countInputs(directory);
  }
  line.wipe();
  tool::print(options.isJson ? statusJson(counts) : statusText(counts));
  tool::finishOutput();
  return exitStatusOf(counts);
}

}  // namespace batch
