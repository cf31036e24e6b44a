#include "host/render/stage.h"

#include "host/model/error.h"
#include "host/model/text.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zol::host {
namespace {

/// The picture where it stands within a frame of the given size; null when memory runs out.
std::unique_ptr<PictureBuffer> placed(std::unique_ptr<PictureBuffer> picture, int width, int height) {
  const pic &from = *picture->record();
  if (from.X == 0 && from.Y == 0 && from.Width == width && from.Height == height)
    return picture;
  auto frame = PictureBuffer::make(width, height);
  if (frame == nullptr)
    return nullptr;
  const int left = std::max<int>(from.X, 0);
  const int right = std::min<int>(from.X + from.Width, width);
  for (int y = std::max<int>(from.Y, 0); left < right && y < std::min<int>(from.Y + from.Height, height); ++y)
    std::memcpy(frame->record()->Pixels + static_cast<ptrdiff_t>(y) * width + left,
                from.Pixels + static_cast<ptrdiff_t>(y - from.Y) * from.Width + (left - from.X),
                static_cast<size_t>(right - left) * sizeof(_color_t));
  return frame;
}

} // namespace

Stage::Stage(const Effect &effect, const std::string &identity, const Timeline &timeline, bool realTime,
             Clip *defaultClip)
    : instance_(effect, identity, timeline, defaultClip), timeline_(timeline),
      realTime_(effect.renderVideoRT != nullptr && (realTime || effect.renderVideo == nullptr)) {
  checkRenders(effect);
}

void Stage::checkRenders(const Effect &effect) {
  if (!makesPictures(effect) && !makesSound(effect))
    throw HostError("\"" + effect.name + "\" is declared but does not render yet");
}

bool Stage::movesTime(const Effect &effect) {
  return effect.name.starts_with("Time/") ||
         std::any_of(effect.fields.begin(), effect.fields.end(),
                     [](const Field &field) { return field.type == FieldType::media; });
}

const std::string &Stage::fieldName(int field) const {
  return instance_.effect().fields[static_cast<size_t>(field)].name;
}

void Stage::fail(double time) {
  Session &session = instance_.session();
  if (session.inputError)
    std::rethrow_exception(std::exchange(session.inputError, nullptr));
  std::string reason = session.faults.aborted() ? "stopped" : "rendered nothing";
  if (const int field = instance_.missingInput(); field >= 0 && !session.faults.aborted())
    reason += "; its input \"" + fieldName(field) + "\" has no file";
  for (const auto &message : session.messages)
    if (message)
      reason = *message;
  throw HostError("\"" + instance_.effect().name + "\" at " + numberText(time) + " s: " + reason);
}

/// The context as every render finds it, the time aside.
t_ZoHostInfo &Stage::prepare() {
  Session &session = instance_.session();
  session.messages.clear();
  timeline_.describe(*session.info());
  return *session.info();
}

std::unique_ptr<PictureBuffer> Stage::video(double time) {
  Session &session = instance_.session();
  const Session::Use use(session);
  t_ZoHostInfo &info = prepare();
  info.FrameTime = time;
  info.Time = time / timeline_.duration;
  std::unique_ptr<PictureBuffer> result;
  if (realTime_)
    result = realTimeVideo(time);
  else if (pic *picture = instance_.effect().renderVideo(&info))
    result = session.pictures.take(picture);
  if (result != nullptr)
    result = placed(std::move(result), timeline_.width, timeline_.height);
  if (result == nullptr)
    fail(time);
  return result;
}

/// Filters get their own input first and the background second, but under "Halvenor" the inputs come in
/// the order of their fields.
std::unique_ptr<PictureBuffer> Stage::realTimeVideo(double time) {
  Session &session = instance_.session();
  t_ZoHostInfo &info = *session.info();
  std::vector<int> fields = instance_.inputFields();
  if (!sameWithoutCase(info.Identity, "Halvenor"))
    std::stable_partition(fields.begin(), fields.end(),
                          [&](int field) { return fieldName(field) != "Background"; });
  for (size_t i = 0; i < std::size(info.InputBuffers); ++i) {
    info.InputBuffers[i] = nullptr;
    if (i >= fields.size())
      continue;
    const auto *slots = session.parameters.inputs.find(fields[i], 0);
    Clip *clip = slots == nullptr || slots->empty() ? nullptr : slots->front();
    if (clip == nullptr)
      throw HostError("\"" + instance_.effect().name + "\" needs its input \"" + fieldName(fields[i]) + "\"");
    pic *picture = clip->frame(time, info.Width, info.Height);
    if (picture == nullptr || picture->Width != info.Width || picture->Height != info.Height)
      fail(time);
    info.InputBuffers[i] = picture->Pixels;
  }
  auto output = PictureBuffer::make(info.Width, info.Height);
  if (output == nullptr)
    fail(time);
  info.OutputBuffer = output->record()->Pixels;
  return instance_.effect().renderVideoRT(&info) == 1 ? std::move(output) : nullptr;
}

std::unique_ptr<AudioBuffer> Stage::audio(double from, double to) {
  Session &session = instance_.session();
  const Session::Use use(session);
  t_ZoHostInfo &info = prepare();
  info.BlockStart = from;
  info.BlockEnd = to;
  t_ZoAudio *block = instance_.effect().renderAudio(&info);
  auto result = block == nullptr ? nullptr : session.audio.take(block);
  if (result == nullptr)
    fail(from);
  return result;
}

pic *StageClip::frame(double time, int width, int height) {
  for (const Rendered &known : pictures_)
    if (known.time == time)
      return scaled_.at(known.picture->record(), width, height);
  pictures_.push_back({time, stage_.video(time)});
  return scaled_.at(pictures_.back().picture->record(), width, height);
}

bool StageClip::describe(t_ZoMediaInfo &info) const {
  const Timeline &timeline = stage_.timeline();
  info = {};
  info.Rate = timeline.rate.value();
  info.Duration = timeline.duration;
  info.Width = timeline.width;
  info.Height = timeline.height;
  info.HasVideo = Stage::makesPictures(stage_.effect());
  info.HasAudio = Stage::makesSound(stage_.effect());
  return true;
}

t_ZoAudio *StageClip::audio(double from, double to) {
  blocks_.push_back(stage_.audio(from, to));
  return blocks_.back()->record();
}

void StageClip::release() {
  pictures_.clear();
  scaled_.clear();
  blocks_.clear();
}

} // namespace zol::host
