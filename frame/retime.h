// The border: clips at times of the effect's own, those between their frames too, which the slow-motion
// engine makes.
#pragma once

#include "frame/fields.h"
#include "frame/zol.h"

#include <optional>

namespace zol {

/// What is shown outside of a clip.
enum class Beyond { hold, transparent, loop };
/// What is shown between its frames.
enum class Between { wholeFrames, mixing, blocks, objects };
enum class FrameFields { asTheMediaSays, progressive, topFirst, bottomFirst };

inline constexpr double kLongestOffset = 14400; // seconds

// ---- The fields by which users choose ----

namespace field {

constexpr const char *kBeyonds[] = {"Hold", "Transparent", "Loop"};
constexpr const char *kBetweens[] = {"Whole frames", "Mixing", "Blocks", "Objects"};
constexpr const char *kFrameFields[] = {"As the media says", "Progressive", "Top first", "Bottom first"};

constexpr Field startOffset(Place place) {
  return time(place, "InputStartOffset", 0, kLongestOffset, 0)
      .label("Input start offset")
      .help("The time of the media at which the effect begins, in seconds; 0 is its beginning.");
}
constexpr Field beyond(Place place) {
  return selector(place, "Beyond", kBeyonds)
      .help("What is shown before the media begin and behind their end: Hold their first and last frame, "
            "Transparent nothing, Loop the media again.");
}
constexpr Field method(Place place) {
  return selector(place, "Method", kBetweens)
      .help(
          "What is shown between two frames: Whole frames the earlier one, Mixing a dissolve of both, Blocks "
          "blocks on their way from one to the other, Objects whole objects on their way.");
}
constexpr Field frameFields(Place place) {
  return selector(place, "Fields", kFrameFields)
      .help("Whether frames consist of two fields, and which of them comes first. Whole frames take no "
            "notice.");
}

} // namespace field

/// A clip as its host describes it and the user wants it shown.
struct Footage {
  void *input;
  double rate;       ///< frames a second
  double duration;   ///< seconds; 0: not known
  int width, height; ///< of its own frames; 0: not known
  Beyond beyond;
  Between between;
  bool interlaced, topFirst;
};

/// Of an assigned input, by the values of these fields.
Footage readFootage(t_ZoHostInfo *host, void *input, int beyondField, int methodField, int fieldsField);

/// The time within the clip that is shown for any time; nothing where that is outside and transparent.
std::optional<double> timeWithin(const Footage &footage, double time);

/// The whole frame that is shown at a time within the clip, at the context's size; null where it cannot be
/// had. It stays the host's.
pic *wholeFrame(t_ZoHostInfo *host, const Footage &footage, double time);

/// A new picture of what is shown at any time, of the context's size; null, after a message where memory ran
/// out.
pic *retime(t_ZoHostInfo *host, const Footage &footage, double time);

/// A new transparent picture of the context's size; likewise.
pic *createTransparent(t_ZoHostInfo *host);

} // namespace zol
