// The rooms of the tree and who may know whom, read off the #include lines.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace zol {
namespace {

using Names = std::vector<std::string>;

struct Source {
  std::string name, text; ///< the name from the root of the tree on
  Names includes;         ///< those in quotes
};

/// Sources and headers of a folder.
std::vector<Source> sourcesOf(const std::string &folder) {
  static const std::regex include(R"re(#\s*include\s+"([^"]+)")re");
  const std::filesystem::path root = ZOL_SOURCE_DIR;
  std::vector<Source> sources;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(root / folder)) {
    const std::string extension = entry.path().extension();
    if (extension != ".h" && extension != ".cc" && extension != ".c" && extension != ".inc")
      continue;
    std::ifstream stream(entry.path());
    Source source{
        std::filesystem::relative(entry.path(), root), {std::istreambuf_iterator<char>(stream), {}}, {}};
    for (std::sregex_iterator i(source.text.begin(), source.text.end(), include), end; i != end; ++i)
      source.includes.push_back((*i)[1]);
    sources.push_back(source);
  }
  return sources;
}

bool beginsWithAny(const std::string &name, const Names &beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(),
                     [&](const std::string &beginning) { return name.starts_with(beginning); });
}

/// Who may be included from a room; names that end with '/' are rooms. The first room that fits counts.
struct Room {
  std::string name;
  Names knows;
};

const Room kRooms[] = {
    {"frame/", {"frame/"}},
    {"kernels/exports/", {"kernels/", "frame/"}},
    {"kernels/",
     {"kernels/", "frame/zol.h", "frame/export.h", "frame/convert.h", "frame/direction.h",
      "frame/picture.h"}},
    {"effects/", {"effects/", "kernels/", "frame/"}},
    {"Runtimes/", {"Runtimes/", "kernels/", "frame/"}},
    {"host/",
     {"host/", "kernels/warp/", "frame/zol.h", "Runtimes/slomo_sdk/SlowMotion.h",
      "Runtimes/slomo_sdk/mySM.h"}},
    {"apps/", {"apps/", "host/", "frame/zol.h", "Runtimes/slomo_sdk/SlowMotion.h"}},
    {"bridges/", {"bridges/", "host/", "frame/zol.h"}},
    {"plain/", // Bluescreen's form begins where the exported blur and erosion end
     {"plain/", "frame/zol.h", "frame/convert.h", "kernels/exports/alpha_shrink.h",
      "kernels/exports/blur.h"}},
};

void expectToKnowOnlyThoseBelow(const std::vector<Source> &sources) {
  EXPECT_FALSE(sources.empty());
  for (const Source &source : sources) {
    const Room &room = *std::find_if(std::begin(kRooms), std::end(kRooms),
                                     [&](const Room &r) { return source.name.starts_with(r.name); });
    for (const std::string &include : source.includes) {
      EXPECT_TRUE(beginsWithAny(include, room.knows)) << source.name << " includes " << include;
      const std::string file = ZOL_SOURCE_DIR "/" + include;
      EXPECT_TRUE(std::filesystem::exists(file) || std::filesystem::exists(file + ".in"))
          << source.name << " includes " << include << ", which is not named from the root";
    }
  }
}

TEST(Structure, RoomsKnowOnlyThoseBelow) {
  for (const char *folder : {"frame", "effects", "Runtimes", "host", "apps", "bridges", "plain"})
    expectToKnowOnlyThoseBelow(sourcesOf(folder));
}

// Only the exported kernels call the host.
TEST(Structure, KernelsKnowNeitherHostNorEngine) {
  const std::vector<Source> sources = sourcesOf("kernels");
  expectToKnowOnlyThoseBelow(sources);
  for (const Source &source : sources)
    if (!source.name.starts_with("kernels/exports/")) {
      for (const std::string &include : source.includes)
        EXPECT_FALSE(include.starts_with("kernels/exports/")) << source.name << " includes " << include;
      for (const char *word : {"t_ZoHostInfo", "->Services"})
        EXPECT_EQ(source.text.find(word), std::string::npos) << source.name << " says " << word;
    }
}

TEST(Structure, HeadersGuardThemselves) {
  const Names asGiven = {"frame/zol.h", "Runtimes/slomo_sdk/SlowMotion.h", "Runtimes/slomo_sdk/mySM.h"};
  for (const std::string folder :
       {"frame", "kernels", "effects", "Runtimes", "host", "apps", "bridges", "plain", "bench", "tests"})
    for (const Source &source : sourcesOf(folder))
      if (source.name.ends_with(".h")) {
        EXPECT_NE(source.text.find(beginsWithAny(source.name, asGiven) ? "#ifndef " : "#pragma once"),
                  std::string::npos)
            << source.name;
      }
}

} // namespace
} // namespace zol
