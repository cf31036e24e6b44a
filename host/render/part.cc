#include "host/render/part.h"

#include "host/media/format.h"
#include "host/media/output_file.h"
#include "host/media/sequence.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/model/text_file.h"
#include "host/render/output.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace zol::host {

const char kPartTag[] = "ZOL_PART";

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// ---- What decides the pictures ----

/// FNV-1a, 64 bits.
class Sum {
public:
  void add(std::string_view bytes) {
    for (const char c : bytes)
      value_ = (value_ ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  }
  [[nodiscard]] std::string text() const {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (int shift = 60; shift >= 0; shift -= 4)
      text += kDigits[value_ >> shift & 15];
    return text;
  }

private:
  uint64_t value_ = 0xCBF29CE484222325;
};

std::string sumOfFile(const std::string &file) {
  Sum sum;
  std::ifstream stream(file, std::ios::binary);
  std::array<char, 65536> block{};
  while (stream.read(block.data(), block.size()), stream.gcount() > 0)
    sum.add({block.data(), static_cast<size_t>(stream.gcount())});
  return sum.text();
}

/// Size and time of change of a file, or of all pictures of a sequence.
Json identityOf(const std::string &file) {
  const auto one = [](const std::string &name) {
    std::error_code error;
    const auto size = fs::file_size(name, error);
    const auto changed = fs::last_write_time(name, error).time_since_epoch().count();
    return error ? Json() : Json::array({size, changed});
  };
  std::error_code error;
  const auto sequence = fs::exists(file, error) ? std::nullopt : sequenceNamed(file);
  if (!sequence)
    return Json::array({file, one(file)});
  Sum sum;
  for (int i = sequence->first; i < sequence->first + sequence->count; ++i)
    sum.add(one(sequence->file(i)).dump());
  return Json::array({file, sequence->first, sequence->count, sum.text()});
}

bool isStream(const std::string &file) {
  std::error_code error;
  const auto status = fs::status(file, error);
  return file == "-" || (fs::exists(status) && !fs::is_regular_file(status));
}

std::string absolute(const std::string &file) { return file == "-" ? file : fs::absolute(file).string(); }

/// The files that a plan with absolute paths reads.
std::vector<std::string> filesOf(const RenderPlan &plan, const EffectLibrary &library) {
  std::vector<std::string> files;
  for (const InputPlan &input : ChainSetup(plan, library).inputs)
    files.push_back(input.file);
  for (const StagePlan &stage : plan.stages)
    for (const auto &[field, value] : stage.settings)
      if (value.starts_with('@'))
        files.push_back(value.substr(1));
  return files;
}

/// The plan without what pictures do not depend on.
Json deciding(RenderPlan plan) {
  plan.output.clear();
  plan.library.clear();
  plan.codec.clear();
  plan.threads.reset();
  plan.overwrite = false;
  plan.part.reset();
  return toJson(plan);
}

std::string dumped(const Json &json) {
  try {
    return json.dump();
  } catch (const Json::exception &) {
    throw HostError("parts cannot be rendered: a name in the plan is no UTF-8");
  }
}

} // namespace

RenderPlan withAbsolutePaths(RenderPlan plan, const EffectLibrary &library) {
  for (StagePlan &stage : plan.stages) {
    for (InputPlan &input : stage.inputs)
      input.file = absolute(input.file);
    const Effect &effect = library.effect(stage.effect);
    for (auto &[field, value] : stage.settings)
      if (takesFile(effect, field))
        value = absolute(value);
      else if (value.starts_with('@'))
        value = '@' + absolute(value.substr(1));
  }
  plan.output = absolute(plan.output);
  if (!plan.library.empty())
    plan.library = absolute(plan.library);
  return plan;
}

const std::string &fileOfPart(const RenderPlan &plan) {
  return plan.part->file.empty() ? plan.output : plan.part->file;
}

PartRecord recordOf(const RenderPlan &plan, const EffectLibrary &library) {
  const PartPlan &part = plan.part.value();
  const std::string &file = fileOfPart(plan);
  if (part.number < 1 || part.number > part.count)
    throw HostError("--segment: there is no part " + std::to_string(part.number) + " of " +
                    std::to_string(part.count));
  const ChainSetup setup(plan, library);
  checkOutput(plan, setup);
  if (setup.sound)
    throw HostError("--segment: parts are of pictures; sound is rendered as a whole");
  const EncodingChoice choice = encodingOf(plan);
  if (file == "-" || MediaWriter::isStill(file) || MediaWriter::isStill(plan.output) ||
      (!MediaWriter::isSequence(file) && formatOf(file, choice).muxer != "matroska") ||
      MediaWriter::isSequence(file) != MediaWriter::isSequence(plan.output))
    throw HostError("--segment: a part is a Matroska file, such as part-" + std::to_string(part.number) +
                    ".mkv, or has numbered pictures, such as frame-%06d.png, not \"" + file + '"');
  PartRecord record;
  record.number = part.number;
  record.count = part.count;
  record.plan = withAbsolutePaths(plan, library);
  record.plan.part.reset();
  record.codec = pictureCodec(formatOf(plan.output, choice), plan.output, choice);
  Json decides{{"plan", deciding(record.plan)},
               {"codec", record.codec},
               {"library", sumOfFile(EffectLibrary::fileFor(plan.library))},
               {"program", sumOfFile("/proc/self/exe")}};
  for (const std::string &name : filesOf(record.plan, library)) {
    if (isStream(name))
      throw HostError("--segment: \"" + name + "\" can be read only once, and parts are rendered of files");
    decides["files"].push_back(identityOf(name));
  }
  Sum sum;
  sum.add(dumped(decides));
  record.hash = sum.text();
  return record;
}

RenderPlan planOfPart(const RenderPlan &plan, const PartRecord &record) {
  RenderPlan own = plan;
  own.output = fileOfPart(plan);
  own.codec = record.codec;
  own.noSound = true;
  return own;
}

void cutPart(PartRecord &record, uint64_t first, uint64_t all) {
  const auto parts = static_cast<uint64_t>(record.count), before = static_cast<uint64_t>(record.number - 1);
  if (all < parts)
    throw HostError("--segment: " + std::to_string(all) + " frames cannot be cut into " +
                    std::to_string(parts) + " parts");
  record.all = all;
  record.first = first + all * before / parts;
  record.frames = first + all * (before + 1) / parts - record.first;
}

// ---- Records ----

namespace {

/// All but the plan.
template <class Record, class Visit> void forEachMember(Record &record, Visit visit) {
  visit("hash", record.hash);
  visit("number", record.number);
  visit("count", record.count);
  visit("first", record.first);
  visit("frames", record.frames);
  visit("all", record.all);
  visit("codec", record.codec);
}

} // namespace

std::string textOf(const PartRecord &record) {
  Json json{{"plan", toJson(record.plan)}};
  forEachMember(record, [&](const char *name, const auto &member) { json[name] = member; });
  return dumped(json);
}

std::optional<PartRecord> recordIn(const std::string &text) {
  try {
    const Json json = Json::parse(text);
    PartRecord record;
    forEachMember(record, [&](const char *name, auto &member) { json.at(name).get_to(member); });
    record.plan = planFromJson(json.at("plan"));
    return record;
  } catch (const Json::exception &) {
    return std::nullopt;
  } catch (const HostError &) {
    return std::nullopt;
  }
}

namespace {

bool isSame(const PartRecord &a, const PartRecord &b) {
  return a.hash == b.hash && a.number == b.number && a.count == b.count;
}

// ---- Of numbered pictures ----

/// What the names of records begin with.
std::string recordName(const fs::path &pictures) { return '.' + pictures.filename().string() + ".part-"; }

std::vector<fs::path> recordFiles(const fs::path &pictures) {
  std::vector<fs::path> files;
  std::error_code error;
  const fs::path folder = pictures.has_parent_path() ? pictures.parent_path() : fs::path(".");
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    if (entry->path().filename().string().starts_with(recordName(pictures)))
      files.push_back(entry->path());
  return files;
}

fs::path recordFile(const fs::path &pictures, const PartRecord &record) {
  return pictures.parent_path() /
         (recordName(pictures) + std::to_string(record.number) + "-of-" + std::to_string(record.count));
}

/// A sum over sizes and times of change of a part's pictures.
std::string sumOfPictures(const std::string &pictures, const PartRecord &record) {
  Sum sum;
  for (uint64_t i = 0; i < record.frames; ++i)
    sum.add(identityOf(numberedFile(pictures, record.first + i))[1].dump());
  return sum.text();
}

struct KeptRecord {
  std::string sum;
  PartRecord record;
};

std::optional<KeptRecord> readRecord(const fs::path &file) {
  std::ifstream stream(file, std::ios::binary);
  std::string sum, text;
  std::getline(stream, sum);
  std::getline(stream, text);
  auto record = recordIn(text);
  return record ? std::optional(KeptRecord{sum, std::move(*record)}) : std::nullopt;
}

bool holds(const KeptRecord &kept, const std::string &pictures) {
  return kept.sum == sumOfPictures(pictures, kept.record);
}

} // namespace

void keepRecord(const std::string &pictures, const PartRecord &record) {
  std::error_code error;
  for (const fs::path &other : recordFiles(pictures))
    if (const auto kept = readRecord(other); kept && kept->record.hash != record.hash)
      fs::remove(other, error);
  const fs::path file = recordFile(pictures, record);
  writeTextFile(file, sumOfPictures(pictures, record) + '\n' + textOf(record) + '\n');
}

std::vector<PartRecord> recordsBeside(const std::string &pictures) {
  std::vector<PartRecord> records;
  for (const fs::path &file : recordFiles(pictures))
    if (auto kept = readRecord(file); kept && holds(*kept, pictures))
      records.push_back(std::move(kept->record));
  return records;
}

void dropRecords(const std::string &pictures) {
  std::error_code ignored;
  for (const fs::path &file : recordFiles(pictures))
    fs::remove(file, ignored);
}

bool isDone(const RenderPlan &plan, const EffectLibrary &library) {
  const PartRecord wanted = recordOf(plan, library);
  const std::string &file = fileOfPart(plan);
  if (MediaWriter::isSequence(file)) {
    const auto kept = readRecord(recordFile(file, wanted));
    return kept && isSame(kept->record, wanted) && holds(*kept, file);
  }
  std::error_code error;
  if (!fs::is_regular_file(file, error))
    return false;
  try {
    const auto found = recordIn(readPartFile(file, kPartTag, plan.programs).tag);
    return found && isSame(*found, wanted);
  } catch (const HostError &) { // anything else
    return false;
  }
}

} // namespace zol::host
