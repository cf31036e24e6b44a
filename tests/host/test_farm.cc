// What a farm tells of its tasks: how far they are, and why there is no more to come.

#include "host/farm/state.h"
#include "host/farm/submit.h"
#include "host/farm/task.h"
#include "host/media/process.h"
#include "host/model/error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

class FarmWork : public testing::Test {
protected:
  FarmWork()
      : folder_(fs::temp_directory_path() / ("zol-farm-" + std::to_string(getpid()))),
        place(folder_ / "film.mkv.farm") {
    fs::create_directories(folder_);
    place.prepare(false);
    plan.render.output = folder_ / "film.mkv";
    plan.parts = 4;
    plan.partsJob = "11";
    plan.joinJob = "12";
  }
  ~FarmWork() override { fs::remove_all(folder_); }

  static SlurmTask part(unsigned index, const std::string &state, const std::string &reason = "None") {
    return {"11", index, state, reason, state == "PENDING" ? "" : "n1"};
  }
  static SlurmTask join(const std::string &state) { return {"12", {}, state, "Dependency", ""}; }
  static void write(const std::string &file, const std::string &text = "\n") {
    fs::create_directories(fs::path(file).parent_path());
    std::ofstream(file) << text;
  }
  [[nodiscard]] FarmError end(const std::vector<SlurmTask> &tasks) const {
    const FarmState state = stateOf(place, plan, tasks);
    EXPECT_FALSE(state.active());
    EXPECT_FALSE(state.finished);
    return endOf(state, place);
  }
  void expectEnd(const std::vector<SlurmTask> &tasks, FarmEnd why, const std::string &line) const {
    const FarmError error = end(tasks);
    EXPECT_EQ(error.end, why) << error.what();
    EXPECT_EQ(std::string(error.what()), line);
  }

private:
  fs::path folder_;

protected:
  FarmPlace place;
  FarmPlan plan;
};

TEST_F(FarmWork, CountsWhatStandsAndWhatGoesOn) {
  write(place.part(1));
  FarmState state = stateOf(place, plan,
                            {part(1, "COMPLETED"), part(2, "COMPLETED"), part(3, "RUNNING"),
                             part(4, "PENDING", "Resources"), join("PENDING")});
  EXPECT_EQ(state.done, 2U) << "one of them does not show yet";
  EXPECT_EQ(textOf(state), "1 running, 1 waiting (Resources)");
  EXPECT_TRUE(state.active());
  write(place.failures(3), "why\n");
  state = stateOf(place, plan, {part(3, "FAILED"), part(4, "REQUEUED"), join("PENDING")});
  EXPECT_EQ(textOf(state), "1 running, 2 failed") << "part 2 is known to nobody";
  for (unsigned number = 1; number <= 4; ++number)
    write(place.part(number));
  EXPECT_EQ(textOf(stateOf(place, plan, {join("RUNNING")})), "joining");
  EXPECT_TRUE(stateOf(place, plan, {join("COMPLETED")}).finished);
  write(place.finished());
  EXPECT_FALSE(stateOf(place, plan, {}).finished) << "somebody has removed the film";
  write(plan.film());
  place.prepare(true);
  write(place.finished());
  EXPECT_TRUE(stateOf(place, plan, {}).finished);
}

TEST_F(FarmWork, TellsWhyThereIsNoMoreToCome) {
  for (unsigned number = 1; number <= 3; ++number)
    write(place.part(number));
  expectEnd({part(4, "FAILED"), join("CANCELLED")}, FarmEnd::noSharedFolder,
            "n1 cannot write to " + place.folder() + "; name a folder that all nodes share with --workdir");
  expectEnd({}, FarmEnd::partFailed, "part 4 is not there, and Slurm does not know of it any more");
  expectEnd({part(4, "CANCELLED")}, FarmEnd::cancelled,
            "cancelled; 3 of 4 parts are kept in " + place.folder());
  expectEnd({part(4, "TIMEOUT")}, FarmEnd::partFailed,
            "part 4 ran out of its time on n1; give it more with --time, or make more --parts");
  write(place.log(4), "exec: zol: not found\n\n");
  expectEnd({part(4, "FAILED")}, FarmEnd::partFailed, "part 4 ended as FAILED on n1: exec: zol: not found");
  write(place.failures(4), "first\nsecond\nthird\n");
  expectEnd({part(4, "FAILED")}, FarmEnd::partFailed, "part 4 failed three times: third");
  write(place.failures(4), "cannot write x: " + errorMessage(ENOSPC) + '\n');
  expectEnd({part(4, "FAILED")}, FarmEnd::diskFull,
            "the disk is full: cannot write x: " + errorMessage(ENOSPC));
  write(place.cancelled());
  expectEnd({part(4, "FAILED")}, FarmEnd::cancelled, "cancelled; 3 of 4 parts are kept in " + place.folder());
  place.prepare(true);
  write(place.part(4));
  write(place.failures(0), "the file exists\n");
  expectEnd({join("FAILED")}, FarmEnd::partFailed, "joining the parts failed: the file exists");
}

TEST_F(FarmWork, KeepsItsPlan) {
  plan.render.stages = {{"blur", {{"/clip.mkv", 1.5, {}}}, {{"Blurriness", "0.5"}}}};
  plan.threads = 3;
  plan.frames = 250;
  plan.time = "0:10";
  place.save(plan);
  const FarmPlan read = FarmPlace::named(place.folder()).load();
  EXPECT_EQ(read.render, plan.render);
  EXPECT_EQ(read.jobs(), plan.jobs());
  EXPECT_EQ(read.threads, 3U);
  EXPECT_EQ(partOf(read, 2, "/part.mkv").part, (PartPlan{2, 4, "/part.mkv", 250}));
  EXPECT_EQ(read.time, "0:10");
  RenderPlan other = plan.render;
  other.overwrite = true;
  EXPECT_TRUE(makeSameFilm(other, plan.render));
  other.stages.front().settings.front().second = "0.6";
  EXPECT_FALSE(makeSameFilm(other, plan.render));
  write(place.plan(), "{\"parts\": \"4\"}");
  EXPECT_THROW((void)place.load(), HostError);
}

TEST(Farm, CutsIntoPartsOfMinutes) {
  EXPECT_EQ(partsFor(200, 0.01), 1U);
  EXPECT_EQ(partsFor(200, 1e-9), 1U);
  EXPECT_EQ(partsFor(90000, 0.1), 75U);
  EXPECT_EQ(partsFor(3, 4000), 3U);
  EXPECT_EQ(partsFor(10000000, 1), 1000U);
}

TEST(Farm, NamesTasksAsRanges) {
  EXPECT_EQ(rangesOf({}), "");
  EXPECT_EQ(rangesOf({4}), "4");
  EXPECT_EQ(rangesOf({1, 2, 3, 5, 7, 8}), "1-3,5,7-8");
}

} // namespace
} // namespace zol::host
