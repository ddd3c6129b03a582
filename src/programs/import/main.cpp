// `kolvex import`: reads the arguments, imports, says what came of it.

#include <fmt/core.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <set>

#include "base/control_characters.h"
#include "import_options.h"
#include "importers/formats/table.h"
#include "importers/input/diagnostics.h"
#include "importers/run/outline_json.h"
#include "importers/run/outline_table.h"
#include "importers/run/run_import.h"
#include "odbstore/store_error.h"
#include "tool/program.h"
#include "tool/progress_line.h"

namespace {

using importers::ImportOptions;

// There is nowhere to report that standard error failed.
void warn(const std::string& text) { std::fputs((text + "\n").c_str(), stderr); }

void print(const std::string& text) { std::fputs(text.c_str(), stdout); }

// What is printed may reach its reader only now.
void finishOutput() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
  throw importers::ImportError("standard output", 0, std::string("cannot be written: ") + std::strerror(errno));
}

// The database takes the place of a file of its name; that must not be one of those that are read.
void checkOutput(const std::vector<std::string>& inputs, const std::string& output) {
  for (const std::string& input : inputs) {
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored)) {
      throw importers::ImportError(output, 0, "the database would replace its own source");
    }
  }
}

void printSummary(const std::string& output, const importers::ImportSummary& summary, double seconds) {
  std::error_code failed;
  const std::uintmax_t bytes = std::filesystem::file_size(output, failed);
  if (failed) throw importers::ImportError(output, 0, failed.message());
  print(fmt::format("{}: {} steps, {} frames, {} fields, {} histories, {} sets, {} bytes, {:.2f} s\n",
                    base::escaped(output), summary.steps, summary.frames, summary.fields, summary.histories,
                    summary.sets, bytes, seconds));
  if (!summary.cutOffBehind.empty()) print(fmt::format("incomplete: the results end after {}\n", summary.cutOffBehind));
}

void import(const ImportOptions& options, const std::vector<importers::KnownFormat>& formats) {
  const auto begin = std::chrono::steady_clock::now();
  const importers::FoundFormat found = importers::findFormat(formats, options.input, options.format);
  const importers::OpenRequest job = {found.results, options.isStrict, options.withMass, true, options.shapes};
  const importers::ImportRequest request = {found.results,
                                            outputOf(options, *found.format->importer, found.results),
                                            {options.compress, options.checksum},
                                            options.selection,
                                            options.naming};
  tool::ProgressLine progress(found.results, stderr);
  std::set<std::string> heard;  // reading a file twice does not say everything twice
  const importers::WarningSink warnOnce = [&](const base::Diagnostic& said) {
    const std::string text = base::textOf(said);
    if (!heard.insert(text).second) return;
    progress.wipe();
    warn(text);
  };
  const std::unique_ptr<importers::Source> source = found.format->importer->open(job, warnOnce);
  if (options.isList) {
    const importers::Outline outline = importers::listImport(*source, request, warnOnce);
    print(options.isJson ? importers::outlineJson(outline, found.results)
                         : importers::outlineTable(outline, found.results));
    return;
  }
  checkOutput(found.format->importer->inputs(job), request.output);
  const auto show = [&progress](std::uint64_t done, std::uint64_t all) { progress.show(done, all); };
  const importers::ImportSummary summary = [&] {
    try {
      return importers::runImport(*source, request, warnOnce, show);
    } catch (const odbstore::StoreError& error) {
      if (!options.output.empty()) throw;
      throw std::runtime_error(std::string(error.what()) + "; -o DATABASE writes it elsewhere");
    }
  }();
  progress.wipe();
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  printSummary(request.output, summary, seconds.count());
}

// Memory may be too short then to make a message.
void importNamed(const ImportOptions& options, const std::vector<importers::KnownFormat>& formats) {
  const std::string named = base::escaped(options.input);
  try {
    import(options, formats);
  } catch (const std::bad_alloc&) {
    std::fputs(named.c_str(), stderr);
    std::fputs(": error: ", stderr);
    throw;
  }
}

int run(std::vector<std::string> arguments) {
  ImportOptions options;
  const std::vector<importers::KnownFormat> formats = importers::makeFormats(importers::allFormats());
  const tool::Command command = importers::importCommand(options, formats);
  const tool::Outcome outcome = command.parse(std::move(arguments));
  if (outcome.isDone) return outcome.finish();
  if (options.isFormats) {
    print(importers::formatList(importers::allFormats()));
  } else if (options.input.empty() || (options.isJson && !options.isList)) {
    return command.refuse(options.input.empty() ? "JOB is missing" : "--json goes with --list").finish();
  } else {
    importNamed(options, formats);
  }
  finishOutput();
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return tool::runProgram(argc, argv, run); }
