// `kolvex import`: reads the arguments, imports, says what came of it.

#include <fmt/format.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <set>

#include "importers/calculix/calculix_source.h"
#include "importers/diagnostics.h"
#include "importers/import_options.h"
#include "importers/progress_line.h"
#include "importers/run/outline_table.h"
#include "importers/run/run_import.h"
#include "process/prepare_process.h"

namespace {

// Nobody can be told that standard error takes nothing.
void warn(const std::string& text) { std::fputs((text + "\n").c_str(), stderr); }

// What is printed may reach its reader only now.
void finishOutput() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
  throw importers::ImportError("standard output", 0, std::string("cannot be written: ") + std::strerror(errno));
}

// The deck to read: the one asked for, else the one beside the results if there is one.
std::string findDeck(const importers::ImportOptions& options, const importers::JobFiles& files) {
  if (options.withoutDeck) return {};
  if (std::filesystem::exists(files.deck)) return files.deck;
  if (!options.deck.empty()) throw importers::ImportError(files.deck, 0, "the deck does not exist");
  warn(fmt::format("{}: warning: there is no deck {}, so no sets are imported", files.results, files.deck));
  return {};
}

// The printed tables to read: a run that prints nothing need not have any.
std::string findPrinted(const importers::ImportOptions& options, const importers::JobFiles& files) {
  if (options.withoutPrinted) return {};
  if (std::filesystem::exists(files.printed)) return files.printed;
  if (!options.printed.empty()) throw importers::ImportError(files.printed, 0, "the file does not exist");
  return {};
}

// The database takes the place of a file of its name; that must not be one of those that are read.
void checkOutput(const importers::JobFiles& files) {
  for (const std::string& input : {files.results, files.deck, files.status, files.printed}) {
    std::error_code ignored;
    if (std::filesystem::equivalent(input, files.output, ignored)) {
      throw importers::ImportError(files.output, 0, "the database would replace what it is made of");
    }
  }
}

void print(const std::string& text) { std::fputs(text.c_str(), stdout); }

void printSummary(const importers::JobFiles& files, const importers::ImportSummary& summary, double seconds) {
  print(fmt::format("{}: {} steps, {} frames, {} fields, {} histories, {} sets, {} bytes, {:.2f} s\n", files.output,
                    summary.steps, summary.frames, summary.fields, summary.histories, summary.sets,
                    std::filesystem::file_size(files.output), seconds));
  if (!summary.cutOffBehind.empty()) {
    print(fmt::format("incomplete: the results end behind {}\n", summary.cutOffBehind));
  }
}

void run(const importers::ImportOptions& options) {
  const auto begin = std::chrono::steady_clock::now();
  const importers::JobFiles files = importers::jobFiles(options);
  const importers::calculix::CalculixRun job = {
      files.results,    findDeck(options, files), files.status,     findPrinted(options, files),
      options.isStrict, options.withMass,         options.stressAt, options.historyLimit};
  const importers::ImportRequest request = {
      files.results, files.output, {options.compress, options.checksum}, options.selection};
  importers::ProgressLine progress(files.results, stderr);
  std::set<std::string> said;  // reading a file twice does not say everything twice
  const importers::WarningSink warnOnce = [&](const std::string& text) {
    if (!said.insert(text).second) return;
    progress.wipe();
    warn(text);
  };
  const std::unique_ptr<importers::Source> source = importers::calculix::openCalculix(job, warnOnce);
  if (options.isList) {
    print(importers::outlineTable(importers::listImport(*source, request, warnOnce), files.results));
    return;
  }
  checkOutput(files);
  const auto show = [&progress](std::uint64_t done, std::uint64_t all) { progress.show(done, all); };
  const importers::ImportSummary summary = importers::runImport(*source, request, warnOnce, show);
  progress.wipe();
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  printSummary(files, summary, seconds.count());
}

}  // namespace

int main(int argc, char** argv) {
  prepareProcess();
  try {
    const importers::ImportOptions options = importers::parseImportOptions({argv + 1, argv + argc});
    if (options.isDone) {
      std::fputs(options.message.c_str(), options.status == 0 ? stdout : stderr);
      finishOutput();
      return options.status;
    }
    run(options);
    finishOutput();
  } catch (const std::bad_alloc&) {
    std::fputs("out of memory\n", stderr);
    return 1;
  } catch (const std::exception& error) {
    std::fputs(error.what(), stderr);
    std::fputs("\n", stderr);
    return 1;
  }
  return 0;
}
