// `kolvex import`: reads the arguments, imports, says what came of it.

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>

#include "importers/calculix/import_calculix.h"
#include "importers/diagnostics.h"
#include "importers/import_options.h"

namespace {

void warn(const std::string& text) { fmt::print(stderr, "{}\n", text); }

void run(const importers::ImportOptions& options) {
  const auto begin = std::chrono::steady_clock::now();
  importers::JobFiles files = importers::jobFiles(options);
  if (!std::filesystem::exists(files.deck)) {
    if (!options.deck.empty()) throw importers::ImportError(files.deck, 0, "the deck does not exist");
    warn(files.results + ": warning: there is no deck " + files.deck + ", so no sets are imported");
    files.deck.clear();
  }
  const importers::calculix::ImportSummary summary = importers::calculix::importCalculix(
      {files.results, files.deck, files.status, files.output, {options.compress, options.checksum}}, warn);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  fmt::print("{}: {} steps, {} frames, {} fields, {} sets, {} bytes, {:.2f} s\n", files.output, summary.steps,
             summary.frames, summary.fields, summary.sets, std::filesystem::file_size(files.output), seconds.count());
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const importers::ImportOptions options = importers::parseImportOptions({argv + 1, argv + argc});
    if (options.isDone) {
      fmt::print(options.status == 0 ? stdout : stderr, "{}", options.message);
      return options.status;
    }
    run(options);
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return 1;
  }
  return 0;
}
