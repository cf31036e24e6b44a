// Inputs as users have them: without a length, broken, of varying rates, turned, misleading.

#include "tests/apps/zol.h"

#include <algorithm>
#include <set>

namespace zol::test {
namespace {

constexpr size_t kFrame = size_t{32} * 24 * 4;

class Inputs : public InFolder {
protected:
  /// The frames that a file of 32x24 comes to.
  size_t frames(const std::string &words) { return rendered(words).size() / kFrame; }

  /// What a command that succeeds says, in one line.
  std::string saidBy(const std::string &words) {
    const Outcome outcome = zol(words);
    EXPECT_EQ(outcome.status, 0) << words;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << words << ": " << outcome.err;
    return outcome.err;
  }

  void save(const std::string &file, const std::string &bytes) {
    std::ofstream(path(file), std::ios::binary) << bytes;
  }
};

bool contains(const std::string &text, const std::string &part) { return text.find(part) != text.npos; }

TEST_F(Inputs, WithoutALengthAreReadToTheirEnd) {
  make("clip.mp4", "-f lavfi -i testsrc2=s=32x24:r=30:d=1.2 -c:v libx264 -bf 0");
  make("clip.ts", "-i clip.mp4 -c copy");
  make("black.png", "-f lavfi -i color=black:s=32x24 -frames:v 1");
  const std::string encode = "ffmpeg -v error -i clip.mp4 ";
  const struct {
    const char *name;
    std::string made;
    size_t frames;
  } files[] = {
      {"piped.mkv", encode + "-c copy -f matroska - | cat > piped.mkv", 36},
      {"raw.h264", encode + "-c copy raw.h264", 36},
      {"raw.mjpeg", encode + "raw.mjpeg", 36},
      {"live.webm", encode + "-c:v libvpx -f webm -live 1 - | cat > live.webm", 36},
      {"part.mp4", encode + "-c copy -movflags frag_keyframe+empty_moov part.mp4", 36},
      {"joined.ts", "cat clip.ts clip.ts > joined.ts", 72},
  };
  for (const auto &[name, made, count] : files) {
    EXPECT_EQ(shell(made).err, "") << name;
    // Keys span all of it.
    const std::string fade =
        rendered("mix -i " + std::string(name) + " -i black.png --set 'Transition=0=0;1=1'");
    ASSERT_EQ(fade.size(), count * kFrame) << name;
    uint8_t brightest = 0;
    for (size_t i = fade.size() - kFrame; i < fade.size(); ++i)
      brightest = std::max(brightest, static_cast<uint8_t>(i % 4 == 3 ? 0 : fade[i]));
    EXPECT_LT(brightest, 16) << name;
  }
  for (const auto &[name, count] : {std::pair("piped.mkv", 36), std::pair("joined.ts", 72)})
    EXPECT_EQ(
        shell("cat " + std::string(name) + " | " ZOL_BUILD_DIR "/zol render copy -i - -o - | wc -c").out,
        std::to_string(static_cast<size_t>(count) * kFrame) + '\n')
        << name;
  EXPECT_EQ(zol("slowmo piped.mkv --method mix -o slow.nut").err, "");
  EXPECT_EQ(pixels("slow.nut").size(), 72 * kFrame);
  // Any order of frames gives the same, also where the clock begins anew.
  const std::string all = rendered("copy -i joined.ts");
  EXPECT_TRUE(rendered("copy -i joined.ts --frames 50-51") == all.substr(50 * kFrame, 2 * kFrame));
}

TEST_F(Inputs, OfSoundWithoutALengthAreReadToTheirEnd) {
  // Hiss behind silence: the bit rate of its beginning says nothing of its length.
  make("noise.mp3",
       "-f lavfi -i 'anoisesrc=d=3:a=0.5,volume=enable=lt(t\\,1.5):volume=0' -q:a 4 -write_xing 0");
  EXPECT_EQ(rendered("'simple audio switcher' -i noise.mp3").size(),
            samples("noise.mp3").size() * sizeof(float));
}

TEST_F(Inputs, EndWhereTheyAreCutAndSayWhere) {
  make("clip.mp4", "-f lavfi -i testsrc2=s=320x240:r=25:d=4 -c:v libx264 -g 10 -movflags +faststart");
  make("photo.jpg", "-f lavfi -i testsrc2=s=320x240 -frames:v 1");
  make("sound.flac", "-f lavfi -i anoisesrc=d=3");
  for (const char *file : {"clip.mp4", "photo.jpg", "sound.flac"})
    save("cut-" + std::string(file), contents(path(file)).substr(0, contents(path(file)).size() / 2));

  const std::string clip = saidBy("render copy -i cut-clip.mp4 -o cut.nut");
  const size_t left = pixels("cut.nut").size() / (4U * 320 * 240);
  EXPECT_EQ(left, pixels("cut-clip.mp4 -fps_mode passthrough 2>/dev/null").size() / (4U * 320 * 240));
  EXPECT_GT(left, 10U);
  EXPECT_LT(left, 90U);
  const size_t place = clip.find("\"cut-clip.mp4\" is damaged at about ");
  ASSERT_NE(place, clip.npos) << clip;
  EXPECT_NEAR(std::stod(clip.substr(place + 35)), static_cast<double>(left) / 25, 0.5) << clip;

  EXPECT_TRUE(contains(saidBy("render copy -i cut-photo.jpg -o photo.png"), "\"cut-photo.jpg\" is damaged"));
  EXPECT_TRUE(contains(saidBy("render 'simple audio switcher' -i cut-sound.flac -o sound.wav"),
                       "\"cut-sound.flac\" is damaged"));
  EXPECT_LT(samples("sound.wav").size(), size_t{44100} * 2);
  EXPECT_TRUE(
      contains(saidBy("slowmo cut-clip.mp4 --method mix -o slow.nut"), "\"cut-clip.mp4\" is damaged"));

  fails("render copy --strict -i cut-clip.mp4 -o no.mkv", "is damaged at about");
  fails("render copy --strict -i cut-photo.jpg -o no.png", "is damaged");
  fails("render 'simple audio switcher' --strict -i cut-sound.flac -o no.wav", "is damaged");
  fails("slowmo --strict cut-clip.mp4 --method mix -o no.mkv", "is damaged");
  for (const char *whole : {"copy -i clip.mp4", "copy -i photo.jpg", "'simple audio switcher' -i sound.flac"})
    EXPECT_FALSE(rendered(std::string(whole) + " --strict").empty());
}

TEST_F(Inputs, EndWhereTheySayWhateverTheirLastTimesAre) {
  // A picture of a day later, in a file that says it lasts two seconds.
  make("late.mkv", "-f lavfi -i testsrc2=s=32x24:r=25:d=2 -c:v mpeg4 -bsf:v "
                   "\"setts=ts=if(gt(N\\,40)\\,TS+90000000\\,TS)\"");
  shell("ffmpeg -v error -y -f lavfi -i testsrc2=s=32x24:r=25:d=2 -c:v mpeg4 good.mkv");
  const std::string good = contents(path("good.mkv")), late = contents(path("late.mkv"));
  EXPECT_FALSE(late.empty() || good.empty());
  // The length that the good file tells of.
  const std::string tag = "\x44\x89\x88";
  const size_t from = good.find(tag), to = late.find(tag);
  ASSERT_TRUE(from != good.npos && to != late.npos);
  save("late.mkv", late.substr(0, to) + good.substr(from, tag.size() + 8) + late.substr(to + tag.size() + 8));
  const Outcome outcome = zol("render copy -i late.mkv -o - | wc -c");
  EXPECT_LE(std::stoul(outcome.out), 80 * kFrame);
  EXPECT_TRUE(contains(outcome.err, "goes on behind its length of 2 s")) << outcome.err;
}

TEST_F(Inputs, OfVaryingRatesLoseNoPicture) {
  // Of 30 a second with gaps, by clocks of three kinds.
  const std::string gaps =
      "-f lavfi -i nullsrc=s=32x24:r=30:d=2 -fps_mode passthrough -vf "
      "\"geq=16+mod(41*N\\,211):128:128,select='mod(n+1,4)*lt(mod(n,20),13)',setpts=PTS+0.004/TB\" ";
  for (const char *file : {"gaps.mp4", "gaps.mkv", "gaps.mov"}) {
    make(file, gaps + (std::string(file) == "gaps.mov" ? "-c:v png" : "-c:v libx264 -qp 0"));
    const auto distinct = [](const std::string &bytes) {
      std::set<std::string> pictures;
      for (size_t i = 0; i < bytes.size(); i += kFrame)
        pictures.insert(bytes.substr(i, kFrame));
      return pictures.size();
    };
    const size_t all = pixels(std::string(file) + " -fps_mode passthrough").size() / kFrame;
    EXPECT_GT(all, 25U);
    for (const char *rate : {"", " --rate 30", " --rate 60", " --rate 30000/1001"})
      EXPECT_EQ(distinct(rendered("copy -i " + std::string(file) + rate)), all) << file << rate;
    EXPECT_TRUE(contains(zol("render copy -i " + std::string(file) + " --rate 20 -o o.nut --dry-run").out,
                         "fps=fps=20"));
  }
  render("copy -i gaps.mp4 -o even.nut");
  EXPECT_EQ(shell("ffprobe -v error -show_entries stream=r_frame_rate -of csv=p=0 even.nut").out, "30/1\n");
}

TEST_F(Inputs, StandAsTheirCamerasStood) {
  make("flat.jpg", "-f lavfi -i testsrc2=s=48x32 -frames:v 1 -q:v 2 -pix_fmt yuvj444p");
  const std::string flat = contents(path("flat.jpg"));
  for (char orientation = 1; orientation <= 8; ++orientation) {
    using namespace std::string_literals;
    save("turned.jpg", flat.substr(0, 2) + "\xFF\xE1\0\x22"s +
                           "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0"s + orientation +
                           "\0\0\0\0\0\0\0"s + flat.substr(2));
    const std::string ours = rendered("copy -i turned.jpg"), theirs = pixels("turned.jpg");
    ASSERT_EQ(ours.size(), theirs.size());
    for (size_t i = 0; i < ours.size(); ++i) // each rounds in its own way
      ASSERT_NEAR(uint8_t(ours[i]), uint8_t(theirs[i]), 2) << int{orientation} << ' ' << i;
  }
  render("copy -i turned.jpg -o turned.png");
  EXPECT_EQ(shell("ffprobe -v error -show_entries stream=width,height -of csv=p=0 turned.png").out,
            "32,48\n");
}

TEST_F(Inputs, SayWhatIsNotKept) {
  const std::string moving = "-f lavfi -i testsrc2=s=32x24:d=0.1 -c:v ffv1 ";
  make("hdr.mkv",
       moving + "-pix_fmt yuv420p10le -color_primaries bt2020 -color_trc smpte2084 -colorspace bt2020nc");
  make("hlg.mkv", moving + "-color_trc arib-std-b67");
  make("deep.png", "-f lavfi -i testsrc2=s=32x24 -frames:v 1 -pix_fmt rgb48be");
  make("plain.mkv", moving + "-color_primaries bt709 -color_trc bt709");
  const std::pair<const char *, const char *> cases[] = {
      {"hdr.mkv", "\"hdr.mkv\": not kept: HDR (PQ), wide gamut (BT.2020), more than 8 bits a component\n"},
      {"hlg.mkv", "\"hlg.mkv\": not kept: HDR (HLG)\n"},
      {"deep.png", "\"deep.png\": not kept: more than 8 bits a component\n"},
  };
  for (const auto &[file, note] : cases) {
    const std::string words =
        "render mix -i " + std::string(file) + " -i " + file + " --frames 0-0 -y -o o.nut";
    EXPECT_EQ(saidBy(words), "zol: note: " + std::string(note));
    EXPECT_EQ(zol(words + " --quiet").err, "");
  }
  render("copy -i plain.mkv -y -o o.nut");
}

TEST_F(Inputs, ThatNameOtherFilesAreRefused) {
  make("part.ts", "-f lavfi -i testsrc2=s=32x24:d=0.4 -c:v mpeg2video");
  const std::string beside = "part.ts", absolute = path("part.ts").string();
  const auto hls = [](const std::string &file) {
    return "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:0.4,\n" + file + "\n#EXT-X-ENDLIST\n";
  };
  const auto dash = [](const std::string &file) {
    return "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
           "mediaPresentationDuration=\"PT0.4S\"><Period><AdaptationSet><Representation id=\"0\" "
           "mimeType=\"video/mp4\" bandwidth=\"1\"><BaseURL>" +
           file + "</BaseURL></Representation></AdaptationSet></Period></MPD>";
  };
  const std::pair<const char *, std::string> files[] = {
      {"list.m3u8", hls(beside)},
      {"hidden.mp4", hls(absolute)},
      {"url.mp4", hls("file://" + absolute)},
      {"up.mp4", hls("../" + path("part.ts").parent_path().filename().string() + "/part.ts")},
      {"manifest.mpd", dash(beside)},
      {"manifest.mp4", dash(absolute)},
      {"list.ffconcat", "ffconcat version 1.0\nfile " + beside + '\n'},
      {"list.mp4", "ffconcat version 1.0\nfile " + beside + '\n'},
      {"session.sdp", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
                      "m=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n"},
      {"list.asx", "<asx version=\"3.0\"><entry><ref href=\"" + absolute + "\"/></entry></asx>"},
      {"reference.mov", "[Reference]\r\nRef1=" + absolute + "\r\n"},
  };
  for (const auto &[name, text] : files) {
    save(name, text);
    fails("render copy -i " + std::string(name) + " -o no.mkv", name);
  }
  fails("slowmo hidden.mp4 -o no.mkv", "hidden.mp4");
  EXPECT_NE(shell("cat hidden.mp4 | " ZOL_BUILD_DIR "/zol render copy -i - -o no.mkv").status, 0);
  for (const char *name : {"list.m3u8", "list.ffconcat"})
    EXPECT_EQ(frames("copy --playlists -i " + std::string(name)), 10U) << name;
}

TEST_F(Inputs, AreFilesBeforeTheyArePatterns) {
  make("p%03d.png", "-f lavfi -i testsrc2=s=32x24:r=10:d=0.6 -start_number 12");
  for (const char *literal : {"star*.png", "p%03d.png", "[1].png", "q?.jpg"}) {
    make("one.png", "-f lavfi -i color=red:s=16x8 -frames:v 1");
    shell(std::string(literal).ends_with("jpg")
              ? "ffmpeg -v error -i one.png -f mjpeg - > '" + std::string(literal) + "'"
              : "cp one.png '" + std::string(literal) + "'");
    EXPECT_EQ(rendered("copy -i '" + std::string(literal) + "'").size(), 16U * 8 * 4) << literal;
  }
  shell("rm 'p%03d.png'");
  EXPECT_EQ(frames("copy -i p%03d.png"), 6U);
  render("copy -i p%03d.png --rate 30000/1001 -o all.nut");
  EXPECT_EQ(shell("ffprobe -v error -show_entries stream=r_frame_rate -of csv=p=0 all.nut").out,
            "30000/1001\n");
  make("each.nut", "-start_number 12 -i p%03d.png -c:v rawvideo");
  EXPECT_TRUE(pixels("all.nut") == pixels("each.nut"));
  shell("rm p015.png");
  EXPECT_TRUE(contains(saidBy("render copy -i p%03d.png -y -o all.nut"), "ends at number 14"));
  EXPECT_EQ(pixels("all.nut").size(), 3 * kFrame);
  fails("render copy -i q%03d.png -o no.mkv", "No such file");
}

TEST_F(Inputs, AreReadOnceByEffectsThatLookBack) {
  make("clip.mkv", "-f lavfi -i testsrc2=s=32x24:r=25:d=1 -c:v ffv1");
  save("ffmpeg",
       "#!/bin/sh\ncase $* in *' -i '*) echo >> started ;; esac\nPATH=${PATH#*:} exec ffmpeg \"$@\"\n");
  shell("chmod +x ffmpeg");
  const auto started = [&](const std::string &words) {
    shell("rm -f started");
    const Outcome outcome = shell("PATH=$PWD:$PATH " ZOL_BUILD_DIR "/zol " + words);
    EXPECT_EQ(outcome.out.size() % (25 * kFrame), 0U) << words << outcome.err;
    EXPECT_FALSE(outcome.out.empty()) << words << outcome.err;
    return contents(path("started")).size();
  };
  for (const char *threads : {"1", "2", "8"}) {
    const std::string words = " -o - --threads " + std::string(threads);
    for (const char *between : {"As they are", "Motion vectors"})
      EXPECT_EQ(started("render 'motion blur' -i clip.mkv --set Shutter=4 --set Phase=-1 --set Samples=16 "
                        "--set 'Between=" +
                        std::string(between) + "'" + words),
                1U)
          << between << threads;
    EXPECT_EQ(started("render 'time warp' -i clip.mkv --set Speed=0.7 --set Method=Mixing" + words), 1U)
        << threads;
    EXPECT_EQ(started("slowmo clip.mkv --factor 3" + words), 1U) << threads;
  }
}

TEST_F(Inputs, OfOnePictureGiveOne) {
  make("still.png", "-f lavfi -i testsrc2=s=32x24 -frames:v 1");
  EXPECT_EQ(frames("copy -i still.png"), 1U);
  EXPECT_EQ(frames("mix -i still.png -i still.png"), 1U);
  EXPECT_EQ(frames("copy -i still.png --duration 0.4 --rate 10"), 4U);
  EXPECT_EQ(frames("copy -i still.png --frames 0-4"), 5U);
}

TEST_F(Inputs, OfSizesThatCannotBeAreRefusedFirst) {
  for (const char *size : {"16384x16384", "32767x32767", "32767x8100"})
    fails("render 'solid color' --size " + std::string(size) + " -o no.png", "cannot be made");
  save("huge.ppm", "P6 20000 20000 255\n");
  fails("render copy -i huge.ppm -o no.png", "huge.ppm");
}

} // namespace
} // namespace zol::test
