// A batch on Slurm: one job array whose tasks run slices, and one job that collects after it.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "batch/state/batch_directory.h"

namespace batch {

// Slurm is not there, or does not do what it is asked for; the text has what it says.
class SlurmError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ArrayRequest {
  std::string program;                 // absolute path of `kolvex batch` itself
  std::vector<std::string> arguments;  // of each task, but for its slice
  std::size_t tasks = 1;
  std::vector<std::string> options;  // for sbatch, of both jobs
};

struct SubmittedJobs {
  std::string array;
  std::string collector;
};

// The jobs that were submitted last for this directory; nothing if there are none.
std::optional<SubmittedJobs> lastJobs(const BatchDirectory& directory);

// Whether a job, or a task of an array, is waiting or running. Throws SlurmError where Slurm cannot be asked.
bool isInQueue(const std::string& job);

// What a task runs: a shell script that becomes the runner, so that signals for the job reach it.
std::string taskScript(const ArrayRequest& request);
std::string collectorScript(const ArrayRequest& request, const BatchDirectory& directory);

// Submits both jobs. Throws SlurmError, also where the last array of the directory is still in the queue: nothing is
// submitted then, as two nodes may not see each other's locks. An array without its collector is cancelled.
SubmittedJobs submit(const BatchDirectory& directory, const ArrayRequest& request);

}  // namespace batch
