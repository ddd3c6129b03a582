#include "run_job.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/control_characters.h"
#include "base/file_error.h"
#include "base/own_programs.h"
#include "batch/run/single_run.h"
#include "importers/formats/table.h"
#include "programs/batch/program_files.h"
#include "programs/batch/recognise.h"
#include "tables/record_lines.h"
#include "tool/console.h"
#include "tool/terminal_line.h"

namespace single_run {

namespace {

namespace fs = std::filesystem;

// Relative to the directory.
constexpr const char* kConfigurationName = "configuration";
constexpr const char* kDatabaseName = "database.odb";

// What is known of params.txt.
struct Records {
  std::uint64_t count = 0;
  std::vector<std::string> missing;  // of the names that are required
};

Records readRecords(const std::string& directory, const std::vector<std::string>& required) {
  Records records;
  std::vector<bool> isThere(required.size());
  tables::forEachRecord(batch::textOfFile(directory + "/" + batch::kParamsName),
                        [&](std::string_view name, std::string_view) {
                          ++records.count;
                          const std::string text(name);
                          for (std::size_t i = 0; i < required.size(); ++i) {
                            if (!isThere[i])
                              isThere[i] = required[i] == text || ::fnmatch(required[i].c_str(), text.c_str(), 0) == 0;
                          }
                        });
  for (std::size_t i = 0; i < required.size(); ++i) {
    if (!isThere[i]) records.missing.push_back(required[i]);
  }
  return records;
}

std::string lackOf(const Records& records) {
  if (records.count == 0) return "there is no record";
  return records.missing.empty() ? "" : fmt::format("no record {}", fmt::join(records.missing, ", "));
}

std::string directoryOf(const RunOptions& options, const std::string& input) {
  const std::string named =
      options.directory.empty() ? fs::path(input).stem().string() + "-records" : options.directory;
  const fs::path path = fs::absolute(named).lexically_normal();
  return (path.has_filename() ? path : path.parent_path()).string();
}

// The result file where the name of a job is given.
std::string inputOf(const RunOptions& options, const batch::InputFormats& formats) {
  const std::vector<std::string> files = formats.recognise(options.input).files;
  const bool isThere = fs::exists(options.input) || files.empty();
  return fs::absolute(isThere ? options.input : files.front()).lexically_normal().string();
}

batch::RunPlan planOf(const RunOptions& options, const batch::InputFormats& formats, const std::string& directory) {
  batch::RunPlan plan;
  plan.settings = {batch::textOfFile(options.configuration), options.importOptions};
  plan.configuration = directory + "/" + kConfigurationName;
  plan.version = KOLVEX_VERSION;
  plan.extraction = base::ownProgram("quarnish");
  plan.import = base::ownProgram("import");
  plan.recognise = [&formats](const std::string& path) { return formats.recognise(path); };
  plan.findMissing = [&options](const std::string& where) { return lackOf(readRecords(where, options.required)); };
  plan.timeout = options.timeout;
  plan.memory = options.memory;
  plan.keepsDatabases = options.keepsDatabase;
  return plan;
}

struct Summary {
  std::string input;
  std::string directory;
  std::optional<batch::Record> record;  // none where it was interrupted
  Records records;

  int status() const {
    if (!record) return kInterrupted;
    if (!record->isDone) return tool::kFailed;
    return record->missing.empty() ? 0 : kIncomplete;
  }
  const char* state() const {
    switch (status()) {
      case 0:
        return "complete";
      case kIncomplete:
        return "incomplete";
      case kInterrupted:
        return "interrupted";
      default:
        return "failed";
    }
  }
};

std::string jsonOf(const Summary& summary, double seconds) {
  const batch::Record record = summary.record.value_or(batch::Record());
  const std::string database = summary.directory + "/" + kDatabaseName;
  nlohmann::ordered_json json = {{"input", summary.input},
                                 {"directory", summary.directory},
                                 {"state", summary.state()},
                                 {"status", summary.status()},
                                 {"records", summary.records.count},
                                 {"missing", summary.records.missing},
                                 {"reason", record.isDone ? record.missing : record.reason},
                                 {"detail", record.detail},
                                 {"seconds", seconds}};
  if (record.isDone) json["params"] = summary.directory + "/" + batch::kParamsName;
  if (record.isDone && fs::is_regular_file(fs::symlink_status(database))) json["database"] = database;
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

void tell(const Summary& summary, double seconds) {
  const std::string log = fmt::format(" ({}/{})", summary.directory, batch::kLogName);
  std::string problem;
  if (!summary.record) {
    problem = "interrupted";
  } else if (!summary.record->isDone) {
    problem = summary.record->reason + (summary.record->detail.empty() ? "" : ": " + summary.record->detail) + log;
  } else if (!summary.record->missing.empty()) {
    problem = "records are missing: " + summary.record->missing + log;
  }
  if (!problem.empty()) tool::complain(base::escaped(summary.input + ": " + problem));
  if (summary.record && summary.record->isDone)
    tool::print(
        fmt::format("{}: {} records, {:.2f} s\n", base::escaped(summary.directory), summary.records.count, seconds));
}

}  // namespace

int runJob(const RunOptions& options) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  const auto secondsGone = [begin] { return std::chrono::duration<double>(Clock::now() - begin).count(); };
  const batch::InputFormats formats(importers::allFormats());
  Summary summary = {inputOf(options, formats), {}, {}, {}};
  if (!fs::exists(summary.input)) throw base::NoFileError(options.input, "does not exist");
  summary.directory = directoryOf(options, summary.input);
  const batch::RunPlan plan = planOf(options, formats, summary.directory);
  fs::create_directories(fs::path(summary.directory).parent_path());
  tool::TerminalLine line = tool::TerminalLine::onErrors();
  batch::Signals signals;
  summary.record = batch::runSingle(plan, summary.input, summary.directory, signals, [&] {
    if (line.isDue()) line.draw(fmt::format("{}: {:.0f} s", base::escaped(summary.input), secondsGone()));
  });
  line.wipe();
  if (summary.record && summary.record->isDone) summary.records = readRecords(summary.directory, options.required);
  if (options.isJson) {
    tool::print(jsonOf(summary, secondsGone()));
  } else {
    tell(summary, secondsGone());
  }
  tool::finishOutput();
  return summary.status();
}

}  // namespace single_run
