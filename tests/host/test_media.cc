// Media through child processes: round trips, order of access, failures, nothing left behind.
#include "host/media/audio_reader.h"
#include "host/media/probe.h"
#include "host/media/process.h"
#include "host/media/video_reader.h"
#include "host/media/writer.h"
#include "host/model/text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <locale>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace zol::host {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

size_t openDescriptors() {
  return static_cast<size_t>(
      std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

template <class Work> std::string errorOf(Work work) {
  try {
    work();
  } catch (const HostError &error) {
    EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    return error.what();
  }
  return "no error";
}

bool contains(const std::string &text, const std::string &part) {
  return text.find(part) != std::string::npos;
}

/// A folder of its own for every test; afterwards no child and no descriptor is left.
class Media : public testing::Test {
protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "zol-media-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
    descriptors_ = openDescriptors();
  }
  void TearDown() override {
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(openDescriptors(), descriptors_);
    for (const auto &entry : fs::directory_iterator(folder_))
      EXPECT_FALSE(entry.path().filename().string().starts_with('.')) << entry.path() << " was left";
    fs::remove_all(folder_);
  }

  [[nodiscard]] std::string path(const std::string &name) const { return (folder_ / name).string(); }

  /// A file made by ffmpeg itself.
  std::string make(const std::string &name, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"ffmpeg", "-v", "error", "-nostdin", "-y"});
    arguments.push_back(path(name));
    Process process(arguments);
    EXPECT_EQ(process.wait(), 0) << process.lastLine();
    return path(name);
  }

  /// Frames of noise with every alpha.
  static Bytes noise(int width, int height, unsigned seed) {
    Bytes bytes(static_cast<size_t>(4 * width * height));
    for (uint8_t &byte : bytes)
      byte = static_cast<uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
    return bytes;
  }

  static void write(const std::string &file, WriterOptions options, const std::vector<Bytes> &frames) {
    MediaWriter writer(file, std::move(options));
    for (const Bytes &frame : frames)
      writer.writeFrame(frame.data());
    writer.finish();
  }

  static WriterOptions pictures(int width, int height) {
    WriterOptions options;
    options.width = width;
    options.height = height;
    return options;
  }
  static WriterOptions sound(int rate, int channels) {
    WriterOptions options;
    options.sampleRate = rate;
    options.channels = channels;
    return options;
  }

  static std::vector<float> samples(size_t count) {
    std::vector<float> values(count);
    for (size_t i = 0; i < count; ++i)
      values[i] = static_cast<float>(std::sin(static_cast<double>(i) * 0.37) * 1.3);
    return values;
  }

  fs::path folder_;
  size_t descriptors_ = 0;
};

TEST_F(Media, ProcessPassesBytesBothWaysAndKeepsTheLastLine) {
  Process::Options options;
  options.input = options.output = Process::Stream::Pipe;
  {
    // More on standard error than a pipe holds, then an echo.
    Process process(
        {"sh", "-c",
         "head -c 300000 /dev/zero | tr '\\0' x >&2; cat; printf '\\n one\\r\\n two \\n\\n' >&2; exit 7"},
        options);
    const Bytes data = noise(50, 20, 1);
    ASSERT_TRUE(process.write(data.data(), data.size()));
    EXPECT_EQ(process.wait(), 7);
    EXPECT_EQ(process.lastLine(), "two");
  }
  options.secondInput = true;
  {
    Process process({"sh", "-c", "cat <&3 | wc -c; cat | wc -c"}, options);
    const Bytes data(3 << 20);
    ASSERT_TRUE(process.queueSecond(data.data(), data.size()));
    process.endSecond();
    char text[100] = {};
    ASSERT_TRUE(process.write(data.data(), 1000));
    process.closeInput();
    const size_t n = process.read(text, sizeof text);
    EXPECT_EQ(std::string(text, n), "3145728\n1000\n");
    EXPECT_EQ(process.wait(), 0);
  }
  options.secondInput = false;
  {
    Process process({"true"}, options);
    const Bytes data(4 << 20);
    EXPECT_FALSE(process.write(data.data(), data.size())) << "and no SIGPIPE";
    EXPECT_EQ(process.wait(), 0);
  }
  { // Killed and reaped by destruction, although it ignores the end of its input.
    Process process({"sleep", "1000"}, options);
  }
  EXPECT_EQ(errorOf([] { Process process({"zol-no-such-program"}); }),
            "cannot run zol-no-such-program: No such file or directory");
  options.patience = 0.1;
  EXPECT_TRUE(contains(errorOf([&] {
                         Process process({"sleep", "1000"}, options);
                         char c;
                         (void)process.read(&c, 1);
                       }),
                       "did nothing for 0.1 seconds"));
}

TEST_F(Media, TextsForArguments) {
  EXPECT_EQ(shellQuoted({"a", "", "b c", "it's", "x=1:y", "$(id)"}), "a '' 'b c' 'it'\\''s' x=1:y '$(id)'");
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  EXPECT_EQ(numberText(29.97), "29.97");
  EXPECT_EQ(numberText(1e-7), "0.0000001");
  std::locale::global(before);
}

TEST_F(Media, ProbeTellsWhatAFileHolds) {
  const MediaInfo clip =
      probe(make("clip.mkv", {"-f", "lavfi", "-i", "testsrc2=s=64x48:r=30000/1001:d=1", "-f", "lavfi", "-i",
                              "sine=r=44100:d=1", "-ac", "1", "-vf", "setsar=16/15"}));
  EXPECT_TRUE(clip.hasVideo && clip.hasAudio && !clip.still && !clip.alpha && !clip.interlaced);
  EXPECT_EQ(clip.width, 64);
  EXPECT_EQ(clip.height, 48);
  EXPECT_EQ(clip.frameRate, Rational(30000, 1001));
  EXPECT_NEAR(clip.pixelAspect, 16.0 / 15, 1e-6);
  EXPECT_NEAR(clip.duration, 1, 0.05);
  EXPECT_EQ(clip.sampleRate, 44100);
  EXPECT_EQ(clip.channels, 1);

  const std::string flat =
      make("flat.mp4", {"-f", "lavfi", "-i", "testsrc2=s=64x48:d=0.2", "-vf", "setsar=2"});
  const MediaInfo turned =
      probe(make("turned.mp4", {"-i", flat, "-c", "copy", "-metadata:s:v:0", "rotate=90"}));
  if (turned.width == 48) { // not every version writes the rotation
    EXPECT_EQ(turned.height, 64);
    EXPECT_NEAR(turned.pixelAspect, 0.5, 1e-9);
    EXPECT_EQ(VideoReader(path("turned.mp4"), {}).at(0)->height, 64);
  }
  const MediaInfo still =
      probe(make("still.png", {"-f", "lavfi", "-i", "color=red@0.5:s=5x3,format=rgba", "-frames:v", "1"}));
  EXPECT_TRUE(still.still && still.alpha && still.hasVideo && !still.hasAudio);
  EXPECT_EQ(still.duration, 0);
  const MediaInfo fields = probe(
      make("fields.avi", {"-f", "lavfi", "-i", "testsrc2=s=64x48:d=0.4", "-vf", "setfield=tff,fieldorder=tff",
                          "-c:v", "mpeg2video", "-flags", "+ildct+ilme", "-top", "1"}));
  EXPECT_TRUE(fields.interlaced && fields.topFieldFirst);
  // Frames at 0, 1, 2, 4, 5, 6, 8 ... of 30 a second, 22.5 on average.
  const MediaInfo varying = probe(make("varying.mp4", {"-f", "lavfi", "-i", "testsrc2=s=64x48:r=30:d=4",
                                                       "-vf", "select='mod(n+1,4)'", "-fps_mode", "vfr"}));
  EXPECT_EQ(varying.frameRate, Rational(30));
  const MediaInfo cover =
      probe(make("cover.mp3", {"-f", "lavfi", "-i", "sine=d=0.5", "-i", path("still.png"), "-map", "0",
                               "-map", "1", "-c:v", "png", "-disposition:v", "attached_pic"}));
  EXPECT_TRUE(cover.hasAudio && !cover.hasVideo);
}

TEST_F(Media, NamesAreFilesWhateverTheyLookLike) {
  const Bytes frame = noise(4, 4, 5);
  for (const char *name :
       {"-odd name.png", "http:x.png", "a%d'b%d.png", "two\nlines.png", "[a],b;c=d\\.png"}) {
    write(path(name), pictures(4, 4), {frame});
    EXPECT_TRUE(fs::exists(path(name))) << name;
    if (!contains(name, "%d")) { // ffmpeg reads such a name as that of a sequence
      EXPECT_EQ(VideoReader(path(name), {}).at(0)->pixels, frame) << name;
    }
  }
}

TEST_F(Media, LosslessPicturesComeBackByteForByte) {
  const std::vector<Bytes> frames{noise(37, 23, 1), noise(37, 23, 2), noise(37, 23, 3)};
  for (const char *name : {"a.png", "a.tif", "a.tga", "a.pam", "a.mkv", "a.nut", "a.apng"}) {
    const bool still = MediaWriter::isStill(name);
    WriterOptions options = pictures(37, 23);
    options.encoding.quality = Quality::lossless;
    write(path(name), options, still ? std::vector<Bytes>{frames[0]} : frames);
    VideoReader reader(path(name), {});
    EXPECT_TRUE(reader.info().alpha) << name;
    EXPECT_EQ(reader.info().still, still) << name;
    for (size_t i = 0; i < frames.size(); ++i)
      EXPECT_EQ(reader.at(i)->pixels, frames[still ? 0 : i]) << name << " frame " << i;
    EXPECT_EQ(reader.at(100)->pixels, frames[still ? 0 : 2]) << name << " holds the last";
    EXPECT_EQ(reader.frameCount(), still ? 1u : 3u) << name;
  }
  WriterOptions tiny = pictures(1, 1);
  tiny.encoding.quality = Quality::lossless;
  write(path("tiny.mkv"), tiny, {noise(1, 1, 1)});
  EXPECT_EQ(VideoReader(path("tiny.mkv"), {}).at(0)->pixels, noise(1, 1, 1));
}

TEST_F(Media, LossyPicturesLookTheSame) {
  // Flat quarters of strong colours: what a wrong matrix or range would shift.
  constexpr int kWidth = 161, kHeight = 121;
  Bytes frame(4 * kWidth * kHeight);
  const uint8_t colours[4][3] = {{30, 40, 220}, {40, 200, 50}, {230, 60, 20}, {128, 250, 250}};
  const auto quarter = [](int x, int y) { return (x > kWidth / 2 ? 1 : 0) + (y > kHeight / 2 ? 2 : 0); };
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      uint8_t *pixel = &frame[static_cast<size_t>(4 * (y * kWidth + x))];
      std::copy_n(colours[quarter(x, y)], 3, pixel);
      pixel[3] = x < kWidth / 4 ? 128 : 255;
    }
  for (const char *name :
       {"b.mp4", "b.webm", "b.mov", "b.jpg", "b.avi", "b.webp", "b.gif", "b.ts", "b.mpg"}) {
    const bool still = MediaWriter::isStill(name);
    write(path(name), pictures(kWidth, kHeight), std::vector<Bytes>(still ? 1 : 12, frame));
    VideoReader reader(path(name), {});
    const bool alpha = reader.info().alpha && !contains(name, "gif");
    EXPECT_EQ(alpha, contains(name, "webm") || contains(name, "mov") || contains(name, "webp")) << name;
    const auto back = reader.at(still ? 0 : 11);
    for (const int x : {20, 60, 140, kWidth - 1})
      for (const int y : {30, 100, kHeight - 1})
        for (size_t c = 0; c < (alpha ? 4 : 3); ++c)
          EXPECT_NEAR(back->pixels[static_cast<size_t>(4 * (y * reader.width() + x)) + c],
                      frame[static_cast<size_t>(4 * (y * kWidth + x)) + c], 8)
              << name << " at " << x << "," << y << " channel " << c;
  }
}

TEST_F(Media, AnyOrderOfFramesGivesTheSamePictures) {
  // B frames and long groups of pictures; sound that begins earlier than the pictures.
  const std::string clip = make("clip.mp4", {"-f", "lavfi", "-i", "testsrc2=s=64x48:r=25:d=20", "-c:v",
                                             "libx264", "-g", "70", "-bf", "3", "-pix_fmt", "yuv420p"});
  const std::string varying = make("varying.mkv", {"-i", clip, "-vf", "select='mod(n+1,4)+gt(mod(n,100),50)'",
                                                   "-fps_mode", "vfr", "-c:v", "ffv1"});
  const std::string stream = make("stream.ts", {"-i", clip, "-c", "copy", "-bsf:v", "h264_mp4toannexb"});
  for (const std::string &file : {clip, varying, stream})
    for (const Rational exact : {Rational(25), Rational(30000, 1001), Rational(10)})
      for (const double start : {0.0, 1.3}) {
        VideoReaderOptions options;
        options.rate = exact;
        const double rate = exact.value();
        options.start = start;
        options.width = 16;
        options.height = 12;
        VideoReader sequential(file, options), random(file, options);
        const auto seconds = [&](double t) { return static_cast<size_t>(t * rate); };
        std::vector<Bytes> frames;
        while (!sequential.frameCount())
          frames.push_back(sequential.at(frames.size())->pixels);
        EXPECT_NEAR(static_cast<double>(*sequential.frameCount()), (20 - start) * rate, 0.06 * rate + 1)
            << file;
        const size_t places[] = {seconds(3), 0, 1, seconds(14.4), seconds(14.2), seconds(99), seconds(19)};
        for (const size_t place : places)
          EXPECT_EQ(random.at(place)->pixels, frames[std::min(place, *sequential.frameCount() - 1)])
              << file << " rate " << rate << " start " << start << " frame " << place;
        if (file != clip || rate > 25 || start > 0)
          break;
      }
}

/// Frames that show their numbers, up to 256 of them: of 16 each in grey on the left, and how many times 16
/// on the right. One group of pictures, with B-frames.
class Numbered : public Media {
protected:
  std::string clip_;

  void SetUp() override {
    Media::SetUp();
    clip_ =
        make("clip.mp4",
             {"-f", "lavfi", "-i",
              "nullsrc=s=64x48:r=25:d=10,geq=lum='32+12*if(lt(X,32),mod(N,16),floor(N/16))':cb=128:cr=128",
              "-c:v", "libx264", "-g", "250", "-bf", "3", "-crf", "10", "-pix_fmt", "yuv420p"});
  }
  static int numberOf(const Frame &frame) {
    const auto digit = [&](int x) {
      const int grey = frame.pixels[static_cast<size_t>(4 * (frame.height / 2 * frame.width + x))];
      return static_cast<int>(std::lround((grey * 219.0 / 255 + 16 - 32) / 12));
    };
    return digit(frame.width / 5) + 16 * digit(frame.width * 4 / 5);
  }
};

TEST_F(Numbered, FramesComeByTheirNumbersWhereverReadingBegins) {
  const struct {
    std::string file;
    std::function<int(int)> number; // of the frame that is shown at a place
  } clips[] = {
      {clip_, [](int i) { return i; }},
      {make("offset.mkv", {"-i", clip_, "-c", "copy", "-output_ts_offset", "1.7"}), [](int i) { return i; }},
      {make("stream.ts", {"-i", clip_, "-c", "copy", "-bsf:v", "h264_mp4toannexb"}), [](int i) { return i; }},
      // Pictures from 0.4 s on, sound from the beginning.
      {make("late.mp4", {"-itsoffset", "0.4", "-i", clip_, "-f", "lavfi", "-i", "sine=d=10.4", "-map", "0:v",
                         "-map", "1:a", "-c:v", "copy"}),
       [](int i) { return std::max(0, i - 10); }},
      // Every fourth one is missing: the one before goes on.
      {make("varying.mp4", {"-i", clip_, "-vf", "select='mod(n+1,4)'", "-fps_mode", "vfr", "-c:v", "libx264",
                            "-g", "250", "-bf", "3", "-crf", "10"}),
       [](int i) { return i % 4 == 3 ? i - 1 : i; }},
  };
  for (const auto &[file, number] : clips) {
    VideoReader reader(file, {});
    EXPECT_EQ(reader.rate(), Rational(25)) << file;
    for (const int place : {0, 1, 137, 136, 135, 134, 30, 31, 11, 246, 245, 200, 190, 3, 2})
      EXPECT_EQ(numberOf(*reader.at(static_cast<size_t>(place))), number(place)) << file << " at " << place;
  }
}

TEST_F(Numbered, GoingBackwardsReadsAStretchOnce) {
  std::ofstream(path("counting")) << "#!/bin/sh\necho >> " << path("started") << "\nexec ffmpeg \"$@\"\n";
  fs::permissions(path("counting"), fs::perms::owner_all);
  VideoReaderOptions options;
  options.programs.ffmpeg = path("counting");
  for (const bool scaled : {false, true}) {
    options.width = scaled ? 128 : 0;
    options.height = scaled ? 96 : 0;
    VideoReader reader(clip_, options);
    for (int i = 249; i >= 0; --i)
      ASSERT_EQ(numberOf(*reader.at(static_cast<size_t>(i))), i);
    for (const size_t place : {0, 1, 2, 70, 71, 69})
      EXPECT_EQ(reader.at(place)->pixels, VideoReader(clip_, options).at(place)->pixels) << place;
  }
  // Three for each of the two ways back, and those of the last comparisons.
  EXPECT_LE(fs::file_size(path("started")), 2 * 3 + 2 * 6 + 2U);
}

TEST_F(Media, RatesSizesAndTheWindow) {
  const std::string clip =
      make("clip.mkv", {"-f", "lavfi", "-i", "testsrc2=s=64x48:r=25:d=2", "-c:v", "ffv1"});
  VideoReader native(clip, {});
  EXPECT_EQ(native.rate(), Rational(25));
  std::vector<std::shared_ptr<const Frame>> frames;
  for (size_t i = 0; i < 50; ++i)
    frames.push_back(native.at(i));
  EXPECT_TRUE(frames[0]->pixels != frames[10]->pixels) << "a frame that a caller holds stays as it is";
  (void)native.at(50);
  EXPECT_EQ(native.frameCount(), 50u);
  EXPECT_EQ(native.at(48).get(), frames[48].get()) << "within the window";
  VideoReaderOptions options;
  options.rate = 50;
  options.width = 31;
  options.height = 90;
  VideoReader doubled(clip, options);
  EXPECT_EQ(doubled.at(3)->pixels.size(), size_t{4} * 31 * 90);
  EXPECT_EQ(doubled.at(2)->pixels, doubled.at(3)->pixels);
  options = {};
  options.rate = Rational(25, 2);
  options.start = 0.4;
  VideoReader halved(clip, options);
  EXPECT_EQ(halved.at(5)->pixels, frames[20]->pixels);
  {
    VideoReader abandoned(clip, {});
    (void)abandoned.at(0);
  }
  EXPECT_TRUE(contains(native.commandLine(), "ffmpeg -v error"));
}

TEST_F(Media, SoundComesBackSampleForSample) {
  const std::vector<float> wave = samples(3 * 50000);
  for (const char *name : {"s.wav", "s.caf", "s.w64", "s.wv", "s.flac"}) {
    MediaWriter writer(path(name), sound(44100, 3));
    writer.writeSamples(wave.data(), 20000);
    writer.writeSamples(wave.data() + 60000, 30000);
    writer.finish();
    AudioReader reader(path(name), {});
    EXPECT_EQ(reader.sampleRate(), 44100);
    ASSERT_EQ(reader.channels(), 3);
    const bool exact = !contains(name, "flac"); // 24 bits, clipped
    std::vector<float> back(wave.size() + 30);
    ASSERT_EQ(reader.read(0, 50010, back.data()), 50000u) << name;
    for (size_t i = 0; i < wave.size(); ++i)
      ASSERT_NEAR(back[i], exact ? wave[i] : std::clamp(wave[i], -1.0f, 1.0f), exact ? 0 : 3e-7) << name << i;
    EXPECT_EQ(reader.frameCount(), 50000u);
    EXPECT_EQ(reader.read(50000, 10, back.data()), 0u);
    EXPECT_EQ(reader.read(49990, 100, back.data()), 10u);
  }
  AudioReaderOptions options;
  options.start = 0.5;
  AudioReader later(path("s.wav"), options);
  float three[3];
  ASSERT_EQ(later.read(7, 1, three), 1u);
  EXPECT_EQ(three[1], wave[3 * (22050 + 7) + 1]);
  EXPECT_EQ(later.read(28000, 1, three), 0u);
  EXPECT_EQ(later.frameCount(), 27950u);
}

TEST_F(Media, SoundGoesBackAndConverts) {
  const std::string file = make("long.flac", {"-f", "lavfi", "-i", "sine=f=441:r=48000:d=30:beep_factor=4"});
  AudioReaderOptions options;
  options.sampleRate = 44100;
  options.channels = 2;
  AudioReader reader(file, options), other(file, options);
  std::vector<float> a(2 * 1000), b(2 * 1000);
  for (const uint64_t place : {1200000u, 5u, 900000u, 899000u, 0u}) {
    ASSERT_EQ(reader.read(place, 1000, a.data()), 1000u);
    AudioReader fresh(file, options);
    ASSERT_EQ(fresh.read(place, 1000, b.data()), 1000u);
    EXPECT_EQ(a, b) << place;
  }
  (void)other.read(30 * 44100 + 100, 1, b.data());
  EXPECT_NEAR(static_cast<double>(other.frameCount().value_or(0)), 30 * 44100, 2);
  EXPECT_EQ(a[1000], a[1001]) << "one channel for both";
}

TEST_F(Media, PicturesAndSoundInOneFile) {
  const std::vector<float> wave = samples(2 * 48000);
  const Bytes frame = noise(320, 240, 9);
  for (const char *name : {"av.mkv", "av.mp4", "av.webm", "av.mov"}) {
    WriterOptions options = pictures(320, 240);
    options.encoding.quality = name == std::string("av.mkv") ? Quality::lossless : Quality::good;
    options.sampleRate = 48000;
    options.channels = 2;
    MediaWriter writer(path(name), options);
    writer.writeSamples(wave.data(), 48000 - 1920); // far ahead, then in step
    for (int i = 0; i < 25; ++i) {
      if (i == 20)
        writer.writeSamples(wave.data() + 2 * (48000 - 1920), 1920);
      writer.writeFrame(frame.data());
    }
    writer.finish();
    const MediaInfo info = probe(path(name));
    EXPECT_TRUE(info.hasVideo && info.hasAudio) << name;
    EXPECT_NEAR(info.duration, 1, 0.1) << name;
    VideoReader reader(path(name), {});
    (void)reader.at(1000);
    EXPECT_EQ(reader.frameCount(), 25u) << name;
  }
  std::vector<float> back(wave.size());
  AudioReader exact(path("av.mkv"), {});
  ASSERT_EQ(exact.read(0, 48000, back.data()), 48000u);
  EXPECT_EQ(back, wave);
  // The sound of another file, from 0.25 s on; too short or too long, the pictures decide.
  make("tone.wav", {"-f", "lavfi", "-i", "sine=r=48000:d=0.75"});
  for (const double length : {0.0, 0.2}) {
    WriterOptions options = pictures(320, 240);
    options.companion.file = path("tone.wav");
    options.companion.sound = true;
    options.companion.start = 0.25;
    options.companion.duration = length;
    options.overwrite = true;
    options.encoding.quality = Quality::lossless;
    write(path("with.mkv"), options, std::vector<Bytes>(25, frame));
    VideoReader reader(path("with.mkv"), {});
    (void)reader.at(1000);
    EXPECT_EQ(reader.frameCount(), 25u);
    AudioReader tone(path("tone.wav"), {}), copied(path("with.mkv"), {});
    float one[2], other[2];
    ASSERT_EQ(tone.read(12000 + 500, 1, one), 1u);
    ASSERT_EQ(copied.read(500, 1, other), 1u);
    EXPECT_EQ(one[0], other[0]);
  }
}

TEST_F(Media, StreamsAreReadWithoutSeeking) {
  const std::vector<Bytes> frames{noise(64, 48, 1), noise(64, 48, 2), noise(64, 48, 3)};
  write(path("in.nut"), pictures(64, 48), frames);
  const auto throughPipe = [&](const std::string &bytesOf, auto work) {
    const std::string pipe = path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::jthread feeder([&] {
      Process cat({"sh", "-c", "cat \"$0\" > \"$1\"", bytesOf, pipe});
      cat.wait();
    });
    work(pipe);
    feeder.join();
    fs::remove(pipe);
  };
  throughPipe(path("in.nut"), [&](const std::string &pipe) {
    VideoReaderOptions options;
    options.window = 1;
    VideoReader reader(pipe, options);
    EXPECT_EQ(reader.width(), 64);
    EXPECT_EQ(reader.at(1)->pixels, frames[1]);
    EXPECT_EQ(reader.at(9)->pixels, frames[2]);
    EXPECT_TRUE(contains(errorOf([&] { (void)reader.at(0); }), "cannot go back"));
  });
  {
    std::ofstream raw(path("raw"), std::ios::binary);
    for (const Bytes &frame : frames)
      raw.write(reinterpret_cast<const char *>(frame.data()), static_cast<std::streamsize>(frame.size()));
  }
  throughPipe(path("raw"), [&](const std::string &pipe) {
    VideoReaderOptions options;
    options.raw = true;
    options.rawWidth = 64;
    options.rawHeight = 48;
    VideoReader reader(pipe, options);
    EXPECT_EQ(reader.at(0)->pixels, frames[0]);
    EXPECT_EQ(reader.at(2)->pixels, frames[2]);
  });
}

TEST_F(Media, OutputAppearsWholeOrNotAtAll) {
  const Bytes frame = noise(64, 48, 1);
  const auto entries = [&] {
    return std::distance(fs::directory_iterator(folder_), fs::directory_iterator());
  };
  {
    MediaWriter writer(path("c.mp4"), pictures(64, 48));
    EXPECT_EQ(entries(), 0) << "nothing before the first frame";
    writer.writeFrame(frame.data());
    EXPECT_EQ(entries(), 1);
    EXPECT_FALSE(fs::exists(path("c.mp4")));
  }
  EXPECT_EQ(entries(), 0) << "given up without finish";
  write(path("c.png"), pictures(64, 48), {frame});
  struct stat status;
  ASSERT_EQ(stat(path("c.png").c_str(), &status), 0);
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(status.st_mode & 0777, 0666 & ~mask);
  EXPECT_TRUE(
      contains(errorOf([&] { MediaWriter again(path("c.png"), pictures(64, 48)); }), "the file exists"));
  WriterOptions over = pictures(64, 48);
  over.overwrite = true;
  write(path("c.png"), over, {noise(64, 48, 2)});
  EXPECT_EQ(VideoReader(path("c.png"), {}).at(0)->pixels, noise(64, 48, 2));
  // Appeared meanwhile: not replaced.
  EXPECT_TRUE(contains(errorOf([&] {
                         MediaWriter writer(path("d.png"), pictures(64, 48));
                         writer.writeFrame(frame.data());
                         std::ofstream(path("d.png")) << "mine";
                         writer.finish();
                       }),
                       "the file exists"));
  EXPECT_EQ(fs::file_size(path("d.png")), 4u);
  EXPECT_EQ(entries(), 2);
}

TEST_F(Media, WriterRefusesWhatCannotBe) {
  const Bytes frame = noise(64, 48, 1);
  const auto refusal = [&](const std::string &name, WriterOptions options) {
    return errorOf([&] { write(name, options, {frame, frame}); });
  };
  EXPECT_TRUE(contains(refusal(path("no/such/x.png"), pictures(64, 48)), "No such file or directory"));
  EXPECT_TRUE(contains(refusal(folder_.string(), pictures(64, 48)), "Is a directory"));
  EXPECT_TRUE(contains(refusal(path("name"), pictures(64, 48)), "extension"));
  EXPECT_TRUE(contains(refusal(path("x.odd"), pictures(64, 48)), "known are mp4"));
  EXPECT_TRUE(contains(refusal(path("x.png"), pictures(0, 48)), "0x48"));
  EXPECT_TRUE(contains(refusal(path("x.png"), pictures(64, 40000)), "64x40000"));
  EXPECT_TRUE(contains(refusal(path("x.png"), pictures(64, 48)), "one picture"));
  EXPECT_TRUE(contains(refusal(path("x.wav"), pictures(64, 48)), "sound alone"));
  EXPECT_TRUE(contains(refusal(path("x.png"), sound(48000, 2)), "picture alone"));
  WriterOptions gone = pictures(64, 48);
  gone.programs.ffmpeg = "zol-no-such-ffmpeg";
  EXPECT_TRUE(contains(refusal(path("x.mp4"), gone), "zol-no-such-ffmpeg: No such file"));
  WriterOptions deaf = pictures(64, 48);
  deaf.companion.file = path("missing.wav");
  deaf.companion.sound = true;
  EXPECT_TRUE(contains(refusal(path("x.mp4"), deaf), "missing.wav"));
  if (geteuid() != 0) {
    fs::create_directory(path("locked"));
    fs::permissions(path("locked"), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_TRUE(contains(refusal(path("locked/x.png"), pictures(64, 48)), "Permission denied"));
  }
}

TEST_F(Media, FullDisksAreToldInOneLine) {
  const Bytes frame = noise(64, 48, 1);
  const std::vector<float> wave = samples(4000);
  for (const char *name : {"full.png", "full.mkv", "full.mp4", "full.wav"}) {
    fs::create_symlink("/dev/full", path(name));
    const bool isSound = MediaWriter::isSound(name);
    const std::string message = errorOf([&] {
      MediaWriter writer(path(name), isSound ? sound(48000, 2) : pictures(64, 48));
      isSound ? writer.writeSamples(wave.data(), 2000) : writer.writeFrame(frame.data());
      writer.finish();
    });
    EXPECT_TRUE(contains(message, "No space left on device") || contains(message, "Error")) << message;
    EXPECT_TRUE(contains(message, name)) << message;
  }
  // A limit on the size of files stands for a disk that fills up on the way.
  rlimit before;
  getrlimit(RLIMIT_FSIZE, &before);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit small = before;
  small.rlim_cur = 20000;
  setrlimit(RLIMIT_FSIZE, &small);
  const std::string message =
      errorOf([&] { write(path("grow.nut"), pictures(64, 48), std::vector<Bytes>(40, frame)); });
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_TRUE(contains(message, "File too large")) << message;
  EXPECT_FALSE(fs::exists(path("grow.nut")));
}

TEST_F(Media, BrokenFilesAreToldInOneLine) {
  EXPECT_TRUE(contains(errorOf([&] { (void)probe(path("missing.mp4")); }), "No such file or directory"));
  EXPECT_TRUE(contains(errorOf([&] { VideoReader reader(folder_.string(), {}); }), "Is a directory"));
  std::ofstream(path("text.mp4")) << "no video at all, whatever the name says";
  EXPECT_TRUE(contains(errorOf([&] { VideoReader reader(path("text.mp4"), {}); }), "Invalid data"));
  std::ofstream(path("empty.png")).flush();
  EXPECT_TRUE(contains(errorOf([&] { VideoReader reader(path("empty.png"), {}); }), "cannot read"));
  make("tone.wav", {"-f", "lavfi", "-i", "sine=d=0.1"});
  EXPECT_TRUE(contains(errorOf([&] { VideoReader reader(path("tone.wav"), {}); }), "no pictures"));
  const std::string clip =
      make("clip.mp4", {"-f", "lavfi", "-i", "testsrc2=s=64x48:d=4", "-movflags", "+faststart"});
  EXPECT_TRUE(contains(errorOf([&] { AudioReader reader(clip, {}); }), "no sound"));
  // Cut off or overwritten: what can be decoded, or an error, but an end.
  std::string bytes(static_cast<size_t>(fs::file_size(clip)), '\0');
  std::ifstream(clip, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  for (const size_t keep : {bytes.size() / 2, bytes.size() / 50}) {
    std::ofstream(path("cut.mp4"), std::ios::binary) << bytes.substr(0, keep);
    const std::string message = errorOf([&] {
      VideoReader reader(path("cut.mp4"), {});
      (void)reader.at(10000);
      EXPECT_LT(reader.frameCount().value_or(10000), 100u);
    });
    EXPECT_TRUE(message == "no error" || contains(message, "cannot read")) << message;
  }
  // A picture of 4 gigapixels that is not there.
  std::ofstream(path("bomb.ppm")) << "P6 65000 65000 255\n";
  EXPECT_TRUE(contains(errorOf([&] { (void)VideoReader(path("bomb.ppm"), {}).at(0); }), "cannot read"));
  VideoReaderOptions absurd;
  absurd.rate = 1 << 30;
  EXPECT_TRUE(contains(errorOf([&] { VideoReader reader(clip, absurd); }), "not possible"));
}

} // namespace
} // namespace zol::host
