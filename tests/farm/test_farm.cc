// Films rendered in parts by a real scheduler, whatever happens to nodes, parts and the controller.

#include "tests/apps/zol.h"
#include "tests/farm/cluster.h"

#include "host/model/text.h"

#include <algorithm>
#include <csignal>
#include <optional>
#include <thread>

namespace zol::test {
namespace {

using namespace std::chrono_literals;

class Farm : public InFolder {
protected:
  void SetUp() override {
    if (heavy && std::getenv("ZOL_ALL") == nullptr)
      GTEST_SKIP() << "runs with ZOL_ALL";
    if (const std::string missing = Cluster::missing(); !missing.empty())
      GTEST_SKIP() << missing << " is not installed";
    cluster.emplace(path("cluster"));
    // While the file is there, every ffmpeg begins slowly: parts take seconds of no processor's time.
    std::filesystem::create_directory(path("bin"));
    std::ofstream(path("bin/ffmpeg")) << "#!/bin/sh\n[ -e '" << path("slow").string()
                                      << "' ] && sleep 1\nPATH=${PATH#*:} exec ffmpeg \"$@\"\n";
    std::filesystem::permissions(path("bin/ffmpeg"), std::filesystem::perms::owner_all);
    setenv("PATH", (path("bin").string() + ':' + std::getenv("PATH")).c_str(), 1);
    make("clip.mkv", "-f lavfi -i testsrc2=s=64x48:r=25:d=8 -f lavfi -i sine=r=8000:d=8 -c:v ffv1 -c:a flac");
  }

  void slow(bool yes) {
    if (yes)
      std::ofstream(path("slow")) << '\n';
    else
      std::filesystem::remove(path("slow"));
  }

  Outcome farm(const std::string &words) { return zol("farm " + words); }

  /// Starts the command beside the test; its end is told by ended().
  void begin(const std::string &words) {
    shell("( " ZOL_BUILD_DIR "/zol farm " + words +
          " >said 2>complained; echo $? >status.new; mv status.new status ) & :");
  }
  int ended() {
    EXPECT_TRUE(comesToBe([&] { return std::filesystem::exists(path("status")); }));
    const std::string text = contents(path("status"));
    const auto status = host::integerIn(host::trimmed(text));
    std::filesystem::remove(path("status"));
    return status.value_or(-1);
  }

  /// The film is what one render makes, pictures and sound, and nothing is left of the parts.
  void expectFilm(const std::string &words) {
    render(words + " -o whole.mkv");
    const std::string all = pixels("whole.mkv");
    EXPECT_EQ(all.size() % (size_t{64} * 48 * 4), 0U);
    EXPECT_TRUE(pixels("film.mkv") == all) << pixels("film.mkv").size() << " bytes, not " << all.size();
    EXPECT_TRUE(samples("film.mkv") == samples("whole.mkv"));
    EXPECT_FALSE(std::filesystem::exists(path("film.mkv.farm/parts")));
  }

  /// Whether a part of those numbers is being written.
  bool isUnderWay(const std::string &node) {
    const std::string tasks = running();
    for (const std::string_view line : host::split(tasks, '\n'))
      if (const auto words = host::split(line, ' '); words.size() == 2 && words[1] == node) {
        std::error_code none;
        for (const auto &entry : std::filesystem::directory_iterator(
                 path("film.mkv.farm/parts/000" + std::string(words[0])), none))
          if (entry.path().filename().string().starts_with('.')) // until it is whole
            return true;
      }
    return false;
  }
  static std::string running() {
    return Cluster::ask({"squeue", "--noheader", "--array", "--states=RUNNING", "--format=%K %N"});
  }
  /// How often tasks were started anew.
  static int restarts() {
    int sum = 0;
    const std::string jobs = Cluster::ask({"scontrol", "show", "job"}), mark = "Restarts=";
    for (size_t at = jobs.find(mark); at != jobs.npos; at = jobs.find(mark, at + 1))
      sum += std::stoi(jobs.substr(at + mark.size()));
    return sum;
  }

  std::optional<Cluster> cluster;
  bool heavy = false;
};

class HeavyFarm : public Farm {
protected:
  HeavyFarm() { heavy = true; }
};

const std::string kWords = "blur -i clip.mkv --set 'Blurriness=0=0;1=0.2' --codec ffv1";
const std::string kFilm = "render " + kWords + " -o film.mkv --parts 8";

TEST_F(Farm, SurvivesANodeThatDiesWithinAPart) {
  slow(true);
  begin(kFilm + " --wait");
  const std::string &victim = cluster->nodes()[1];
  ASSERT_TRUE(comesToBe([&] { return isUnderWay(victim); })) << contents(path("complained"));
  cluster->kill(victim);
  slow(false);
  EXPECT_EQ(ended(), 0) << contents(path("complained"));
  EXPECT_GE(restarts(), 1);
  expectFilm(kWords);
  EXPECT_EQ(farm(kFilm).out, '"' + path("film.mkv").string() + "\" is there\n");
}

TEST_F(HeavyFarm, TriesAPartThreeTimesAndKeepsTheOthers) {
  // Of 193 frames in 8 parts the last has 25, the others 24.
  const std::string words =
      "render " + kWords + " --frames 0-192 --fault PicCreate@25 -o film.mkv --parts 8 --wait";
  begin(words);
  EXPECT_EQ(ended(), 5);
  const std::string said = contents(path("complained"));
  EXPECT_NE(said.find("zol: part 8 failed three times: "), said.npos) << said;
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_FALSE(std::filesystem::exists(path("film.mkv")));
  const Outcome status = farm("status film.mkv.farm");
  EXPECT_EQ(status.status, 5);
  EXPECT_NE(status.out.find("7 of 8 parts done, 1 failed\n"), status.out.npos) << status.out;
  EXPECT_EQ(restarts(), 2);
}

TEST_F(HeavyFarm, GoesOnAfterItWasCancelled) {
  slow(true);
  begin(kFilm + " --wait");
  ASSERT_TRUE(
      comesToBe([&] { return std::filesystem::exists(path("film.mkv.farm/parts/0002/part-0002.mkv")); }));
  ASSERT_TRUE(comesToBe([&] { return isUnderWay(cluster->nodes()[0]); }));
  const Outcome cancelled = farm("cancel film.mkv.farm/plan.json");
  EXPECT_EQ(cancelled.status, 0) << cancelled.err;
  EXPECT_EQ(running(), "");
  EXPECT_EQ(ended(), 6);
  EXPECT_NE(contents(path("complained")).find("zol: cancelled; "), std::string::npos);
  EXPECT_EQ(farm("status film.mkv.farm").status, 6);
  EXPECT_EQ(farm("cancel film.mkv.farm").status, 1) << "nothing is under way";
  EXPECT_FALSE(std::filesystem::exists(path("film.mkv")));
  slow(false);
  begin(kFilm + " --wait");
  EXPECT_EQ(ended(), 0) << contents(path("complained"));
  EXPECT_EQ(contents(path("said")).find("8 of 8 parts"), std::string::npos) << "complete parts are kept";
  expectFilm(kWords);
}

TEST_F(HeavyFarm, SurvivesThatTheControllerRestartsAndThatNobodyWaits) {
  slow(true);
  const Outcome stopped =
      shell("timeout --preserve-status -s INT 4 " ZOL_BUILD_DIR "/zol farm " + kFilm + " --wait");
  EXPECT_EQ(stopped.status, 128 + SIGINT);
  EXPECT_NE(stopped.err.find("the jobs go on"), stopped.err.npos) << stopped.err;
  EXPECT_NE(running(), "");
  cluster->stopController();
  EXPECT_EQ(farm("status film.mkv.farm").status, 3);
  begin("render " + kWords + " -o film.mkv --wait");
  cluster->startController();
  slow(false);
  EXPECT_EQ(ended(), 0) << contents(path("complained"));
  expectFilm(kWords);
}

TEST_F(HeavyFarm, TellsOfFoldersThatDoNotServe) {
  std::filesystem::create_directory(path("work"));
  if (shell("unshare --mount mount -t tmpfs none work").status != 0)
    GTEST_SKIP() << "disks cannot be mounted here";
  const std::string words = "render " + kWords + " -o film.mkv --parts 2 --workdir work --wait";
  for (const std::string &node : cluster->nodes())
    cluster->kill(node);
  cluster->startNodeWithout(path("work"), cluster->nodes()[0]);
  const Outcome apart = farm(words);
  EXPECT_EQ(apart.status, 4);
  EXPECT_NE(apart.err.find("zol: " + cluster->nodes()[0] + " cannot write to "), apart.err.npos) << apart.err;
  EXPECT_FALSE(std::filesystem::exists(path("film.mkv")));

  ASSERT_EQ(shell("mount -t tmpfs -o size=256k none work").status, 0);
  cluster->kill(cluster->nodes()[0]);
  cluster->startNode(cluster->nodes()[0]);
  make("work/filler", "-f lavfi -i testsrc2=s=64x48:d=0.4 -f rawvideo");
  const Outcome full = farm(words);
  EXPECT_EQ(shell("umount work").status, 0);
  EXPECT_EQ(full.status, 7);
  EXPECT_NE(full.err.find("zol: the disk is full: "), full.err.npos) << full.err;
  EXPECT_FALSE(std::filesystem::exists(path("film.mkv")));
}

} // namespace
} // namespace zol::test
