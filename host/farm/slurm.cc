#include "host/farm/slurm.h"

#include "host/farm/error.h"
#include "host/media/process.h"
#include "host/model/text.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace zol::host {
namespace {

constexpr double kPatience = 120; // seconds; the commands themselves give up earlier

struct Answer {
  bool good;
  std::string out, error; ///< the error is its last line
};

Answer ask(const std::vector<std::string> &words) {
  Process::Options options;
  options.output = Process::Stream::Pipe;
  options.patience = kPatience;
  Process process(words, options);
  Answer answer;
  answer.out = process.readAll();
  answer.good = process.wait() == 0;
  answer.error = process.lastLine();
  for (const std::string_view said : {words.front() + ": ", std::string("error: ")})
    if (answer.error.starts_with(said))
      answer.error.erase(0, said.size());
  return answer;
}

[[noreturn]] void failWithout(const std::string &why) {
  throw FarmError(FarmEnd::noSlurm, "there is no Slurm here: " + why);
}

/// Whether the controller, or the way to it, is what failed.
bool isAbsence(const std::string &error) {
  return std::ranges::any_of(
      std::initializer_list<std::string_view>{"contact slurm controller", "configuration source",
                                              "Socket timed out", "Connection refused", "authentication"},
      [&](std::string_view words) { return error.find(words) != error.npos; });
}

} // namespace

bool SlurmTask::active() const {
  constexpr std::string_view kEnds[] = {"COMPLETED", "FAILED",    "CANCELLED", "TIMEOUT",   "OUT_OF_MEMORY",
                                        "NODE_FAIL", "BOOT_FAIL", "DEADLINE",  "PREEMPTED", "REVOKED"};
  return std::ranges::find(kEnds, state) == std::end(kEnds);
}

void checkSlurm() {
  Answer answer;
  try {
    answer = ask({"sinfo", "--noheader", "--format=%R"});
  } catch (const HostError &error) {
    failWithout(error.what());
  }
  if (!answer.good)
    failWithout(answer.error);
}

std::string submit(const SlurmJob &job) {
  std::vector<std::string> words = {"sbatch",
                                    "--parsable",
                                    "--requeue",
                                    "--job-name=" + job.name,
                                    "--chdir=" + job.folder,
                                    "--output=" + job.log,
                                    "--open-mode=truncate",
                                    "--ntasks=1",
                                    "--cpus-per-task=" + std::to_string(job.cpus),
                                    "--kill-on-invalid-dep=yes"};
  const auto add = [&](const char *option, const std::string &value) {
    if (!value.empty())
      words.push_back(option + value);
  };
  add("--array=", rangesOf(job.indices));
  add("--dependency=afterok:", job.after);
  add("--partition=", job.partition);
  add("--time=", job.time);
  words.push_back(job.script);
  words.insert(words.end(), job.words.begin(), job.words.end());
  const Answer answer = ask(words);
  if (!answer.good && isAbsence(answer.error))
    failWithout(answer.error);
  std::string id(trimmed(answer.out.substr(0, answer.out.find(';')))); // behind it stands a cluster
  if (!answer.good || id.empty())
    throw HostError("Slurm takes no job: " + answer.error);
  return id;
}

std::optional<std::vector<SlurmTask>> tasksOf(const std::vector<std::string> &jobs) {
  std::string ids;
  for (const std::string &job : jobs)
    ids += (ids.empty() ? "" : ",") + job;
  if (ids.empty())
    return std::vector<SlurmTask>();
  const Answer answer = ask({"squeue", "--noheader", "--all", "--array", "--states=all", "--jobs=" + ids,
                             "--format=%F|%K|%T|%r|%N"});
  std::vector<SlurmTask> tasks;
  if (!answer.good) // one that it has forgotten is no error of its own
    return answer.error.find("Invalid job id") != answer.error.npos ? std::optional(tasks) : std::nullopt;
  for (const std::string_view line : split(answer.out, '\n')) {
    const auto parts = split(line, '|');
    if (parts.size() != 5)
      continue;
    SlurmTask &task = tasks.emplace_back();
    task.job = parts[0];
    if (const auto index = integerIn(parts[1]))
      task.index = static_cast<unsigned>(*index);
    task.state = parts[2];
    task.reason = parts[3];
    task.node = parts[4];
  }
  return tasks;
}

void cancelJobs(const std::vector<std::string> &jobs) {
  std::vector<std::string> words = {"scancel", "--quiet"};
  words.insert(words.end(), jobs.begin(), jobs.end());
  if (const Answer answer = ask(words); !answer.good && isAbsence(answer.error))
    failWithout(answer.error);
}

bool requeue(const std::string &task) { return ask({"scontrol", "requeue", task}).good; }

std::string rangesOf(const std::vector<unsigned> &numbers) {
  std::string text;
  for (auto first = numbers.begin(); first != numbers.end();) {
    auto last = first;
    while (last + 1 != numbers.end() && last[1] == *last + 1)
      ++last;
    text += (text.empty() ? "" : ",") + std::to_string(*first);
    if (last != first)
      text += '-' + std::to_string(*last);
    first = last + 1;
  }
  return text;
}

} // namespace zol::host
