#include "apps/studio/files.h"

#include "apps/studio/reply.h"
#include "host/media/source.h"
#include "host/model/error.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <system_error>
#include <unistd.h>

namespace zol::studio {
namespace {

namespace fs = std::filesystem;

constexpr char kInFolder[] = "folder/"; // before ids of files in the folder

bool isWithin(const fs::path &file, const fs::path &folder) {
  const auto [f, rest] = std::mismatch(folder.begin(), folder.end(), file.begin(), file.end());
  return f == folder.end() && rest != file.end();
}

/// The last part of a name as a browser tells it, as a name that any file system takes.
std::string cleanName(const std::string &name) {
  constexpr size_t kLongest = 120;
  std::string clean;
  for (const char c : name.substr(name.find_last_of("/\\") + 1))
    if (static_cast<unsigned char>(c) >= ' ' && c != 127)
      clean += c == '%' ? '_' : c;
  clean.erase(0, clean.find_first_not_of(". "));
  if (clean.size() > kLongest)
    clean.erase(0, clean.size() - kLongest); // the extension stays
  return clean.empty() ? "file" : clean;
}

/// By its extension alone.
bool looksLikeMedia(const fs::path &file) {
  static const std::vector<std::string> extensions = {
      ".jpg", ".jpeg", ".png", ".gif",  ".webp", ".tif", ".tiff", ".bmp", ".tga", ".exr", ".dpx",
      ".mp4", ".mov",  ".mkv", ".webm", ".avi",  ".mts", ".m2ts", ".mpg", ".ts",  ".mxf", ".m4v",
      ".wav", ".flac", ".mp3", ".ogg",  ".m4a",  ".aac", ".opus", ".aif", ".aiff"};
  std::string extension = file.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

} // namespace

FileStore::FileStore(const std::vector<std::string> &named, const std::string &folder) {
  std::error_code error;
  for (const std::string &name : named) {
    const fs::path file = fs::canonical(name, error);
    if (error || !fs::is_regular_file(file, error))
      throw host::HostError("cannot read " + name + ": " + (error ? error.message() : "no plain file"));
    add(file, file.filename().string(), false);
  }
  if (!folder.empty()) {
    folder_ = fs::canonical(folder, error);
    if (error || !fs::is_directory(folder_, error))
      throw host::HostError("cannot read " + folder + ": " + (error ? error.message() : "no folder"));
  }
  std::string place = (fs::temp_directory_path() / "zol-studio-XXXXXX").string();
  if (mkdtemp(place.data()) == nullptr)
    throw host::HostError("cannot write " + place + ": " + std::generic_category().message(errno));
  drops_ = place;
}

FileStore::~FileStore() {
  std::error_code error;
  fs::remove_all(drops_, error);
}

std::string FileStore::add(const fs::path &file, const std::string &name, bool dropped) {
  const std::lock_guard lock(mutex_);
  std::string id = name;
  for (int count = 2; known_.contains(id); ++count)
    id = fs::path(name).stem().string() + " (" + std::to_string(count) + ')' +
         fs::path(name).extension().string();
  known_[id] = {file, dropped};
  order_.push_back(id);
  return id;
}

std::string FileStore::path(const std::string &id) const {
  {
    const std::lock_guard lock(mutex_);
    if (const auto found = known_.find(id); found != known_.end())
      return found->second.file.string();
  }
  const Refusal unknown(kNotFound, "no file \"" + id + "\"; drop it on the page again");
  if (folder_.empty() || !id.starts_with(kInFolder) || id.find('\0') != id.npos)
    throw unknown;
  std::error_code error;
  const fs::path file = fs::canonical(folder_ / id.substr(sizeof kInFolder - 1), error);
  if (error || !fs::is_regular_file(file, error))
    throw unknown;
  if (!isWithin(file, folder_))
    throw Refusal(kForbidden, "\"" + id + "\" leads out of the folder");
  return file.string();
}

std::string FileStore::nameForCommands(const std::string &id) const {
  const std::string file = path(id);
  return isWithin(file, drops_) ? fs::path(file).filename().string() : file;
}

std::string FileStore::idOf(const std::string &file) const {
  std::error_code error;
  const fs::path whole = fs::canonical(file, error);
  const std::lock_guard lock(mutex_);
  for (const auto &[id, known] : known_)
    if (known.file == whole || (known.dropped && known.file.filename() == file))
      return id;
  if (!error && !folder_.empty() && isWithin(whole, folder_))
    return kInFolder + fs::relative(whole, folder_, error).string();
  return "";
}

nlohmann::json FileStore::list() const {
  nlohmann::json files = nlohmann::json::array();
  {
    const std::lock_guard lock(mutex_);
    for (const std::string &id : order_)
      files.push_back({{"id", id}});
  }
  if (folder_.empty())
    return files;
  std::vector<std::string> below;
  std::error_code error;
  const auto options = fs::directory_options::skip_permission_denied;
  for (fs::recursive_directory_iterator entry(folder_, options, error), end;
       !error && entry != end && below.size() < kMostListed; entry.increment(error))
    if (!entry->is_symlink(error) && entry->is_regular_file(error) && looksLikeMedia(entry->path()))
      below.push_back(kInFolder + entry->path().lexically_relative(folder_).string());
  std::sort(below.begin(), below.end());
  for (const std::string &id : below)
    files.push_back({{"id", id}});
  return files;
}

host::MediaInfo FileStore::look(const std::string &id) {
  const std::string file = path(id);
  {
    const std::lock_guard lock(mutex_);
    if (const auto found = infos_.find(file); found != infos_.end())
      return found->second;
  }
  host::MediaInfo info = host::probe(file);
  const std::lock_guard lock(mutex_);
  if (infos_.size() > kMostListed)
    infos_.clear();
  return infos_[file] = std::move(info);
}

nlohmann::json FileStore::describe(const std::string &id) try {
  const host::MediaInfo info = look(id);
  return {{"id", id},
          {"kind", !info.hasVideo ? "sound"
                   : info.still   ? "still"
                                  : "clip"},
          {"width", info.width},
          {"height", info.height},
          {"duration", info.duration},
          {"rate", info.hasVideo && !info.still ? info.frameRate.text() : ""},
          {"sound", info.hasAudio}};
} catch (const host::HostError &error) {
  throw Refusal(kNotRenderable, error.what());
}

FileStore::Drop::Drop(FileStore &store, const std::string &name) : store_(store), name_(cleanName(name)) {
  fs::path folder;
  {
    const std::lock_guard lock(store_.mutex_);
    folder = store_.drops_ / std::to_string(++store_.dropCount_);
  }
  std::error_code error;
  fs::create_directory(folder, error);
  file_ = folder / name_;
  fd_ = open(file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
}

FileStore::Drop::~Drop() {
  if (fd_ >= 0)
    close(fd_);
  if (kept_)
    return;
  store_.droppedBytes_ -= size_;
  std::error_code error;
  fs::remove_all(file_.parent_path(), error);
}

bool FileStore::Drop::write(const char *data, size_t size) {
  size_ += size;
  if ((store_.droppedBytes_ += size) > kAllDrops || size_ > kLargestDrop)
    return false;
  while (size > 0) {
    const ssize_t written = ::write(fd_, data, size);
    if (written < 0 && errno == EINTR)
      continue;
    if (written <= 0)
      return false;
    data += written;
    size -= static_cast<size_t>(written);
  }
  return true;
}

std::string FileStore::Drop::keep() {
  try {
    (void)host::probe(file_.string());
  } catch (const host::HostError &) {
    throw Refusal(kNotRenderable, "\"" + name_ + "\" holds neither pictures nor sound that can be read");
  }
  kept_ = true;
  return store_.add(file_, name_, true);
}

} // namespace zol::studio
