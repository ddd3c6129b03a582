#include "run_batch.h"

#include <fmt/core.h>
#include <sched.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <optional>
#include <thread>

#include "base/file_error.h"
#include "base/own_programs.h"
#include "batch/run/input_list.h"
#include "batch/run/pack_claim.h"
#include "batch/run/runner.h"
#include "batch/slurm/array_job.h"
#include "batch/state/small_files.h"
#include "importers/formats/table.h"
#include "program_files.h"
#include "recognise.h"
#include "run_report.h"
#include "show_status.h"
#include "tool/console.h"
#include "tool/terminal_line.h"

namespace batch {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

// A list may come through a pipe.
std::string textOfList(const std::string& path) {
  std::ifstream file;
  if (path != "-") file.open(path, std::ios::binary);
  std::istream& list = path == "-" ? std::cin : file;
  if (path != "-" && (!file || std::filesystem::is_directory(path))) throw base::NoFileError(path, "cannot be read");
  return {std::istreambuf_iterator<char>(list), std::istreambuf_iterator<char>()};
}

std::vector<std::string> namesOf(const RunOptions& options) {
  std::vector<std::string> names;
  const auto addList = [&names](const std::string& path) {
    const std::vector<std::string> listed = namesIn(textOfList(path));
    names.insert(names.end(), listed.begin(), listed.end());
  };
  if (!options.list.empty()) addList(options.list);
  for (const std::string& path : options.paths) {
    if (path == "-") {
      addList(path);
    } else {
      names.push_back(path);
    }
  }
  return names;
}

std::size_t processors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  if (::sched_getaffinity(0, sizeof set, &set) != 0) return 1;
  return static_cast<std::size_t>(std::max(CPU_COUNT(&set), 1));
}

RunPlan planOf(const RunOptions& options, const BatchDirectory& directory, const InputFormats& formats) {
  RunPlan plan;
  plan.settings = {textOfFile(options.configuration), options.importOptions};
  plan.configuration = directory.configurationPath(plan.settings);
  plan.version = KOLVEX_VERSION;
  plan.extraction = base::ownProgram("quarnish");
  plan.import = base::ownProgram("import");
  plan.slice = {options.index, options.size};
  plan.recognise = [&formats](const std::string& path) { return formats.recognise(path); };
  plan.jobs = options.jobs > 0 ? options.jobs : processors();
  plan.timeout = options.timeout;
  plan.memory = options.memory;
  plan.retries = options.retries;
  plan.keepsGoing = options.keepsGoing;
  plan.keepsDatabases = options.keepsDatabases;
  plan.skipsFailed = options.skipsFailed;
  plan.isSynced = options.isSynced;
  plan.grace = options.grace;
  return plan;
}

// Reports on a run in progress.
class Reporter {
 public:
  Reporter(const BatchDirectory& directory, const RunOptions& options)
      : directory_(directory), isJson_(options.isJson), isPacked_(options.isPacked) {}

  void begin(std::size_t inputs) {
    if (isJson_) printLine(jsonOfStart(directory_.path(), inputs));
  }

  void tell(const Event* event, const Progress& progress) {
    if (event != nullptr && isJson_) printLine(jsonOf(*event));
    const std::string line = event == nullptr ? "" : lineOf(*event, logOf(*event));
    if (!line.empty() && !isJson_) {
      line_.wipe();
      tool::complain(line);
    }
    if (line_.isDue()) line_.draw(progressText(progress, secondsSince(begin_)));
  }

  void end(const Progress& progress, bool isInterrupted) {
    line_.wipe();
    const double seconds = secondsSince(begin_);
    if (isJson_) printLine(jsonOfEnd(progress, seconds, isInterrupted));
    if (!isJson_) tool::print(summaryText(progress, seconds, isInterrupted));
    tool::finishOutput();
  }

 private:
  // A packed log is no file.
  std::string logOf(const Event& event) const {
    if (!isPacked_ || event.kind != EventKind::failed) return directory_.directoryOf(*event.input) + "/" + kLogName;
    return fmt::format("kolvex batch show {} {} --log", directory_.path(), event.input->id);
  }

  // Readers of events want them when they happen.
  static void printLine(const std::string& line) {
    tool::print(line + "\n");
    tool::finishOutput();
  }

  const BatchDirectory& directory_;
  bool isJson_;
  bool isPacked_;
  tool::TerminalLine line_ = tool::TerminalLine::onErrors();
  Clock::time_point begin_ = Clock::now();
};

// The tasks find their inputs in a list of their own: a pattern might match something else by then.
ArrayRequest requestOf(const RunOptions& options, const BatchDirectory& directory, const RunPlan& plan,
                       const std::vector<BatchInput>& inputs) {
  std::string list;
  for (const BatchInput& input : inputs) list += input.path + "\n";
  const std::string path = directory.ownPath("slurm-inputs");
  writeSmallFile(path, list, true);
  ArrayRequest request;
  request.program = base::ownProgram("batch");
  request.arguments = {"--from", path, "--config", plan.configuration, "--out", directory.path()};
  const std::vector<std::string> forwarded = forwardedArguments(options);
  request.arguments.insert(request.arguments.end(), forwarded.begin(), forwarded.end());
  request.tasks = std::min(options.tasks, inputs.size());
  request.options = options.slurmOptions;
  return request;
}

int waitForJobs(const SubmittedJobs& jobs, const BatchDirectory& directory) {
  constexpr std::chrono::seconds kPause{2};
  while (isInQueue(jobs.array) || isInQueue(jobs.collector)) std::this_thread::sleep_for(kPause);
  const BatchCounts counts = countInputs(directory);
  tool::print(statusText(counts));
  tool::finishOutput();
  return exitStatusOf(counts);
}

int runOnSlurm(const RunOptions& options, const BatchDirectory& directory, const RunPlan& plan,
               const std::vector<BatchInput>& inputs) {
  const ArrayRequest request = requestOf(options, directory, plan, inputs);
  const SubmittedJobs jobs = submit(directory, request);
  tool::print(options.isJson ? jsonOfJobs(jobs.array, jobs.collector, request.tasks) + "\n"
                             : fmt::format("job array {} with {} tasks, collecting job {}\n", jobs.array, request.tasks,
                                           jobs.collector));
  tool::finishOutput();
  return options.isWaiting ? waitForJobs(jobs, directory) : 0;
}

}  // namespace

int runBatch(const RunOptions& options) {
  const BatchDirectory directory(options.directory);
  const InputFormats formats(importers::allFormats());
  RunPlan plan = planOf(options, directory, formats);
  const std::vector<BatchInput> all = inputsNamed(namesOf(options));
  if (all.empty()) throw InputListError("the list of inputs is empty");
  const base::Descriptor membership = directory.join(plan.settings);
  directory.addInputs(all);
  if (options.isSlurm) return runOnSlurm(options, directory, plan, all);
  const std::vector<BatchInput> inputs = sliceOf(all, options.index, options.size);
  Reporter reporter(directory, options);
  Signals signals;
  std::optional<PackWriter> pack;
  if (options.isPacked) {
    pack.emplace(directory.packsPath() + "/" + packName(plan.slice));
    plan.pack = &*pack;
    const auto wait = [&] { tool::complain(pack->path() + ": another run writes this pack; waiting for its end"); };
    if (!claimPatiently(*pack, signals, wait)) return kInterrupted;
  }
  Runner runner(directory, plan, signals,
                [&reporter](const Event* event, const Progress& progress) { reporter.tell(event, progress); });
  reporter.begin(inputs.size());
  const Progress progress = runner.run(inputs);
  reporter.end(progress, runner.isInterrupted());
  if (progress.finished() < progress.inputs && runner.isInterrupted()) return kInterrupted;
  return progress.failed > 0 ? tool::kFailed : 0;
}

}  // namespace batch
