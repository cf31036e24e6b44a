// Real hosts give the bytes of `zol render`. A host that is not installed is skipped.

#include "bridges/frei0r/plugin.h"
#include "host/model/text.h"
#include "tests/apps/zol.h"

#include <algorithm>
#include <map>

namespace zol::bridge {
namespace {

struct Size {
  int width, height;
  [[nodiscard]] std::string text() const { return std::to_string(width) + 'x' + std::to_string(height); }
};

constexpr Size kSizes[] = {{320, 240}, {321, 243}, {720, 576}};

/// An effect with a value for zol, and the same for its plug-in.
struct Case {
  const char *effect, *setting;
  const char *plugin, *parameter;
  double value;
};

constexpr Case kFilters[] = {
    {"blur", "Blurriness=0.3", "zol_filters_blur", "Blurriness", 0.3},
    {"recolor", "Hue=90", "zol_filters_recolor", "Hue", 0.25},
    {"drop shadow", "Distance=0.25", "zol_complex_filters_drop_shadow", "Distance", 0.25},
    {"spread", "Seed=65535", "zol_filters_spread", "Seed", 1},
};
constexpr Case kMixers[] = {
    {"mix", "Transition=0.3", "zol_compositing_mix", "Progress", 0.3},
    {"bluescreen", "Delta1=0.4", "zol_compositing_bluescreen", "Delta1", 0.4},
};
constexpr Case kSource = {"solid color", "Color=#ff0000", "zol_sources_solid_color", "Color alpha", 1};

class Hosts : public test::InFolder {
protected:
  Hosts() {
    setenv("FREI0R_PATH", ZOL_BUILD_DIR "/plugins/frei0r-1", 1);
    setenv("LADSPA_PATH", ZOL_BUILD_DIR "/plugins/ladspa", 1);
    setenv("LV2_PATH", (path("lv2")).c_str(), 1);
    setenv("GST_REGISTRY", (path("registry")).c_str(), 1);
    std::filesystem::create_directory(path("lv2"));
    std::filesystem::create_symlink(ZOL_BUILD_DIR "/plugins/lv2/zol.lv2", path("lv2/zol.lv2"));
  }

  bool has(const std::string &command) { return shell(command).status == 0; }

  void makeClips(const Size &size) {
    make("a.mkv", "-f lavfi -i testsrc=s=" + size.text() + ":d=0.2:r=25 -pix_fmt bgra -c:v ffv1");
    make("b.mkv", "-f lavfi -i rgbtestsrc=s=" + size.text() + ":d=0.2:r=25 -pix_fmt bgra -c:v ffv1");
  }
  std::string zolOf(const Case &one, const std::string &inputs) {
    return rendered('"' + std::string(one.effect) + "\" " + inputs + " --set \"" + one.setting + '"');
  }
  /// What the host's command line prints or leaves in `file`.
  std::string of(const std::string &line, const std::string &file = {}) {
    const test::Outcome outcome = shell(line);
    EXPECT_EQ(outcome.status, 0) << line << '\n' << outcome.err;
    return file.empty() ? outcome.out : test::contents(path(file));
  }
};

/// All values in their order, as ffmpeg takes them.
std::string wordsOf(const Case &one, const std::string &id) {
  const auto plugin =
      std::find_if(plugins().begin(), plugins().end(), [&](const Plugin &known) { return known.id == id; });
  std::string words = id;
  char separator = ':';
  for (const Parameter &parameter : plugin->parameters) {
    words += std::exchange(separator, '|');
    const auto &color = parameter.standard.color;
    const double number = parameter.name == one.parameter ? one.value : parameter.standard.number;
    switch (parameter.type()) {
    case F0R_PARAM_BOOL: words += number >= 0.5 ? "y" : "n"; break;
    case F0R_PARAM_COLOR:
      words += one.effect == std::string("solid color")
                   ? "1/0/0"
                   : std::to_string(color.r) + '/' + std::to_string(color.g) + '/' + std::to_string(color.b);
      break;
    case F0R_PARAM_STRING: words += parameter.standard.text; break;
    default: words += host::numberText(number);
    }
  }
  return words;
}

TEST_F(Hosts, Ffmpeg) {
  if (!has("ffmpeg -v error -h filter=frei0r | grep -q 'Filter frei0r'"))
    GTEST_SKIP() << "ffmpeg with frei0r is not installed";
  const std::string raw = " -f rawvideo -pix_fmt bgra -";
  for (const Size &size : kSizes) {
    SCOPED_TRACE(size.text());
    makeClips(size);
    for (const char *threads : {"1", "2"}) {
      const std::string run = std::string("ffmpeg -v error -filter_complex_threads ") + threads +
                              " -filter_threads " + threads + " -threads " + threads;
      for (const Case &one : kFilters)
        EXPECT_TRUE(of(run + " -i a.mkv -vf 'frei0r=" + wordsOf(one, one.plugin) + '\'' + raw) ==
                    zolOf(one, "-i a.mkv"))
            << one.plugin;
      for (const Case &one : kMixers)
        EXPECT_TRUE(of(run + " -i a.mkv -i b.mkv -filter_complex 'vstack,frei0r=" +
                       wordsOf(one, std::string(one.plugin) + "_stacked") + ",crop=iw:ih/2:0:0:exact=1'" +
                       raw) == zolOf(one, "-i a.mkv -i b.mkv"))
            << one.plugin;
    }
    EXPECT_TRUE(of("ffmpeg -v error -f lavfi -i 'frei0r_src=" + size.text() +
                   ":25:" + wordsOf(kSource, kSource.plugin) + "' -frames:v 2" + raw) ==
                zolOf(kSource, "--size " + size.text() + " --duration 2f --rate 25"));
  }
}

TEST_F(Hosts, Melt) {
  if (!has("melt -query filters 2>&1 | grep -q frei0r.zol_filters_blur"))
    GTEST_SKIP() << "melt with frei0r is not installed";
  for (const Size &size : kSizes) {
    SCOPED_TRACE(size.text());
    makeClips(size);
    const std::string width = std::to_string(size.width), height = std::to_string(size.height);
    std::ofstream(path("profile"))
        << "description=test\nframe_rate_num=25\nframe_rate_den=1\nprogressive=1\nwidth=" << width
        << "\nheight=" << height << "\nsample_aspect_num=1\nsample_aspect_den=1\n"
        << "display_aspect_num=" << width << "\ndisplay_aspect_den=" << height << '\n';
    for (const char *threads : {"0", "-2"}) {
      const std::string to = std::string(" -consumer avformat:m.mkv real_time=") + threads +
                             " mlt_image_format=rgba vcodec=ffv1 pix_fmt=bgra an=1";
      for (const Case &one : kFilters) {
        of("melt -silent -profile ./profile a.mkv -filter frei0r." + std::string(one.plugin) + " \"" +
           one.parameter + '=' + host::numberText(one.value) + '"' + to);
        EXPECT_TRUE(pixels("m.mkv") == zolOf(one, "-i a.mkv")) << one.plugin;
      }
      for (const Case &one : kMixers) {
        of("melt -silent -profile ./profile a.mkv -track b.mkv -transition frei0r." +
           std::string(one.plugin) + " \"" + one.parameter + '=' + host::numberText(one.value) +
           "\" in=0 out=4 a_track=0 b_track=1" + to);
        EXPECT_TRUE(pixels("m.mkv") == zolOf(one, "-i a.mkv -i b.mkv")) << one.plugin;
      }
    }
  }
}

TEST_F(Hosts, GStreamer) {
  if (!has("gst-inspect-1.0 frei0r-filter-blur && gst-inspect-1.0 rawvideoparse"))
    GTEST_SKIP() << "GStreamer with frei0r is not installed";
  for (const Size &size : kSizes) {
    SCOPED_TRACE(size.text());
    makeClips(size);
    of("ffmpeg -v error -y -i a.mkv -f rawvideo -pix_fmt bgra a.raw");
    const std::string clip = "filesrc location=a.raw ! rawvideoparse format=bgra framerate=25/1 width=" +
                             std::to_string(size.width) + " height=" + std::to_string(size.height);
    const Case &blur = kFilters[0];
    for (const char *queue : {"", " ! queue"}) // a thread before it, and one behind
      EXPECT_TRUE(of("gst-launch-1.0 -q " + clip + queue + " ! frei0r-filter-blur blurriness=0.3" + queue +
                         " ! filesink location=g.raw",
                     "g.raw") == zolOf(blur, "-i a.mkv"));
  }
}

TEST_F(Hosts, SoundPlugins) {
  make("s.wav",
       "-f lavfi -i sine=440:d=0.5:r=48000 -f lavfi -i sine=550:d=0.5:r=48000 -filter_complex amerge=2 "
       "-c:a pcm_f32le");
  const std::string expected = rendered(
      "\"simple audio switcher\" -i s.wav --set \"Output 1=Input 2\" --set \"Output 2=Mix of all inputs\"");
  const std::string raw = " -f f32le -";
  bool heard = false;
  if (has("ffmpeg -v error -h filter=lv2 | grep -q 'Filter lv2'")) {
    heard = true;
    EXPECT_TRUE(of("ffmpeg -v error -i s.wav -af "
                   "'lv2=p=urn\\\\:zol\\\\:simple_audio_switcher:c=output_1=2|output_2=3'" +
                   raw) == expected);
  }
  if (has("ffmpeg -v error -h filter=ladspa | grep -q 'Filter ladspa'")) {
    heard = true;
    EXPECT_TRUE(of("ffmpeg -v error -i s.wav -af "
                   "'ladspa=file=zol-ladspa:plugin=zol_simple_audio_switcher:c=c0=2|c1=3'" +
                   raw) == expected);
  }
  if (has("command -v lv2apply lv2_validate")) {
    heard = true;
    of("lv2apply -i s.wav -o l.wav -c output_1 2 -c output_2 3 urn:zol:simple_audio_switcher");
    EXPECT_TRUE(of("ffmpeg -v error -i l.wav" + raw) == expected);
    of("lv2_validate lv2/zol.lv2/*.ttl");
  }
  if (has("command -v analyseplugin")) {
    heard = true;
    EXPECT_NE(of("analyseplugin " ZOL_BUILD_DIR "/plugins/ladspa/zol-ladspa.so").find("zol_audio_transition"),
              std::string::npos);
  }
  if (!heard)
    GTEST_SKIP() << "no host of LV2 or LADSPA is installed";
}

} // namespace
} // namespace zol::bridge
