// A cluster's scheduler, through its own commands.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zol::host {

/// What is handed to the scheduler. No word passes through a shell.
struct SlurmJob {
  std::string name;
  std::string folder; ///< where it starts
  std::string log;    ///< of its standard output and error, from the folder on; "%a" is the task's index
  std::string script;
  std::vector<std::string> words; ///< of the script
  unsigned cpus = 1;              ///< a task
  std::vector<unsigned> indices;  ///< one task each; empty: a single task without one
  std::string after;              ///< the job that must succeed before; empty: none
  std::string partition, time;    ///< empty: what the cluster has
};

/// One task as the scheduler tells of it.
struct SlurmTask {
  std::string job;
  std::optional<unsigned> index;
  std::string state; ///< as RUNNING
  std::string reason, node;

  /// Whether it still runs or waits.
  [[nodiscard]] bool active() const;
};

/// Throws FarmError where there is no scheduler, or where it does not answer.
void checkSlurm();

/// The job's id. Throws as above, and HostError with the scheduler's own reason.
std::string submit(const SlurmJob &job);

/// What is known of all tasks of the jobs, of those that ended for some minutes only; nothing while the
/// scheduler does not answer.
std::optional<std::vector<SlurmTask>> tasksOf(const std::vector<std::string> &jobs);

/// Throws FarmError where the scheduler does not answer.
void cancelJobs(const std::vector<std::string> &jobs);

/// From within a task: has it started anew; whether the scheduler took it.
bool requeue(const std::string &task);

/// Numbers as "1-3,7".
std::string rangesOf(const std::vector<unsigned> &numbers);

} // namespace zol::host
