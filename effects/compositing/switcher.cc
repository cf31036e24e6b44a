// Switcher: makes each channel of its picture of one of any number of inputs, or of two that dissolve into
// each other as one curve moves from one to the next. Where all channels are those of one input it is a copy.

#include "effects/compositing/switcher.xpm"
#include "effects/audio/switcher_texts.h"
#include "effects/input_list.h"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/compositing/route_channels.h"
#include "kernels/simd/scratch.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

namespace field = zol::field;

enum Field {
  kInputs,
  kAdd,
  kDelete,
  kButtons,
  kSwitch,
  kDissolve,
  kRedInput,
  kRedFrom,
  kRedInvert,
  kGreenInput,
  kGreenFrom,
  kGreenInvert,
  kBlueInput,
  kBlueFrom,
  kBlueInvert,
  kAlphaInput,
  kAlphaFrom,
  kAlphaInvert,
  kRedLabel,
  kGreenLabel,
  kBlueLabel,
  kAlphaLabel,
  kRedRow,
  kGreenRow,
  kBlueRow,
  kAlphaRow,
};

constexpr zol::InputList kList{kInputs, kAdd, kDelete};
constexpr int kButtonRow[] = {kAdd, kDelete};
constexpr int kRedMembers[] = {kRedLabel, kRedInput, kRedFrom, kRedInvert};
constexpr int kGreenMembers[] = {kGreenLabel, kGreenInput, kGreenFrom, kGreenInvert};
constexpr int kBlueMembers[] = {kBlueLabel, kBlueInput, kBlueFrom, kBlueInvert};
constexpr int kAlphaMembers[] = {kAlphaLabel, kAlphaInput, kAlphaFrom, kAlphaInvert};

constexpr const char *kSources[] = {"Same channel", "Red",       "Green", "Blue",
                                    "Alpha",        "Luminance", "None",  "Full"};

constexpr zol::Range kPlaces{0, 63, "ZodfMinLimit"};

constexpr zol::Field channelInput(zol::Place place, const char *name, const char *label) {
  return field::curve(place, name, kPlaces, 0)
      .label(label)
      .help("Which input the channel is taken of, counted from the one that Switch shows. 0 is that one.");
}
constexpr zol::Field channelSource(zol::Place place, const char *name, const char *label) {
  return field::popup(place, name, kSources)
      .label(label)
      .help("What of that input the channel shows; None is 0 throughout and Full 255.");
}
constexpr zol::Field channelInvert(zol::Place place, const char *name, const char *label) {
  return field::toggle(place, name, false).label(label).help("Whether the channel is inverted.");
}

constexpr zol::Field kFields[] = {
    field::plain("Inputs", kInputs, "Inputs"),
    field::button(kAdd, "Add").label("&Add New Input").help("Adds an input at the end of the list."),
    field::button(kDelete, "Delete")
        .label("&Remove selected Inputs")
        .help("Removes the inputs that are selected in the list."),
    field::row(kButtons, "in_button_group", kButtonRow),
    field::curve(kSwitch, "Switch", kPlaces, 0)
        .help("Which input is shown, counted from 0; between two of them the first, unless they dissolve."),
    field::toggle(kDissolve, "Dissolve", false)
        .help("Whether an input dissolves into the next while Switch is between them, rather than stays to "
              "the end."),
    channelInput(kRedInput, "RInput", "R input"),
    channelSource(kRedFrom, "RFrom", "R from"),
    channelInvert(kRedInvert, "RInvert", "R invert"),
    channelInput(kGreenInput, "GInput", "G input"),
    channelSource(kGreenFrom, "GFrom", "G from"),
    channelInvert(kGreenInvert, "GInvert", "G invert"),
    channelInput(kBlueInput, "BInput", "B input"),
    channelSource(kBlueFrom, "BFrom", "B from"),
    channelInvert(kBlueInvert, "BInvert", "B invert"),
    channelInput(kAlphaInput, "AInput", "A input"),
    channelSource(kAlphaFrom, "AFrom", "A from"),
    channelInvert(kAlphaInvert, "AInvert", "A invert"),
    field::label(kRedLabel, "R ", "R "),
    field::label(kGreenLabel, "G ", "G "),
    field::label(kBlueLabel, "B ", "B "),
    field::label(kAlphaLabel, "A ", "A "),
    field::row(kRedRow, "r_group", kRedMembers),
    field::row(kGreenRow, "g_group", kGreenMembers),
    field::row(kBlueRow, "b_group", kBlueMembers),
    field::row(kAlphaRow, "a_group", kAlphaMembers),
};

enum Text { kTitle, kListDescription, kNoInputs };
ZOL_TEXT_TABLE kTexts[] = {
    "Switcher  on",   zol::kMultiswitcherDescription, "No inputs",
    "&Add New Input", "&Remove selected Inputs",      "Multiinput R,G,B,A switcher.",
};

constexpr int kChannels = 4, kMostPictures = 2 * kChannels;

/// One channel of the picture, and the inputs that it is taken of; -1 where it needs none.
struct Channel {
  zol::PixelRoute route;
  int first = -1, second = -1;

  [[nodiscard]] bool needs(int input) const { return input == first || input == second; }
};

/// What the pixels' bytes take, in their order.
struct Settings {
  Channel channels[kChannels];

  [[nodiscard]] bool needs(int input) const {
    return std::any_of(channels, channels + kChannels, [=](const Channel &c) { return c.needs(input); });
  }
  /// The input that all is taken of as it is; -1 where there is none.
  [[nodiscard]] int only() const {
    for (int byte = 0; byte < kChannels; ++byte) {
      const auto &[route, first, second] = channels[byte];
      if (static_cast<int>(route.source) != byte || route.inverts || second >= 0 ||
          first != channels[0].first)
        return -1;
    }
    return channels[0].first;
  }
};

zol::ChannelSource sourceOf(int item, int byte) {
  using Source = zol::ChannelSource;
  constexpr Source kItems[] = {Source::red,       Source::green, Source::blue, Source::alpha,
                               Source::luminance, Source::none,  Source::full};
  return item <= 0 ? static_cast<Source>(byte) : kItems[std::min(item, 7) - 1];
}

Settings readSettings(t_ZoHostInfo *host, int inputs) {
  constexpr double kFar = 1000;
  constexpr int kFirstFields[kChannels] = {kBlueInput, kGreenInput, kRedInput, kAlphaInput};
  const double shown = zol::paramWithin(host, kSwitch, 0, kFar);
  const bool dissolves = zol::paramInt(host, kDissolve) != 0;
  Settings settings;
  for (int byte = 0; byte < kChannels; ++byte) {
    const int field = kFirstFields[byte];
    Channel &channel = settings.channels[byte];
    channel.route.source = sourceOf(zol::paramInt(host, field + 1), byte);
    channel.route.inverts = zol::paramInt(host, field + 2) != 0;
    if (channel.route.source >= zol::ChannelSource::none)
      continue;
    const double place = std::min(shown + zol::paramWithin(host, field, 0, kFar), inputs - 1.0);
    const double whole = std::floor(place);
    channel.first = static_cast<int>(whole);
    channel.route.weight = dissolves ? zol::in4096ths(place - whole) : 0;
    if (channel.route.weight > 0)
      channel.second = channel.first + 1;
  }
  return settings;
}

/// The frames of the inputs that are needed, from the first on; null where none is assigned.
class Pictures {
public:
  /// False when one failed. The host is told of each failure and may stop the fetching.
  bool fetch(t_ZoHostInfo *host, const Settings &settings, int inputs) {
    int failures = 0;
    for (int k = 0; k < inputs; ++k) {
      if (!settings.needs(k))
        continue;
      void *input = host->Services->InputGetPic(host, kInputs, k);
      const pic *frame = input != nullptr ? zol::frameOf(host, input) : nullptr;
      if (input != nullptr && frame == nullptr &&
          host->Services->ErrorCountReport(host, 0, 0, ++failures) != 0)
        break;
      inputs_[count_] = k;
      frames_[count_++] = frame;
    }
    return failures == 0;
  }

  [[nodiscard]] int count() const { return count_; }
  [[nodiscard]] const pic *frame(int place) const { return frames_[place]; }
  [[nodiscard]] int placeOf(int input) const {
    return static_cast<int>(std::find(inputs_, inputs_ + count_, input) - inputs_);
  }

  /// Where all lie that are there; the frame where they differ or there is none.
  [[nodiscard]] zol::Area area(const t_ZoHostInfo *host) const {
    std::optional<zol::Area> common;
    for (const pic *frame : frames_) {
      if (frame != nullptr && common.value_or(zol::Area::of(*frame)) != zol::Area::of(*frame))
        return zol::Area::ofSize(host->Width, host->Height);
      if (frame != nullptr)
        common = zol::Area::of(*frame);
    }
    return common.value_or(zol::Area::ofSize(host->Width, host->Height));
  }

private:
  int count_ = 0;
  int inputs_[kMostPictures] = {};
  const pic *frames_[kMostPictures] = {};
};

/// Writes the canvas's pixels. False when the host wants to stop or, after a message, when memory runs out.
bool compose(t_ZoHostInfo *host, const Settings &settings, const Pictures &pictures, const zol::Area &canvas,
             _color_t *out) {
  const int width = canvas.width();
  const zol::Scratch<_color_t> buffers(size_t(std::max(0, width)) * kMostPictures);
  if (!buffers) {
    zol::showMemoryError(host);
    return false;
  }
  zol::PixelRoute routes[kChannels];
  for (int byte = 0; byte < kChannels; ++byte)
    routes[byte] = settings.channels[byte].route;
  const auto route = ZOL_SELECT(routeChannels);
  return zol::forEachRow(host, canvas.height(), [&](int row) {
    const int y = canvas.top + row;
    const _color_t *rows[kMostPictures] = {};
    for (int k = 0; k < pictures.count(); ++k)
      rows[k] = zol::canvasRow(canvas, pictures.frame(k), y, buffers.data() + ptrdiff_t{width} * k);
    const auto rowOf = [&](int input) { return input >= 0 ? rows[pictures.placeOf(input)] : nullptr; };
    zol::RoutedRows taken[kChannels];
    for (int byte = 0; byte < kChannels; ++byte)
      taken[byte] = {rowOf(settings.channels[byte].first), rowOf(settings.channels[byte].second)};
    route(routes, taken, out + canvas.index(canvas.left, y), width);
  });
}

pic *render(t_ZoHostInfo *host) {
  const int inputs = kList.count(host);
  if (inputs <= 0) {
    zol::showMessage(host, kTexts[kNoInputs]);
    return nullptr;
  }
  const Settings settings = readSettings(host, inputs);
  Pictures pictures;
  if (!pictures.fetch(host, settings, inputs))
    return nullptr;
  if (settings.only() >= 0 && pictures.frame(0) != nullptr)
    return zol::copyOf(host, pictures.frame(0));
  const zol::Area canvas = pictures.area(host);
  zol::OwnedPic out(host, zol::createAt(host, canvas));
  return out && compose(host, settings, pictures, canvas, out->Pixels) ? out.release() : nullptr;
}

int onDialogOpen(t_ZoHostInfo *host) {
  kList.open(host);
  return 1;
}

int onDialogItemEdit(t_ZoHostInfo *host, int item) {
  kList.edit(host, item);
  return 0;
}

constexpr zol::Effect kSwitcher{
    .name = "Compositing/Switcher",
    .sign = "Multiswitcher Zo2 native",
    .version = 3,
    .hosts = zol::Hosts::halvenor,
    .section = "Switcher",
    .description = "Multiinput R,G,B,A switcher.",
    .icon = switcher_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .onDialogOpen = onDialogOpen,
    .onDialogItemEdit = onDialogItemEdit,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessMultiswitcherDeclare(t_ZoHostInfo *host) { return zol::declare(host, kSwitcher); }
