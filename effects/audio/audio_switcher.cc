// Audio Switcher: a mixer of any number of inputs. Each has a level curve of its own; the sum is limited
// to -1 to 1 and then scaled by a master curve. One input at level and master 1 passes unchanged.

#include "effects/audio/audio_switcher.xpm"
#include "effects/audio/switcher_texts.h"
#include "effects/input_list.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "kernels/simd/scratch.h"
#include "kernels/sound/samples.h"

#include <algorithm>
#include <cstdio>

namespace {

namespace field = zol::field;

enum Field { kInputs, kAdd, kDelete, kButtons, kLevels, kMaster };

constexpr int kButtonRow[] = {kAdd, kDelete};
constexpr zol::InputList kList{kInputs, kAdd, kDelete};

constexpr zol::Field kFields[] = {
    field::plain("Inputs", kInputs, "Inputs"),
    field::button(kAdd, "Add").label("Add Input").verbatim(),
    field::button(kDelete, "Delete").label("Delete Input").verbatim(),
    field::row(kButtons, "in_button_group", kButtonRow),
    field::plain("Dataset", kLevels, "Input levels"),
    field::alpha(kMaster, "Master", 1).flags(nullptr).verbatim().unset(),
};

/// Gives every input its level item. Whenever the number of inputs has changed, all levels start anew.
void rebuildLevels(t_ZoHostInfo *host) {
  const t_ZoServices &services = *host->Services;
  const int inputs = services.DataFieldItemCount(host, kInputs);
  const int levels = services.DataFieldItemCount(host, kLevels);
  if (inputs == levels)
    return;
  services.DatasetClear(host, kLevels, levels);
  constexpr t_ZoDatasetDisplay kDisplay{{128, 192, 255, 0}, 1.0F};
  for (int k = 0; k < inputs; ++k) {
    char name[24];
    std::snprintf(name, sizeof name, "Level %d", k);
    services.DatasetItemAdd(host, kLevels, "FloatA", name, &kDisplay);
    services.ParamSetFloat(host, kLevels, k, 0.0, 0.5);
  }
  services.DatasetRefresh(host, kLevels, -1, inputs);
}

int onDialogOpen(t_ZoHostInfo *host) {
  kList.open(host);
  rebuildLevels(host);
  return 1;
}

int onDialogItemEdit(t_ZoHostInfo *host, int item) {
  if (kList.edit(host, item))
    rebuildLevels(host);
  return 0;
}

constexpr size_t kFewInputs = 16;

/// An input that has sound, and its level's item.
struct Voice {
  zol::AudioSource sound;
  int level;
};

/// Fetches the sound of every assigned input; their number, or -1 when one failed. The host is told of
/// each failure and may stop the fetching.
int fetchVoices(t_ZoHostInfo *host, int inputs, Voice *voices) {
  int count = 0;
  int failures = 0;
  for (int k = 0; k < inputs; ++k) {
    void *input = host->Services->InputGetPic(host, kInputs, k);
    if (input == nullptr)
      continue;
    if (const t_ZoAudio *sound = zol::soundOf(host, input))
      voices[count++] = {zol::sourceOf(*sound), k};
    else if (host->Services->ErrorCountReport(host, 0, 0, ++failures) != 0)
      break;
  }
  return failures == 0 ? count : -1;
}

/// In the order of the comparisons that processors have as one instruction; a NaN stays.
float limited(float sum) {
  const float raised = -1.0F > sum ? -1.0F : sum;
  return 1.0F < raised ? 1.0F : raised;
}

/// Both curves are read for every sample; the host may answer differently each time. Where every voice
/// has the output's layout (`Alike`), a sample's number is all that is needed to find it.
template <bool Alike> void mix(t_ZoHostInfo *host, const Voice *voices, int count, const t_ZoAudio &out) {
  const auto param = host->Services->ParamGetFloat;
  const double blockStart = host->BlockStart, blockLength = host->BlockEnd - blockStart;
  const double clipStart = host->ClipStart, clipLength = host->ClipEnd - clipStart;
  const uint32_t frames = out.Frames;
  const unsigned channels = out.Channels;
  float *const samples = out.Samples;
  size_t sample = 0;
  for (uint32_t i = 0; i < frames; ++i) {
    const double place = static_cast<double>(i) / static_cast<double>(frames);
    const double relative = (blockStart + place * blockLength - clipStart) / clipLength;
    for (unsigned c = 0; c < channels; ++c, ++sample) {
      float sum = 0.0F;
      for (const Voice *voice = voices; voice != voices + count; ++voice) {
        const long double level = param(host, kLevels, voice->level, relative);
        if (Alike || voice->sound.holds(i, c)) {
          const float heard = Alike ? voice->sound.samples[sample] : voice->sound.at(i, c);
          sum = static_cast<float>(static_cast<long double>(sum) + level * static_cast<long double>(heard));
        }
      }
      const long double master = param(host, kMaster, 0, relative);
      samples[sample] = static_cast<float>(master * static_cast<long double>(limited(sum)));
    }
  }
}

t_ZoAudio *render(t_ZoHostInfo *host) {
  const int inputs = host->Services->DataFieldItemCount(host, kInputs);
  if (inputs <= 0) {
    zol::showMessage(host, zol::kSwitcherTexts[zol::kSwitcherNoInputs]);
    return nullptr;
  }
  zol::ShortScratch<Voice, kFewInputs> voices(static_cast<size_t>(inputs));
  if (!voices) {
    zol::showMemoryError(host);
    return nullptr;
  }
  const int count = fetchVoices(host, inputs, voices.data());
  if (count < 0)
    return nullptr;
  t_ZoAudio *out = zol::createSound(host);
  if (out == nullptr) {
    zol::showMemoryError(host);
    return nullptr;
  }
  const bool alike = std::all_of(voices.data(), voices.data() + count, [&](const Voice &voice) {
    return voice.sound.channels == out->Channels && voice.sound.frames >= out->Frames;
  });
  (alike ? mix<true> : mix<false>)(host, voices.data(), count, *out);
  return out;
}

constexpr zol::Effect kAudioSwitcher{
    .name = "Compositing/Audio Switcher",
    .sign = "AudioSwitcher (Zo2)",
    .version = 3,
    .hosts = zol::Hosts::halvenor,
    .icon = audio_switcher_xpm,
    .init = zol::defaults<kFields>,
    .renderAudio = render,
    .onDialogOpen = onDialogOpen,
    .onDialogItemEdit = onDialogItemEdit,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessAudioSwitcherDeclare(t_ZoHostInfo *host) { return zol::declare(host, kAudioSwitcher); }
