// What is told of an input before any of it is decoded: headers of pictures, names of sequences, facts.
#include "host/media/picture_header.h"
#include "host/media/probe.h"
#include "host/media/process.h"
#include "host/media/sequence.h"
#include "host/media/source.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <tuple>
#include <unistd.h>

namespace zol::host {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

PictureHeader headerOf(const std::string &bytes) {
  std::istringstream file(bytes);
  return readPictureHeader(file);
}

std::string bigEndian(size_t value, size_t size) {
  std::string bytes;
  for (size_t i = size; i-- > 0;)
    bytes += static_cast<char>(value >> 8 * i);
  return bytes;
}

std::string exif(int orientation, bool big) {
  const char value = static_cast<char>(orientation);
  return big ? "MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0"s + value + "\0\0\0\0\0\0"s
             : "II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0"s + value + "\0\0\0\0\0\0\0"s;
}

std::string segment(char marker, const std::string &data) {
  return "\xFF"s + marker + bigEndian(data.size() + 2, 2) + data;
}

std::string chunk(const std::string &type, const std::string &data) {
  return bigEndian(data.size(), 4) + type + data + "\0\0\0\0"s;
}

std::string riff(const std::string &type, const std::string &data) {
  std::string size = bigEndian(data.size(), 4);
  return type + std::string(size.rbegin(), size.rend()) + data + (data.size() % 2 != 0 ? "\0"s : ""s);
}

TEST(PictureHeader, TellsOfUsualStillsWhatDecodingTells) {
  const fs::path folder = fs::temp_directory_path() / ("zol-stills-" + std::to_string(getpid()));
  fs::create_directory(folder);
  const auto make = [&](const std::string &name, const std::string &words) {
    const std::string file = (folder / name).string();
    EXPECT_EQ(
        std::system(
            ("ffmpeg -v error -y -f lavfi -i testsrc2=s=35x21 -frames:v 1 " + words + " " + file).c_str()),
        0);
    return file;
  };
  MediaPrograms none;
  none.ffprobe = "/no/such/program";
  const std::pair<const char *, const char *> usual[] = {
      {"a.jpg", "-pix_fmt yuvj420p"}, {"b.jpg", "-pix_fmt yuvj422p"}, {"c.jpg", "-pix_fmt yuvj444p"},
      {"d.jpg", "-pix_fmt gray"},     {"e.png", "-pix_fmt rgb24"},    {"f.png", "-pix_fmt rgba"},
      {"g.png", "-pix_fmt gray"},     {"h.png", "-pix_fmt ya8"},      {"i.png", "-pix_fmt rgb48be"},
      {"j.png", "-pix_fmt gray16be"}, {"k.png", "-pix_fmt rgba64be"}, {"l.png", "-pix_fmt ya16be"}};
  for (const auto &[name, words] : usual) {
    const std::string file = make(name, words);
    const MediaInfo told = Source(file).look(none), probed = probe({{}, fileUrl(file)}, name, nullptr, {});
    const auto facts = [](const MediaInfo &info) {
      return std::tuple(info.format, info.videoCodec, info.still, info.width, info.height, info.pixelAspect,
                        info.alpha, info.deep, info.pixels.name(), info.coding.matrix, info.coding.fullRange,
                        info.coding.site, info.duration, info.guessed, info.interlaced);
    };
    EXPECT_TRUE(facts(told) == facts(probed)) << name;
  }
  // Of others only a look by decoding tells.
  for (const auto &[name, words] : {std::pair("m.png", "-pix_fmt pal8"), std::pair("n.png", "-pix_fmt monob"),
                                    std::pair("o.png", "-vf setsar=2"), std::pair("p.jpg", "-vf setsar=2")})
    EXPECT_THROW((void)Source(make(name, words)).look(none), HostError) << name;
  fs::remove_all(folder);
}

TEST(PictureHeader, TellsHowAPictureStands) {
  for (int orientation = 1; orientation <= 8; ++orientation)
    for (const bool big : {false, true}) {
      const std::string data = exif(orientation, big);
      const std::string files[] = {
          "\xFF\xD8"s + segment('\xE0', "JFIF") + segment('\xE1', "Exif\0\0"s + data) + segment('\xDA', ""),
          "\x89PNG\r\n\x1A\n"s + chunk("IHDR", "13 characters") + chunk("IDAT", "odd") + chunk("eXIf", data),
          "RIFF....WEBP" + riff("VP8X", "odd") + riff("EXIF", data),
          "RIFF....WEBP" + riff("EXIF", "Exif\0\0"s + data),
          data,
      };
      for (const std::string &file : files) {
        EXPECT_EQ(headerOf(file).orientation, orientation) << file;
        for (size_t cut = 0; cut < file.size(); ++cut) { // an end, and no turn that is none
          const int part = headerOf(file.substr(0, cut)).orientation;
          EXPECT_TRUE(part == 1 || part == orientation);
        }
      }
    }
  EXPECT_EQ(headerOf(exif(9, true)).orientation, 1);
  EXPECT_EQ(
      headerOf("\xFF\xD8"s + segment('\xDA', "") + segment('\xE1', "Exif\0\0"s + exif(6, true))).orientation,
      1);
}

TEST(PictureHeader, TellsProfilesOfOtherColours) {
  const auto jpeg = [](const std::string &profile) {
    return "\xFF\xD8"s + segment('\xE2', "ICC_PROFILE\0\1\1"s + profile);
  };
  EXPECT_TRUE(headerOf(jpeg("....Display P3")).otherColors);
  EXPECT_FALSE(headerOf(jpeg("....sRGB IEC61966-2.1")).otherColors);
  EXPECT_FALSE(headerOf(jpeg("..\0s\0R\0G\0B"s)).otherColors);
  EXPECT_FALSE(headerOf("\xFF\xD8"s + segment('\xE2', "MPF")).otherColors);
  EXPECT_TRUE(headerOf("\x89PNG\r\n\x1A\n"s + chunk("iCCP", "Adobe RGB\0zzzz"s)).otherColors);
  EXPECT_TRUE(headerOf("RIFF....WEBP" + riff("ICCP", "Adobe RGB")).otherColors);
}

class Sources : public testing::Test {
protected:
  Sources() {
    std::string name = (fs::temp_directory_path() / "zol-source-XXXXXX").string();
    folder_ = mkdtemp(name.data());
  }
  ~Sources() override { fs::remove_all(folder_); }

  [[nodiscard]] std::string path(const std::string &name) const { return (folder_ / name).string(); }
  void touch(const std::string &name) const { std::ofstream(path(name)).flush(); }

  /// What is told of a file that ffmpeg makes.
  [[nodiscard]] MediaInfo made(const std::string &name, std::vector<std::string> words) const {
    words.insert(words.begin(), {"ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i"});
    words.push_back(path(name));
    Process process(words);
    EXPECT_EQ(process.wait(), 0) << process.lastLine();
    return probe(path(name));
  }

  fs::path folder_;
};

TEST_F(Sources, SequencesAreFoundByTheirNumbers) {
  for (const char *name : {"a007.png", "a008.png", "a009.png", "a1000.png", "a0010.png", "a1.png", "ab.png",
                           "a010.jpg", "50% 3.png", "50% 4.png", "0.bmp"})
    touch(name);
  const auto sequence = sequenceNamed(path("a%03d.png"));
  ASSERT_TRUE(sequence);
  EXPECT_EQ(sequence->first, 7);
  EXPECT_EQ(sequence->count, 3);
  EXPECT_TRUE(sequence->goesOn);
  EXPECT_EQ(sequence->file(sequence->first), path("a007.png"));
  const auto percent = sequenceNamed(path("50%% %d.png"));
  ASSERT_TRUE(percent);
  EXPECT_EQ(percent->first, 3);
  EXPECT_EQ(percent->count, 2);
  EXPECT_FALSE(percent->goesOn);
  EXPECT_EQ(sequenceNamed(path("%d.bmp"))->file(0), path("0.bmp"));
  for (const char *none : {"a%04d.jpg", "a.png", "a%d%d.png", "a%s.png", "b%d.png", "no/a%d.png"})
    EXPECT_FALSE(sequenceNamed(path(none))) << none;
}

TEST_F(Sources, FieldsAreFoundInThePicturesWhereTheContainerIsSilent) {
  const MediaInfo upper = made("upper.avi", {"testsrc2=s=64x48:d=0.2", "-vf", "setfield=tff", "-c:v", "mpeg4",
                                             "-flags", "+ildct+ilme"});
  EXPECT_TRUE(upper.interlaced && upper.topFieldFirst);
  const MediaInfo none = made("none.avi", {"testsrc2=s=64x48:d=0.2", "-c:v", "mpeg4"});
  EXPECT_FALSE(none.interlaced || none.topFieldFirst);
}

TEST_F(Sources, ClocksOfMillisecondsMeanAUsualRate) {
  // Few pictures: their times, cut to milliseconds, average to another rate.
  const MediaInfo few = made("few.mkv", {"testsrc2=s=32x24:r=30:d=0.3", "-c:v", "mpeg4", "-bsf:v",
                                         "setts=pts=PTS:duration=0", "-default_mode", "passthrough"});
  EXPECT_EQ(few.frameRate, Rational(30));
  // A clock whose ticks are no rate at all.
  const MediaInfo ticks =
      made("ticks.mp4", {"testsrc2=s=32x24:r=25:d=2", "-vf", "settb=1/1000,setpts=N*40+mod(N*N\\,17)",
                         "-fps_mode", "passthrough", "-video_track_timescale", "1000"});
  EXPECT_GE(ticks.frameRate.value(), 24);
  EXPECT_LE(ticks.frameRate.value(), 60);
}

TEST(PictureSize, IsWhatFfmpegCanMake) {
  EXPECT_TRUE(isPictureSize(1, 1) && isPictureSize(32767, 8000) && isPictureSize(16255, 16255));
  EXPECT_FALSE(isPictureSize(16256, 16256) || isPictureSize(32767, 8063 + 1) || isPictureSize(0, 5) ||
               isPictureSize(5, 32768));
}

} // namespace
} // namespace zol::host
