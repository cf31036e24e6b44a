// A Slurm cluster of one's own: a controller and two nodes on this machine, all of it in one folder.
#pragma once

#include "host/media/process.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zol::test {

class Cluster {
public:
  /// What of it is not installed; empty: nothing.
  static std::string missing();

  /// Starts it and waits until it answers. From then on Slurm's commands in this process and its children are
  /// for this cluster. Throws std::runtime_error with what its logs say.
  explicit Cluster(std::filesystem::path folder);
  /// Ends all of its processes.
  ~Cluster();
  Cluster(const Cluster &) = delete;
  Cluster &operator=(const Cluster &) = delete;

  /// Two nodes with two processors each; their names are nobody else's.
  [[nodiscard]] const std::vector<std::string> &nodes() const { return nodes_; }
  void startNode(const std::string &node);
  /// The same, with another disk in the place of a folder; needs a superuser's rights.
  void startNodeWithout(const std::string &folder, const std::string &node);
  /// Ends a node and all that runs on it at once, as a machine that loses its power.
  void kill(const std::string &node);

  void stopController();
  void startController();

  /// What a command of Slurm prints.
  static std::string ask(const std::vector<std::string> &words);

private:
  void configure() const;
  std::unique_ptr<host::Process> run(const std::string &name, std::vector<std::string> words) const;
  [[nodiscard]] std::string logs() const;

  std::filesystem::path folder_;
  std::vector<std::string> nodes_;
  std::unique_ptr<host::Process> munge_, controller_;
  std::map<std::string, std::unique_ptr<host::Process>> daemons_;
};

/// Asks every tenth of a second, for a minute at most, whether it has come to be.
template <class Condition> bool comesToBe(Condition condition);

} // namespace zol::test

#include <chrono>
#include <thread>

template <class Condition> bool zol::test::comesToBe(Condition condition) {
  using namespace std::chrono_literals;
  for (const auto end = std::chrono::steady_clock::now() + 100s; std::chrono::steady_clock::now() < end;
       std::this_thread::sleep_for(100ms))
    if (condition())
      return true;
  return false;
}
