#include "apps/studio/preview.h"

#include "apps/studio/reply.h"
#include "host/model/error.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

namespace zol::studio {
namespace {

using host::HostError;

void put(const _color_t *pixels, int width, int height, Shown &shown) {
  shown.width = width;
  shown.height = height;
  shown.rgba.resize(static_cast<size_t>(width) * height * 4);
  unsigned char alphas = 255;
  for (size_t i = 0; i < shown.rgba.size() / 4; ++i) {
    const _color_t color = pixels[i];
    const unsigned char bytes[] = {color.r, color.g, color.b, color.a};
    std::memcpy(&shown.rgba[i * 4], bytes, sizeof bytes);
    alphas &= color.a;
  }
  shown.opaque = alphas == 255;
}

/// Whole pixels that the box holds, in the picture's proportions; never more than there are.
std::pair<int, int> sizeWithin(const host::Timeline &whole, std::pair<int, int> box) {
  const double scale = std::min(
      {1.0, box.first / (whole.width * whole.pixelAspect), box.second / static_cast<double>(whole.height)});
  const auto side = [&](int length) { return std::max(1, static_cast<int>(std::lround(length * scale))); };
  return {side(whole.width), side(whole.height)};
}

/// The same in a size that the box holds.
host::Timeline shownTimeline(host::Timeline timeline, std::pair<int, int> box) {
  const auto [width, height] = sizeWithin(timeline, box);
  timeline.drawingScaleX = static_cast<double>(width) / timeline.width;
  timeline.drawingScaleY = static_cast<double>(height) / timeline.height;
  timeline.width = width;
  timeline.height = height;
  return timeline;
}

template <class Number> void append(std::string &bytes, Number number) {
  for (size_t i = 0; i < sizeof number; ++i)
    bytes += static_cast<char>(number >> (8 * i));
}

std::string wavHeader(uint32_t dataBytes, const host::Timeline &timeline) {
  constexpr uint16_t kFloats = 3, kBits = 32;
  const auto channels = static_cast<uint16_t>(timeline.channels);
  const auto frameBytes = static_cast<uint16_t>(channels * kBits / 8);
  std::string header = "RIFF";
  append<uint32_t>(header, 36 + dataBytes);
  header += "WAVEfmt ";
  append<uint32_t>(header, 16);
  append<uint16_t>(header, kFloats);
  append<uint16_t>(header, channels);
  append<uint32_t>(header, timeline.sampleRate);
  append<uint32_t>(header, timeline.sampleRate * frameBytes);
  append<uint16_t>(header, frameBytes);
  append<uint16_t>(header, kBits);
  header += "data";
  append<uint32_t>(header, dataBytes);
  return header;
}

} // namespace

/// Inputs that stay open while nothing changes but values.
struct Preview::Opened {
  std::vector<host::InputPlan> files;
  std::vector<bool> retimed;
  bool sound = false;
  std::optional<std::pair<int, int>> size = {};
  std::pair<int, int> box = {};

  std::vector<host::Input> inputs = {};
  bool lasts = false;

  [[nodiscard]] bool isFor(const Opened &other) const {
    return files == other.files && retimed == other.retimed && sound == other.sound && size == other.size &&
           box == other.box;
  }
};

/// The client's one render at a time. Throws where a newer request has come before this one's turn.
class Preview::Turn {
public:
  Turn(const Preview &preview, Client &client, uint64_t number)
      : preview_(preview), client_(client), number_(number) {
    uint64_t newest = client.newest;
    while (newest < number && !client.newest.compare_exchange_weak(newest, number)) {
    }
    lock_ = std::unique_lock(client.work);
    check();
  }

  [[nodiscard]] bool overtaken() const { return preview_.stopping_ || client_.newest != number_; }
  void check() const {
    if (overtaken())
      throw Overtaken();
  }

private:
  const Preview &preview_;
  Client &client_;
  uint64_t number_;
  std::unique_lock<std::mutex> lock_;
};

/// What opening files or rendering gives. What was given up half-way is nothing to show.
template <class Render> decltype(auto) Preview::rendered(const Turn &turn, Render render) {
  try {
    decltype(auto) result = render();
    turn.check();
    return result;
  } catch (const HostError &error) {
    turn.check();
    throw NothingShown(error.what());
  }
}

std::shared_ptr<Preview::Client> Preview::clientOf(const std::string &name) {
  const std::lock_guard lock(mutex_);
  const auto found = std::find_if(clients_.begin(), clients_.end(),
                                  [&](const auto &client) { return client->name == name; });
  if (found != clients_.end()) {
    clients_.splice(clients_.begin(), clients_, found);
  } else {
    clients_.push_front(std::make_shared<Client>());
    clients_.front()->name = name;
    if (clients_.size() > kMostClients)
      clients_.pop_back(); // ends with its last request
  }
  return clients_.front();
}

Preview::Opened &Preview::open(Client &client, Opened wanted, const host::RenderPlan &plan) {
  auto &opened = client.opened;
  const auto found =
      std::find_if(opened.begin(), opened.end(), [&](const Opened &o) { return o.isFor(wanted); });
  if (found != opened.end()) {
    opened.splice(opened.begin(), opened, found);
    return opened.front();
  }
  if (opened.size() >= kMostOpened) // before others are opened
    opened.pop_back();
  for (const host::InputPlan &file : wanted.files)
    wanted.inputs.emplace_back(file, wanted.sound, plan);
  wanted.lasts = std::any_of(wanted.inputs.begin(), wanted.inputs.end(),
                             [](const host::Input &input) { return input.duration() > 0; });
  const host::Timeline timeline =
      wanted.sound ? settleSound(plan, wanted.inputs).timeline
                   : shownTimeline(settlePictures(plan, wanted.inputs).timeline, wanted.box);
  for (size_t i = 0; i < wanted.inputs.size(); ++i)
    wanted.inputs[i].bringTo(timeline, wanted.retimed[i]);
  return opened.emplace_front(std::move(wanted));
}

Shown Preview::picture(const host::RenderPlan &plan, const std::string &source, const Asking &asking,
                       std::pair<int, int> box, uint64_t frame) {
  const auto client = clientOf(asking.client);
  const Turn turn(*this, *client, asking.number);
  try {
    std::optional<host::ChainSetup> setup;
    if (!plan.stages.empty())
      setup.emplace(plan, library_);
    if (setup && setup->sound)
      throw NothingShown("This makes sound.");
    Opened wanted{.files = {{source, {}, {}}}, .retimed = {false}, .size = plan.size, .box = box};
    if (setup) {
      wanted.files = setup->inputs;
      wanted.retimed = setup->retimed;
    }
    Opened &opened = rendered(turn, [&]() -> Opened & { return open(*client, std::move(wanted), plan); });
    const host::Settled settled =
        setup ? settle(*setup, plan, opened.inputs) : settlePictures(plan, opened.inputs);
    Shown shown{{}, 0, 0, settled.timeline, settled.span.count, opened.lasts};
    if (!setup) {
      const auto picture = opened.inputs.front().pictures()->at(frame);
      put(reinterpret_cast<const _color_t *>(picture->pixels.data()), picture->width, picture->height, shown);
      return shown;
    }
    host::Chain chain(*setup, plan, shownTimeline(settled.timeline, box), opened.inputs);
    chain.stopWhen([&turn] { return turn.overtaken(); });
    const auto picture = rendered(turn, [&] { return chain.picture(chain.timeline().timeOfFrame(frame)); });
    put(picture->record()->Pixels, picture->record()->Width, picture->record()->Height, shown);
    return shown;
  } catch (const HostError &error) {
    turn.check();
    throw Refusal(kNotRenderable, error.what());
  }
}

Heard Preview::sound(const host::RenderPlan &plan, const Asking &asking) {
  const auto client = clientOf(asking.client);
  const Turn turn(*this, *client, asking.number);
  try {
    const host::ChainSetup setup(plan, library_);
    if (!setup.sound)
      throw NothingShown("This makes pictures.");
    Opened &opened = rendered(turn, [&]() -> Opened & {
      return open(*client, {.files = setup.inputs, .retimed = setup.retimed, .sound = true}, plan);
    });
    const host::Timeline timeline = settle(setup, plan, opened.inputs).timeline;
    host::Chain chain(setup, plan, timeline, opened.inputs);
    chain.stopWhen([&turn] { return turn.overtaken(); });
    const double duration = std::min(timeline.duration, kLongestSound);
    const auto frames = std::min(static_cast<uint64_t>(std::floor(duration * timeline.sampleRate + 0.5)),
                                 uint64_t{kMostSamples} / std::max(timeline.channels, 1U));
    Heard heard{wavHeader(static_cast<uint32_t>(frames * timeline.channels * sizeof(float)), timeline),
                duration};
    uint64_t at = 0;
    for (uint64_t frame = 1; at < frames; ++frame) { // a video frame's worth at once, as renders have it
      const uint64_t end = std::min(timeline.sampleOfFrame(frame), frames);
      if (end <= at)
        continue;
      const auto block =
          rendered(turn, [&] { return chain.sound(timeline.timeOfSample(at), timeline.timeOfSample(end)); });
      const size_t made =
          std::min<size_t>(block->record()->Frames, end - at) * timeline.channels * sizeof(float);
      heard.wav.append(reinterpret_cast<const char *>(block->record()->Samples), made);
      heard.wav.append(static_cast<size_t>(end - at) * timeline.channels * sizeof(float) - made, '\0');
      chain.release();
      at = end;
    }
    return heard;
  } catch (const HostError &error) {
    turn.check();
    throw Refusal(kNotRenderable, error.what());
  }
}

} // namespace zol::studio
