#include "host/render/join.h"

#include "host/model/error.h"

#include <algorithm>
#include <future>
#include <memory>
#include <utility>

namespace zol::host {
namespace {

struct Part {
  std::string file;
  PartFile info;
  PartRecord record;
};

std::string quoted(const std::string &file) { return '"' + file + '"'; }

std::string numbered(const PartRecord &record) {
  return "part " + std::to_string(record.number) + " of " + std::to_string(record.count);
}

Part readPart(const std::string &file, const MediaPrograms &programs) {
  Part part{file, readPartFile(file, kPartTag, programs), {}};
  const auto record = recordIn(part.info.tag);
  if (!record)
    throw HostError(quoted(file) + " is no part of a render");
  part.record = *record;
  return part;
}

/// A few at a time: each waits for a child.
std::vector<Part> readParts(const JoinPlan &plan) {
  constexpr size_t kAtOnce = 8;
  std::vector<Part> parts;
  for (size_t begin = 0; begin < plan.parts.size(); begin += kAtOnce) {
    std::vector<std::future<Part>> some;
    for (size_t i = begin; i < std::min(begin + kAtOnce, plan.parts.size()); ++i)
      some.push_back(std::async(std::launch::async, readPart, plan.parts[i], plan.programs));
    for (std::future<Part> &part : some)
      parts.push_back(part.get());
  }
  return parts;
}

/// Throws where they are not all of one render, each once. Puts them in order.
void checkParts(std::vector<Part> &parts) {
  const Part one = parts.front();
  for (const Part &part : parts)
    if (part.record.hash != one.record.hash)
      throw HostError(quoted(part.file) + " is a part of another render than " + quoted(one.file));
    else if (part.record.count != one.record.count || part.record.all != one.record.all)
      throw HostError(quoted(part.file) + " is " + numbered(part.record) + ", " + quoted(one.file) + " is " +
                      numbered(one.record));
    else if (part.info.codec != one.info.codec || part.info.extradata != one.info.extradata ||
             part.info.delay != one.info.delay)
      throw HostError(quoted(part.file) + " and " + quoted(one.file) + " were encoded by different encoders");
  std::sort(parts.begin(), parts.end(),
            [](const Part &a, const Part &b) { return a.record.number < b.record.number; });
  for (size_t i = 1; i < parts.size(); ++i)
    if (parts[i].record.number == parts[i - 1].record.number)
      throw HostError(quoted(parts[i - 1].file) + " and " + quoted(parts[i].file) + " are both " +
                      numbered(parts[i].record));
  std::string missing;
  auto part = parts.begin();
  for (int number = 1; number <= one.record.count; ++number)
    if (part != parts.end() && part->record.number == number)
      ++part;
    else
      missing += (missing.empty() ? "" : ", ") + std::to_string(number);
  if (!missing.empty())
    throw HostError("of " + std::to_string(one.record.count) + " parts are missing: " + missing);
}

std::vector<std::string> joinPictures(const JoinPlan &plan) {
  const std::string &pictures = plan.parts.front();
  if (plan.parts.size() > 1 || !plan.output.empty())
    throw HostError(quoted(pictures) + " is complete with its parts: it is named alone, without -o");
  std::vector<Part> parts;
  for (PartRecord &record : recordsBeside(pictures))
    parts.push_back({pictures, {}, std::move(record)});
  if (parts.empty())
    throw HostError(quoted(pictures) + " has no parts of a render");
  checkParts(parts);
  dropRecords(pictures);
  return {quoted(pictures) + " is complete: " + std::to_string(parts.front().record.all) + " pictures"};
}

} // namespace

std::vector<std::string> join(const JoinPlan &plan, const Progress &progress) {
  if (plan.parts.empty())
    throw HostError("no parts were named");
  if (std::any_of(plan.parts.begin(), plan.parts.end(), MediaWriter::isSequence))
    return joinPictures(plan);
  if (plan.output.empty())
    throw HostError("no output was named; give one with -o");
  if (MediaWriter::writesInPlace(plan.output) || kindOf(plan.output) != FileKind::moving)
    throw HostError("cannot join into \"" + plan.output + "\": parts become a film in a file");
  std::vector<Part> parts = readParts(plan);
  checkParts(parts);
  const PartRecord &record = parts.front().record;
  RenderPlan film = record.plan;
  film.output = plan.output;
  film.overwrite = plan.overwrite;
  film.programs = plan.programs;
  if (!record.codec.empty()) // sound may have one of its own
    film.codec = film.codec.empty() ? record.codec : film.codec + ',' + record.codec;
  JoinedParts joined;
  joined.frames = record.all;
  joined.pictures.codec = parts.front().info.codec;
  joined.pictures.encoder = parts.front().info.encoder;
  joined.pictures.delay = parts.front().info.delay;
  for (const Part &part : parts) {
    joined.pictures.files.push_back(part.file);
    joined.pictures.frames.push_back(part.record.frames);
  }
  RenderJob job(film, libraryOf(film), joined);
  job.run(progress);
  return job.notes();
}

} // namespace zol::host
