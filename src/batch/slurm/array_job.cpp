#include "batch/slurm/array_job.h"

#include <fmt/core.h>

#include <algorithm>

#include "batch/slurm/captured_program.h"
#include "batch/state/small_files.h"

namespace batch {

namespace {

constexpr const char* kJobsName = "slurm-jobs";
constexpr const char* kTaskName = "slurm-task.sh";
constexpr const char* kCollectorName = "slurm-collect.sh";
constexpr const char* kTableName = "table.csv";

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// A word quoted for a shell.
std::string shellWord(const std::string& word) {
  std::string text = "'";
  for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}

std::string answerTo(const std::vector<std::string>& command) {
  const Answer answer = ask(command);
  if (answer.status == 0) return answer.output;
  throw SlurmError(fmt::format("{} failed (status {}): {}", command.front(), answer.status, firstLine(answer.errors)));
}

// In the names of files that sbatch is given, "%" begins a pattern and "\" turns all of them off.
std::string logPattern(const BatchDirectory& directory, const char* name) {
  std::string pattern;
  for (const char c : directory.ownPath("")) pattern += c == '%' ? std::string("%%") : std::string(1, c);
  return pattern + name;
}

// The number of the job: "17", or "17;cluster".
std::string jobIn(const std::string& output) {
  std::string job = firstLine(output);
  job.resize(std::min(job.find(';'), job.size()));
  if (job.empty() || job.find_first_not_of("0123456789") != std::string::npos) {
    throw SlurmError(fmt::format("sbatch gave no job number: {}", firstLine(output)));
  }
  return job;
}

std::string submitJob(std::vector<std::string> command, const ArrayRequest& request, const std::string& script) {
  command.insert(command.begin(), {"sbatch", "--parsable"});
  command.insert(command.end(), request.options.begin(), request.options.end());
  command.push_back(script);
  return jobIn(answerTo(command));
}

void refuseSecondArray(const BatchDirectory& directory) {
  const std::optional<SubmittedJobs> last = lastJobs(directory);
  if (!last || !isInQueue(last->array)) return;
  throw SlurmError(
      fmt::format("job array {} of {} is still in the queue; nothing is submitted", last->array, directory.path()));
}

}  // namespace

std::optional<SubmittedJobs> lastJobs(const BatchDirectory& directory) {
  const std::optional<std::string> text = readSmallFile(directory.ownPath(kJobsName));
  const std::size_t blank = text ? text->find(' ') : std::string::npos;
  const std::size_t end = text ? text->find('\n') : std::string::npos;
  if (blank == std::string::npos || end == std::string::npos || end < blank) return std::nullopt;
  return SubmittedJobs{text->substr(0, blank), text->substr(blank + 1, end - blank - 1)};
}

bool isInQueue(const std::string& job) {
  const Answer answer = ask({"squeue", "--noheader", "--jobs=" + job, "--states=all", "--format=%T"});
  // The queue forgets jobs some minutes after their end.
  if (answer.status != 0 && answer.errors.find("Invalid job id") != std::string::npos) return false;
  if (answer.status != 0) throw SlurmError(fmt::format("squeue failed: {}", firstLine(answer.errors)));
  for (const char* state : {"PENDING", "RUNNING", "SUSPENDED", "COMPLETING", "CONFIGURING", "REQUEUED", "REQUEUE_HOLD",
                            "RESIZING", "SIGNALING", "STAGE_OUT", "STOPPED"}) {
    if (answer.output.find(state) != std::string::npos) return true;
  }
  return false;
}

std::string taskScript(const ArrayRequest& request) {
  std::string command = shellWord(request.program);
  for (const std::string& argument : request.arguments) command += " " + shellWord(argument);
  return fmt::format(
      "#!/bin/sh\nexec {} --index \"$SLURM_ARRAY_TASK_ID\" --size {} --jobs \"${{SLURM_CPUS_PER_TASK:-1}}\"\n", command,
      request.tasks);
}

std::string collectorScript(const ArrayRequest& request, const BatchDirectory& directory) {
  return fmt::format("#!/bin/sh\nexec {} collect {} --to csv -o {}\n", shellWord(request.program),
                     shellWord(directory.path()), shellWord(directory.path() + "/" + kTableName));
}

SubmittedJobs submit(const BatchDirectory& directory, const ArrayRequest& request) {
  refuseSecondArray(directory);
  writeSmallFile(directory.ownPath(kTaskName), taskScript(request), true);
  writeSmallFile(directory.ownPath(kCollectorName), collectorScript(request, directory), true);
  SubmittedJobs jobs;
  jobs.array = submitJob({"--job-name=kolvex-batch", fmt::format("--array=0-{}", request.tasks - 1),
                          "--open-mode=append", "--output=" + logPattern(directory, "slurm-%a.log")},
                         request, directory.ownPath(kTaskName));
  // From here on nobody submits a second array, even if submitting the collector fails.
  writeSmallFile(directory.ownPath(kJobsName), jobs.array + " \n", true);
  try {
    jobs.collector = submitJob({"--job-name=kolvex-collect", "--dependency=afterany:" + jobs.array,
                                "--output=" + logPattern(directory, "slurm-collect.log")},
                               request, directory.ownPath(kCollectorName));
  } catch (const SlurmError&) {
    ask({"scancel", jobs.array});
    throw;
  }
  writeSmallFile(directory.ownPath(kJobsName), jobs.array + " " + jobs.collector + "\n", true);
  return jobs;
}

}  // namespace batch
