// The files that the page may read: those named at the start, those under a folder, those dropped on it.
#pragma once

#include "apps/studio/limits.h"
#include "host/media/probe.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace zol::studio {

/// Files go by ids: names without regard to their folders, or the way below the folder. Of all methods
/// several threads may be in any at once.
class FileStore {
public:
  /// Throws HostError for names that are none of a file or folder.
  FileStore(const std::vector<std::string> &named, const std::string &folder);
  ~FileStore();
  FileStore(const FileStore &) = delete;
  FileStore &operator=(const FileStore &) = delete;

  /// The file behind an id. Throws Refusal for what may not be read.
  [[nodiscard]] std::string path(const std::string &id) const;
  /// The file as a command of the user's names it: one that was dropped by its bare name.
  [[nodiscard]] std::string nameForCommands(const std::string &id) const;
  /// The id of a file that a preset names; empty where the page may not read it.
  [[nodiscard]] std::string idOf(const std::string &file) const;

  /// {id, ...} of all, those of the folder up to a number.
  [[nodiscard]] nlohmann::json list() const;
  /// What is in it: {id, kind, width, height, duration, rate, sound}. Throws Refusal.
  [[nodiscard]] nlohmann::json describe(const std::string &id);

  /// A file that is being dropped.
  class Drop {
  public:
    explicit Drop(FileStore &store, const std::string &name);
    ~Drop();
    Drop(const Drop &) = delete;
    Drop &operator=(const Drop &) = delete;
    /// False where it gets too large or the disk is full.
    bool write(const char *data, size_t size);
    /// Looks into it and keeps it: its id. Throws Refusal for what is no media file.
    std::string keep();

  private:
    FileStore &store_;
    std::string name_;
    std::filesystem::path file_;
    int fd_;
    uint64_t size_ = 0;
    bool kept_ = false;
  };

private:
  std::string add(const std::filesystem::path &file, const std::string &name, bool dropped);
  host::MediaInfo look(const std::string &id);

  struct Known {
    std::filesystem::path file; ///< canonical
    bool dropped;
  };
  mutable std::mutex mutex_;
  std::vector<std::string> order_;
  std::map<std::string, Known> known_;
  std::map<std::string, host::MediaInfo> infos_;
  std::filesystem::path folder_, drops_;
  std::atomic<uint64_t> droppedBytes_ = 0;
  unsigned dropCount_ = 0;
};

} // namespace zol::studio
