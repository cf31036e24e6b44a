#include "tests/farm/cluster.h"

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <netinet/in.h>
#include <pwd.h>
#include <random>
#include <sstream>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace zol::test {
namespace {

namespace fs = std::filesystem;

std::string contentsOf(const fs::path &file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// Ports that nobody listened at a moment ago.
std::vector<int> freePorts(size_t count) {
  std::vector<host::Descriptor> held;
  std::vector<int> ports;
  while (ports.size() < count) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *plain = reinterpret_cast<sockaddr *>(&address);
    const int fd = held.emplace_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)).get();
    if (bind(fd, plain, size) != 0 || getsockname(fd, plain, &size) != 0)
      throw std::runtime_error("no port is free");
    ports.push_back(ntohs(address.sin_port));
  }
  return ports;
}

std::string hostName() {
  char name[256] = {};
  gethostname(name, sizeof name - 1);
  return std::string(name).substr(0, std::string(name).find('.'));
}

/// What runs on a node: all processes that have its name in their environment.
std::vector<pid_t> processesOf(const std::string &node) {
  const std::string mark = "SLURMD_NODENAME=" + node + '\0';
  std::vector<pid_t> found;
  for (const auto &entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") == name.npos &&
        contentsOf(entry.path() / "environ").find(mark) != std::string::npos)
      found.push_back(std::stoi(name));
  }
  return found;
}

/// The process that watches over a task and would tell of its end.
pid_t watcherOf(pid_t process) {
  const std::string status = contentsOf("/proc/" + std::to_string(process) + "/status");
  const size_t at = status.find("PPid:");
  const pid_t parent = at == status.npos ? 0 : std::stoi(status.substr(at + 5));
  return contentsOf("/proc/" + std::to_string(parent) + "/comm").starts_with("slurmstepd") ? parent : 0;
}

} // namespace

std::string Cluster::missing() {
  for (const std::string program : {"munged", "slurmctld", "slurmd", "sbatch"})
    if (!fs::exists("/usr/sbin/" + program) && !fs::exists("/usr/bin/" + program))
      return program;
  return {};
}

Cluster::Cluster(fs::path folder) : folder_(std::move(folder)) {
  for (const char *which : {"a", "b"})
    nodes_.push_back("zol" + std::to_string(getpid()) + which);
  configure();
  setenv("SLURM_CONF", (folder_ / "slurm.conf").c_str(), 1);
  munge_ = run("munged", {"munged", "--foreground", "--force", "--key-file=" + (folder_ / "key").string(),
                          "--socket=" + (folder_ / "socket").string(),
                          "--pid-file=" + (folder_ / "munged.pid").string(),
                          "--log-file=" + (folder_ / "munged.log").string(),
                          "--seed-file=" + (folder_ / "seed").string(), "--num-threads=2"});
  if (!comesToBe([&] { return fs::exists(folder_ / "socket"); }))
    throw std::runtime_error(logs());
  startController();
  for (const std::string &node : nodes_)
    startNode(node);
  if (!comesToBe([] {
        const std::string states = ask({"sinfo", "--noheader", "--Node", "--format=%T"});
        return states == "idle\nidle\n";
      }))
    throw std::runtime_error(logs());
}

Cluster::~Cluster() {
  for (const std::string &node : nodes_)
    kill(node);
}

void Cluster::configure() const {
  fs::create_directories(folder_ / "state");
  std::ofstream key(folder_ / "key", std::ios::binary);
  std::random_device random;
  for (int i = 0; i < 1024; ++i)
    key.put(static_cast<char>(random()));
  key.close();
  fs::permissions(folder_ / "key", fs::perms::owner_read | fs::perms::owner_write);

  const passwd *user = getpwuid(getuid());
  const std::string name = user == nullptr ? "root" : user->pw_name, host = hostName(), at = folder_.string();
  const std::vector<int> ports = freePorts(1 + nodes_.size());
  std::ofstream conf(folder_ / "slurm.conf");
  conf << "ClusterName=zol\nSlurmctldHost=" << host << "(127.0.0.1)\nSlurmctldPort=" << ports[0]
       << "\nSlurmUser=" << name << "\nSlurmdUser=" << name
       << "\nAuthType=auth/munge\nCredType=cred/munge\n"
          // The least time in seconds after which a task may start anew.
          "AuthInfo=socket="
       << at << "/socket,cred_expire=5\nStateSaveLocation=" << at << "/state\nSlurmctldPidFile=" << at
       << "/slurmctld.pid\nSlurmdPidFile=" << at << "/%n/slurmd.pid\nSlurmdSpoolDir=" << at
       << "/%n\n"
          "ProctrackType=proctrack/linuxproc\nTaskPlugin=task/none\nJobAcctGatherType=jobacct_gather/none\n"
          "AccountingStorageType=accounting_storage/none\nSwitchType=switch/none\nMpiDefault=none\n"
          "SelectType=select/cons_tres\nSelectTypeParameters=CR_Core\nSchedulerType=sched/backfill\n"
          "SchedulerParameters=bf_interval=1,sched_interval=1\nReturnToService=2\nKillWait=2\n"
          // A node that is gone is noticed within seconds.
          "SlurmdTimeout=5\nMessageTimeout=5\nTCPTimeout=2\nSlurmctldDebug=info\nSlurmdDebug=info\n"
          "PartitionName=main Nodes=ALL Default=YES MaxTime=INFINITE State=UP\n";
  for (size_t i = 0; i < nodes_.size(); ++i) {
    fs::create_directories(folder_ / nodes_[i]);
    conf << "NodeName=" << nodes_[i] << " NodeHostname=" << host
         << " NodeAddr=127.0.0.1 Port=" << ports[i + 1] << " CPUs=2 RealMemory=500\n";
  }
}

/// A daemon in the foreground, its log in the folder.
std::unique_ptr<host::Process> Cluster::run(const std::string &name, std::vector<std::string> words) const {
  words.insert(words.begin(), {"sh", "-c", "PATH=$PATH:/usr/sbin; exec \"$@\" >>\"$0\" 2>&1",
                               (folder_ / (name + ".txt")).string()});
  return std::make_unique<host::Process>(words);
}

void Cluster::startNode(const std::string &node) { daemons_[node] = run(node, {"slurmd", "-D", "-N", node}); }

void Cluster::startNodeWithout(const std::string &folder, const std::string &node) {
  daemons_[node] = run(node, {"unshare", "--mount", "sh", "-c",
                              "mount -t tmpfs none \"$0\" && exec slurmd -D -N \"$1\"", folder, node});
}

void Cluster::kill(const std::string &node) {
  daemons_.erase(node);
  // Watchers first: nobody is to tell how tasks end.
  for (auto processes = processesOf(node); !processes.empty(); processes = processesOf(node)) {
    for (const pid_t process : processes)
      if (const pid_t watcher = watcherOf(process); watcher > 0)
        ::kill(watcher, SIGKILL);
    for (const pid_t process : processes)
      ::kill(process, SIGKILL);
  }
}

void Cluster::startController() { controller_ = run("slurmctld", {"slurmctld", "-D"}); }

void Cluster::stopController() {
  ask({"scontrol", "shutdown", "slurmctld"});
  controller_->wait();
}

std::string Cluster::ask(const std::vector<std::string> &words) {
  host::Process::Options options;
  options.output = host::Process::Stream::Pipe;
  host::Process process(words, options);
  std::string text;
  char buffer[4096];
  while (const size_t n = process.read(buffer, sizeof buffer))
    text.append(buffer, n);
  process.wait();
  return text;
}

std::string Cluster::logs() const {
  std::string text = "the cluster does not start";
  for (const auto &entry : fs::directory_iterator(folder_))
    if (entry.path().extension() == ".txt")
      text += '\n' + entry.path().filename().string() + ":\n" + contentsOf(entry.path());
  return text;
}

} // namespace zol::test
