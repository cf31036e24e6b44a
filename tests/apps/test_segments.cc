// Parts of a render: joined, they are the film that one render would have given.

#include "tests/apps/zol.h"

#include <algorithm>
#include <tuple>

namespace zol::test {
namespace {

/// Which cases run: encoders cost much, and are programs of their own whatever the target.
enum class Runs { everywhere, on64, onDemand };

bool runs(Runs when) {
  return when == Runs::everywhere || (when == Runs::on64 && sizeof(void *) == 8) ||
         std::getenv("ZOL_ALL") != nullptr;
}

class Segments : public InFolder {
protected:
  /// 25 pictures with a tone, a title and a chapter; b.mkv has another tone and lasts longer.
  void makeClips() {
    std::ofstream(path("told.txt")) << ";FFMETADATA1\ntitle=Twenty-five\n"
                                       "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=400\ntitle=one\n";
    make("a.mp4", "-f lavfi -i testsrc2=s=64x48:r=30000/1001 -f lavfi -i sine=f=440:r=48000 -i told.txt "
                  "-map_metadata 2 -frames:v 25 -t 0.834 -c:v libx264 -preset ultrafast -pix_fmt yuv420p");
    make("b.mkv", "-f lavfi -i mandelbrot=s=64x48:r=30000/1001 -f lavfi -i sine=f=990:r=48000 -frames:v 30 "
                  "-t 1 -c:v libx264 -preset ultrafast -pix_fmt yuv420p");
  }

  static std::string partName(int number) { return "p" + std::to_string(number) + ".mkv"; }

  /// Renders the parts, the last first, and joins them in that order.
  void renderParts(const std::string &arguments, int count, const std::string &film) {
    std::string parts;
    for (int k = count; k >= 1; --k) {
      const std::string words =
          " -y --segment " + std::to_string(k) + "/" + std::to_string(count) + " -o " + partName(k);
      const size_t own = arguments.find(" -- ");
      const Outcome part = zol("render " + arguments.substr(0, own) + words +
                               (own == arguments.npos ? "" : arguments.substr(own)));
      ASSERT_EQ(part.status, 0) << arguments << words << part.err;
      parts += ' ' + partName(k);
    }
    const Outcome joined = zol("join" + parts + " -y -o " + film);
    ASSERT_EQ(joined.status, 0) << arguments << joined.err;
  }

  /// What ffprobe tells of a file, in any order; of packets when and how long they are shown, which is not
  /// when they are decoded, nor in which order the tracks stand.
  std::string told(const std::string &file) {
    const Outcome outcome = shell(
        "ffprobe -v error -of compact -show_entries packet=stream_index,pts,duration:stream_tags:format_tags:"
        "format=start_time,nb_streams:chapter:stream=codec_name,codec_tag_string,profile,width,height,pix_"
        "fmt,"
        "has_b_frames,time_base,start_pts,nb_frames,r_frame_rate,avg_frame_rate,field_order,color_space,"
        "color_range,sample_rate,channels " +
        file + " | sort");
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }

  std::string decoded(const std::string &file, const std::string &streams) {
    return shell("ffmpeg -v error -i " + file + ' ' + streams + " -f framemd5 -").out;
  }

  void expectSame(const std::string &one, const std::string &joined, bool pictures = true) {
    EXPECT_EQ(told(joined), told(one));
    const std::string streams = pictures ? "-map 0:v -map 0:a?" : "-map 0:a";
    const std::string frames = decoded(one, streams);
    EXPECT_TRUE(decoded(joined, streams) == frames) << joined;
    EXPECT_GT(std::count(frames.begin(), frames.end(), '\n'), 10);
  }
};

TEST_F(Segments, AreTheFilmOfOneRender) {
  makeClips();
  make("fields.mov", "-f lavfi -i testsrc2=s=64x48:r=50:d=0.8 -f lavfi -i sine=d=0.4 -vf tinterlace=4 "
                     "-flags +ildct -timecode 01:00:00:00 -c:v prores_ks");
  using enum Runs;
  const struct {
    const char *film, *words, *codec;
    int parts;
    Runs when;
    bool lossy = false; // the encoder begins anew with each part
  } cases[] = {
      {"f.mkv", "mix -i a.mp4 -i b.mkv --codec ffv1", "", 3, everywhere},
      {"f.mov", "blur -i fields.mov", " --codec prores", 2, on64},
      {"f.mp4", "blur -i a.mp4 --codec h264 --quality lossless", "", 3, on64},
      {"f.webm", "blur -i a.mp4 --codec vp9,vorbis -- -c:v libvpx-vp9 -lossless 1 -cpu-used 8", "", 2, on64},
      {"f.mp4", "blur -i a.mp4 --frames 3-24", "", 1, onDemand},
      {"f.mp4", "blur -i a.mp4", "", 3, onDemand, true},
      {"f.mkv", "blur -i a.mp4 --rate 480 --duration 0.1", "", 2, onDemand, true}, // ends half a tick off
      {"f.ts", "blur -i a.mp4 --codec h264", "", 2, onDemand, true},
      {"f.avi", "blur -i b.mkv", " --codec mpeg4", 2, onDemand, true},
      {"f.mkv", "blur -i a.mp4 --codec hevc", "", 2, onDemand, true},
      {"f.mp4", "blur -i a.mp4 -- -c:v libx264 -bf 1 -preset ultrafast -qp 0 -c:a aac -b:a 64k", "", 2,
       onDemand},
  };
  for (const auto &[film, words, codec, parts, when, lossy] : cases) {
    if (!runs(when))
      continue;
    SCOPED_TRACE(std::string(film) + ": " + words);
    const std::string one = "one" + std::string(film).substr(1), all = words;
    const size_t own = all.find(" -- ");
    ASSERT_EQ(zol("render " + all.substr(0, own) + " -y -o " + one + (own == all.npos ? "" : all.substr(own)))
                  .status,
              0);
    renderParts(std::string(words) + codec, parts, film);
    expectSame(one, film, !lossy);
  }
}

TEST_F(Segments, LookBeyondTheirCuts) {
  makeClips();
  make("guess.ts", "-i b.mkv -c copy");
  make("clear.mov", "-i b.mkv -vf format=rgba,colorchannelmixer=aa=0.5 -c:v qtrle -an");
  make("tape.nut", "-f lavfi -i testsrc2=s=64x48:r=50:d=0.8 -vf tinterlace=interleave_top,format=yuv444p "
                   "-c:v rawvideo");
  using enum Runs;
  const std::tuple<const char *, int, Runs> cases[] = {
      {"'time warp' -i b.mkv --set 'Speed=0=1;0.5=0.1;1=1'", 2, everywhere},
      {"blur -i guess.ts", 2, everywhere},  // whose length is guessed
      {"deinterlace -i tape.nut", 2, on64}, // makes transparent pixels of opaque inputs
      {"copy -i clear.mov", 1, onDemand},
      {"'motion blur' -i a.mp4 --set Shutter=2 ! blur --frames 2-9", 8, onDemand},
  };
  for (const auto &[words, parts, when] : cases) {
    if (!runs(when))
      continue;
    SCOPED_TRACE(words);
    ASSERT_EQ(zol(std::string("render ") + words + " --codec ffv1 -y -o one.mkv").status, 0);
    renderParts(std::string(words) + " --codec ffv1", parts, "f.mkv");
    expectSame("one.mkv", "f.mkv");
  }
}

TEST_F(Segments, OfNumberedPicturesNeedNoJoining) {
  makeClips();
  const std::string words = "copy -i a.mp4 -an ", part = "render " + words + "-o f-%03d.png --segment ";
  render(words + "-o one-%03d.png");
  render(words + "-o f-%03d.png --segment 3/3");
  render(words + "-o f-%03d.png --segment 1/3");
  fails("join f-%03d.png", "missing: 2");
  render(words + "-o f-%03d.png --segment 2/3");
  for (int i = 0; i < 25; ++i) {
    const std::string number = (i < 10 ? "00" : "0") + std::to_string(i) + ".png";
    EXPECT_TRUE(contents(path("f-" + number)) == contents(path("one-" + number))) << i;
  }
  EXPECT_EQ(zol(part + "2/3").err, "zol: note: \"f-%03d.png\" is complete already\n");
  std::filesystem::remove(path("f-010.png"));
  fails(part + "2/3", " exists");
  fails("join f-%03d.png", "missing: 2");
  EXPECT_EQ(zol(part + "2/3 -y").err, "");
  fails("join f-%03d.png -o f.mp4", "without -o");
  EXPECT_EQ(zol("join f-%03d.png").err, "zol: note: \"f-%03d.png\" is complete: 25 pictures\n");
  EXPECT_EQ(entries(), 50U + 3) << "no record is left";
  fails(part + "1/3", " exists");
}

TEST_F(Segments, AreKeptAndToldApart) {
  makeClips();
  const std::string words = "render copy -i a.mp4 ";
  for (const char *part : {"1/3 -o p1.mkv", "2/3 -o p2.mkv", "3/3 -o p3.mkv", "2/4 -o q2.mkv"})
    ASSERT_EQ(zol(words + "--segment " + part).err, "");
  ASSERT_EQ(zol("render blur -i a.mp4 --segment 2/3 -o b2.mkv").err, "");
  std::filesystem::copy_file(path("p1.mkv"), path("again.mkv"));
  std::ofstream(path("cut.mkv"), std::ios::binary) << contents(path("p3.mkv")).substr(0, 1500);
  const std::pair<const char *, const char *> refused[] = {
      {"p1.mkv p3.mkv -o f.mp4", "of 3 parts are missing: 2"},
      {"p1.mkv again.mkv p3.mkv -o f.mp4", "\"p1.mkv\" and \"again.mkv\" are both part 1 of 3"},
      {"p1.mkv q2.mkv p3.mkv -o f.mp4", "\"q2.mkv\" is part 2 of 4, \"p1.mkv\" is part 1 of 3"},
      {"p1.mkv b2.mkv p3.mkv -o f.mp4", "\"b2.mkv\" is a part of another render than \"p1.mkv\""},
      {"p1.mkv b.mkv -o f.mp4", "\"b.mkv\" is no part of a render"},
      {"p1.mkv a.mp4 -o f.mp4", "cannot read a.mp4: it is no Matroska file"},
      {"p1.mkv p2.mkv cut.mkv -o f.mp4", "cannot read cut.mkv: it is not whole"},
      {"p1.mkv p2.mkv p3.mkv -o f.webm", "\"f.webm\" cannot hold h264"},
      {"p1.mkv p2.mkv p3.mkv -o f.h264", "can be copied into mp4"},
      {"p1.mkv p2.mkv p3.mkv -o f.png", "parts become a film"},
      {"p1.mkv p2.mkv p3.mkv -o a.mp4", "the file exists"},
      {"p1.mkv p2.mkv p3.mkv", "no output was named"},
  };
  for (const auto &[parts, reason] : refused)
    fails(std::string("join ") + parts, reason);

  const std::pair<const char *, const char *> impossible[] = {
      {"copy -i a.mp4 --segment 1/26 -o x.mkv", "25 frames cannot be cut into 26 parts"},
      {"copy -i a.mp4 --segment 1/2 -o x.mp4", "a part is a Matroska file"},
      {"copy -i a.mp4 --segment 1/2 -o x.png", "a part is a Matroska file"},
      {"copy -i a.mp4 --segment 1/2 -o -", "a part is a Matroska file"},
      {"copy -i - --segment 1/2 -o x.mkv", "can be read only once"},
      {"'sine audio generator' --segment 1/2 -o x.mkv", "sound is rendered as a whole"},
      {"copy -i a.mp4 --segment 1/2 -o '{name}.mkv'", "one film at a time"},
  };
  for (const auto &[arguments, reason] : impossible)
    fails(std::string("render ") + arguments, reason);
  fails(words + "--segment 3/2 -o x.mkv", "--segment takes K/N", 2);

  const std::string kept = contents(path("p2.mkv"));
  EXPECT_EQ(zol(words + "--segment 2/3 --threads 1 -y -o p2.mkv").err,
            "zol: note: \"p2.mkv\" is complete already\n");
  EXPECT_TRUE(contents(path("p2.mkv")) == kept);
  fails(words + "--segment 2/4 -o p2.mkv", "the file exists");
  fails("render blur -i a.mp4 --segment 2/3 -o p2.mkv", "the file exists");
  std::filesystem::last_write_time(path("a.mp4"), std::filesystem::file_time_type::clock::now());
  fails(words + "--segment 2/3 -o p2.mkv", "the file exists");
  EXPECT_EQ(zol(words + "--segment 2/3 -y -o p2.mkv").err, "");
  fails("join p1.mkv p2.mkv p3.mkv -o f.mp4", "another render");
}

TEST_F(Segments, OfAPlanAreCodedAsItsFilm) {
  makeClips();
  std::ofstream(path("plan.json")) << R"({"stages": [{"effect": "blur", "inputs": ["a.mp4"],
    "settings": [["Blurriness", "0=0.1;1=0"]]}], "output": "film.mov"})";
  const std::string words = "render blur -i a.mp4 --set 'Blurriness=0=0.1;1=0' ";
  ASSERT_EQ(zol(words + "-o one.mov").status, 0);
  ASSERT_EQ(zol("render --plan plan.json").status, 0);
  expectSame("one.mov", "film.mov");
  renderParts("--plan plan.json", 2, "film.mov");
  expectSame("one.mov", "film.mov");
  EXPECT_EQ(zol(words + "--codec prores --segment 1/2 -o p1.mkv").err,
            "zol: note: \"p1.mkv\" is complete already\n");
  fails("render --plan plan.json --segment 1/2", "a part is a Matroska file");
  fails("render --plan plan.json --size 8x8", "beside --plan stand", 2);
  fails("render --plan absent.json", "absent.json: No such file");
  fails("render --plan a.mp4", "it is no JSON");
}

} // namespace
} // namespace zol::test
