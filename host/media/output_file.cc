#include "host/media/output_file.h"

#include "host/media/probe.h"
#include "host/model/text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string &file, const std::string &why) {
  throw HostError("cannot write " + file + ": " + why);
}

fs::path folderOf(const fs::path &file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

void checkFolder(const std::string &file, const fs::path &folder) {
  if (access(folder.c_str(), F_OK) != 0 || access(folder.c_str(), W_OK | X_OK) != 0)
    refuse(file, errorMessage(errno));
}

// ---- Names of unfinished work: ".name.zol-abcdefghijkl.ext" ----

constexpr std::string_view kMark = ".zol-";
constexpr size_t kLetters = 12;

fs::path partialName(const fs::path &target) {
  constexpr size_t kKeptOfName = 180; // the name must not become too long
  std::random_device random;
  std::string name(1, '.');
  name.append(target.stem().string(), 0, kKeptOfName).append(kMark);
  for (size_t i = 0; i < kLetters; ++i)
    name += static_cast<char>('a' + random() % 26);
  return folderOf(target) / name.append(target.extension().string());
}

bool isPartialName(std::string_view name) {
  const size_t mark = name.rfind(kMark);
  if (!name.starts_with('.') || mark == name.npos)
    return false;
  name.remove_prefix(mark + kMark.size());
  return name.size() >= kLetters && (name.size() == kLetters || name[kLetters] == '.') &&
         std::all_of(name.begin(), name.begin() + kLetters, [](char c) { return c >= 'a' && c <= 'z'; });
}

/// Whoever works on a place has it locked; a lock goes with its process.
bool lock(const Descriptor &place) { return flock(place.get(), LOCK_EX | LOCK_NB) == 0; }

/// Removes what nobody works on any more. A folder is looked through once.
void clearLeftovers(const fs::path &folder) {
  static std::mutex mutex;
  static std::set<fs::path> seen;
  {
    const std::lock_guard guard(mutex);
    if (!seen.insert(folder).second)
      return;
  }
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (!isPartialName(entry->path().filename().string()))
      continue;
    const Descriptor place(open(entry->path().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    std::error_code ignored;
    if (place && lock(place))
      fs::remove_all(entry->path(), ignored);
  }
}

/// Makes a place by `create`, which yields its descriptor, and holds its lock. Between the two another
/// process may take it for a leftover: then there is another name.
template <class Create> fs::path makePlace(const fs::path &target, Descriptor &held, Create create) {
  for (;;) {
    fs::path name = partialName(target);
    held = Descriptor(create(name));
    if (!held)
      throw HostError(errorMessage(errno));
    struct stat status {};
    if (!lock(held) || (fstat(held.get(), &status) == 0 && status.st_nlink > 0))
      return name; // without a lock where the file system has none
  }
}

int createFile(const fs::path &name) {
  return open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
}

int createFolder(const fs::path &name) {
  return mkdir(name.c_str(), 0777) == 0 ? open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
}

/// 0 or the error number.
int moveTo(const fs::path &from, const fs::path &to, bool overwrite) {
  int result = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(),
                         overwrite ? 0U : static_cast<unsigned>(RENAME_NOREPLACE));
  if (result != 0 && errno == EINVAL) // a file system that cannot refuse
    result = rename(from.c_str(), to.c_str());
  return result == 0 ? 0 : errno;
}

[[noreturn]] void failMoving(int error) {
  throw HostError(error == EEXIST ? "the file exists" : errorMessage(error));
}

// ---- One file ----

/// Behind all symbolic links, also behind the last one to a file that is not there yet.
fs::path behindLinks(fs::path file) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks && fs::is_symlink(file, error); ++i)
    file = folderOf(file) / fs::read_symlink(file, error);
  return file;
}

class OutputFile : public Output {
public:
  OutputFile(const std::string &file, bool overwrite) : target_(behindLinks(file)), overwrite_(overwrite) {
    std::error_code error;
    const fs::file_status status = fs::status(target_, error);
    if (fs::is_directory(status))
      refuse(file, errorMessage(EISDIR));
    if (status.type() == fs::file_type::none)
      refuse(file, error.message());
    inPlace_ = fs::exists(status) && !fs::is_regular_file(status);
    if (inPlace_)
      return;
    if (fs::exists(status) && !overwrite)
      refuse(file, "the file exists");
    checkFolder(file, folderOf(target_));
  }
  ~OutputFile() override {
    if (!partial_.empty())
      unlink(partial_.c_str());
    for (const Spare &spare : spares_)
      unlink(spare.file.c_str());
  }

  std::string begin() override {
    if (inPlace_)
      return fileUrl(target_.string());
    clearLeftovers(folderOf(target_));
    partial_ = makePlace(target_, held_, createFile);
    place_ = partial_.string();
    return fileUrl(place_);
  }

  void publish() override {
    if (inPlace_)
      return;
    struct stat before {};
    if (overwrite_ && stat(target_.c_str(), &before) == 0)
      fchmod(held_.get(), before.st_mode & 07777);
    if (const int error = moveTo(partial_, target_, overwrite_); error != 0)
      failMoving(error);
    partial_.clear();
  }

  [[nodiscard]] const std::string &place() const override { return place_; }

  std::string spare() override {
    if (inPlace_)
      return {};
    clearLeftovers(folderOf(target_));
    Spare spare;
    spare.file = makePlace(target_, spare.held, createFile);
    return spares_.emplace_back(std::move(spare)).file.string();
  }

private:
  struct Spare {
    fs::path file;
    Descriptor held;
  };
  fs::path target_, partial_;
  bool overwrite_, inPlace_ = false;
  Descriptor held_;
  std::vector<Spare> spares_;
  std::string place_;
};

class OutputStream : public Output {
public:
  std::string begin() override { return "pipe:1"; }
  void publish() override {}
  [[nodiscard]] const std::string &place() const override { return place_; }
  std::string spare() override { return {}; }

private:
  std::string place_;
};

// ---- Numbered pictures ----

/// The parts of a name around its number.
struct Pattern {
  std::string before, after;
  int digits = 1;

  [[nodiscard]] std::string name(uint64_t number) const {
    return before + paddedText(number, static_cast<size_t>(digits)) + after;
  }
  /// The number in a name; nothing where it is not such a name.
  [[nodiscard]] std::optional<uint64_t> numberIn(std::string_view name) const {
    if (name.size() < before.size() + after.size() + static_cast<size_t>(digits) ||
        !name.starts_with(before) || !name.ends_with(after))
      return std::nullopt;
    name = name.substr(before.size(), name.size() - before.size() - after.size());
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return end == name.data() + name.size() && error == std::errc() ? std::optional(number) : std::nullopt;
  }
};

std::optional<Pattern> patternIn(const std::string &name) {
  const size_t at = name.find('%');
  if (at == name.npos || name.find('%', at + 1) != name.npos)
    return std::nullopt;
  const size_t end = name.find_first_not_of("0123456789", at + 1);
  if (end == name.npos || name[end] != 'd' || end > at + 3 || (end > at + 1 && name[at + 1] != '0'))
    return std::nullopt;
  const int digits = integerIn(std::string_view(name).substr(at + 1, end - at - 1)).value_or(1);
  return Pattern{name.substr(0, at), name.substr(end + 1), std::max(digits, 1)};
}

class OutputSequence : public Output {
public:
  OutputSequence(const std::string &file, Pattern pattern, bool overwrite,
                 std::optional<std::pair<uint64_t, uint64_t>> numbers)
      : target_(file), folder_(folderOf(target_)), pattern_(std::move(pattern)), overwrite_(overwrite) {
    checkFolder(file, folder_);
    std::error_code error;
    for (fs::directory_iterator entry(folder_, error), end; !error && !overwrite && entry != end;
         entry.increment(error)) {
      const std::string name = entry->path().filename().string();
      if (const auto number = pattern_.numberIn(name);
          number && (!numbers || (*number >= numbers->first && *number < numbers->second)))
        refuse(file, name + " exists");
    }
  }
  ~OutputSequence() override {
    std::error_code ignored;
    if (!partial_.empty())
      fs::remove_all(partial_, ignored);
  }

  std::string begin() override {
    clearLeftovers(folder_);
    partial_ = makePlace(folder_ / "pictures", held_, createFolder);
    place_ = partial_.string();
    std::string url = fileUrl(place_);
    for (size_t at = 0; (at = url.find('%', at)) != url.npos; at += 2)
      url.insert(at, 1, '%');
    return url + "/%d" + target_.extension().string();
  }

  /// All of them; where one cannot be moved, those before it are taken back.
  void publish() override {
    std::vector<std::pair<uint64_t, fs::path>> written;
    for (const auto &entry : fs::directory_iterator(partial_))
      written.emplace_back(std::stoull(entry.path().stem().string()), entry.path());
    std::sort(written.begin(), written.end());
    for (size_t i = 0; i < written.size(); ++i) {
      const int error = moveTo(written[i].second, folder_ / pattern_.name(written[i].first), overwrite_);
      if (error == 0)
        continue;
      for (; i > 0; --i)
        moveTo(folder_ / pattern_.name(written[i - 1].first), written[i - 1].second, false);
      failMoving(error);
    }
  }

  [[nodiscard]] const std::string &place() const override { return place_; }
  std::string spare() override { return {}; }

private:
  fs::path target_, folder_, partial_;
  Pattern pattern_;
  bool overwrite_;
  Descriptor held_;
  std::string place_;
};

} // namespace

bool hasNumber(const std::string &file) { return patternIn(fs::path(file).filename().string()).has_value(); }

std::unique_ptr<Output> makeOutputFile(const std::string &file, bool overwrite) {
  if (file == "-")
    return std::make_unique<OutputStream>();
  return std::make_unique<OutputFile>(file, overwrite);
}

std::unique_ptr<Output> makeOutputSequence(const std::string &file, bool overwrite,
                                           std::optional<std::pair<uint64_t, uint64_t>> numbers) {
  return std::make_unique<OutputSequence>(file, patternIn(fs::path(file).filename().string()).value(),
                                          overwrite, numbers);
}

std::string numberedFile(const std::string &file, uint64_t number) {
  const fs::path path(file);
  return (path.parent_path() / patternIn(path.filename().string()).value().name(number)).string();
}

} // namespace zol::host
