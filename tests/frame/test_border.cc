// The shared object as hosts meet it: its symbols, its needs, its sending functions, its texts.

#include "host/services/session.h"
#include "kernels/simd/levels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <dlfcn.h>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace zol {
namespace {

using host::Service;
using host::Session;
using Texts = std::vector<std::string>;

const std::string kLibrary = ZOL_BUILD_DIR "/libzol.zoeffects.so.1";

Texts lines(std::istream &&stream) {
  Texts result;
  for (std::string line; std::getline(stream, line);)
    result.push_back(line);
  return result;
}

Texts output(const std::string &command) {
  FILE *pipe = popen(command.c_str(), "r");
  std::string text;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    text.append(buffer, n);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return lines(std::istringstream(text));
}

TEST(SharedObject, ShowsExactlyTheListedNames) {
  std::set<std::string> visible;
  for (const std::string &line : output("nm -DC --defined-only " + kLibrary))
    visible.insert(line.substr(line.find(' ', line.find(' ') + 1) + 1));
  const Texts listed = lines(std::ifstream(ZOL_SOURCE_DIR "/tests/frame/exports.txt"));
  EXPECT_EQ(visible, std::set<std::string>(listed.begin(), listed.end()));
}

TEST(SharedObject, NeedsTheCLibrariesAlone) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizers need libraries of their own";
#endif
  Texts needs;
  for (const std::string &line : output("readelf -d " + kLibrary)) {
    const size_t name = line.find('[');
    if (line.find("NEEDED") != std::string::npos)
      needs.push_back(line.substr(name));
    if (line.find("SONAME") != std::string::npos) {
      EXPECT_EQ(line.substr(name), "[libzol.zoeffects.so.1]");
    }
  }
  std::erase_if(needs,
                [](const std::string &need) { return need == "[libc.so.6]" || need == "[libm.so.6]"; });
  EXPECT_EQ(needs, Texts{});
}

// Of several weak definitions the linker keeps one, for every machine: none may be compiled for more than the
// narrowest level.
TEST(SharedObject, KeepsWideInstructionsOutOfSharedFunctions) {
  for (int level = 1; level < kSimdLevels; ++level) {
    const std::string objects =
        ZOL_BUILD_DIR "/CMakeFiles/zol_" + std::string(levelName(static_cast<SimdLevel>(level))) + ".dir";
    const Texts symbols = output("find " + objects + " -name '*.o' -exec nm -AP --defined-only {} +");
    EXPECT_GT(symbols.size(), 0u) << objects;
    for (const std::string &line : symbols) { // "object: name type value size"
      const size_t type = line.find(' ', line.find(": ") + 2) + 1;
      EXPECT_EQ(std::string("uVvWw").find(line[type]), std::string::npos) << line;
    }
  }
}

TEST(SharedObject, LoadsIntoAPlainCProgram) {
  EXPECT_EQ(output(ZOL_BUILD_DIR "/plain_host " + kLibrary), Texts{"Memory allocation error"});
}

/// The library, loaded as a host loads it.
class Border : public testing::Test {
protected:
  void SetUp() override {
    library_ = dlopen(kLibrary.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library_, nullptr) << dlerror();
  }
  void TearDown() override { dlclose(library_); }

  template <class Function> Function *symbol(const char *name) {
    return reinterpret_cast<Function *>(dlsym(library_, name));
  }

  void *library_ = nullptr;
};

TEST_F(Border, FillsTheCommonTextsAtEveryCall) {
  const char **texts = symbol<const char *>("COMMON_STR");
  Session session("Quorbel");
  for (int round = 0; round < 2; ++round) {
    texts[2] = "spoilt";
    EXPECT_EQ(symbol<int(t_ZoHostInfo *)>("ZoDeclare")(session.info()), 1);
    EXPECT_STREQ(texts[0], "O&K");
    EXPECT_STREQ(texts[1], "&Cancel");
    EXPECT_STREQ(texts[2], "Background");
    EXPECT_STREQ(texts[4], "Geometry");
    EXPECT_STREQ(texts[5], "see curve");
    EXPECT_EQ(texts[6], nullptr);
  }
}

TEST_F(Border, SendsFormattedStatementsThatFit) {
  const auto send = symbol<long long(t_ZoHostInfo *, const char *, ...)>("ZoScriptExecuteHi");
  const auto sendLow = symbol<int(t_ZoHostInfo *, const char *, ...)>("ZoScriptExecute");
  Session session("Halvenor");
  std::string received;
  session.onStatement = [&](const char *text) -> long long {
    received = text;
    return 0x123456789ALL;
  };
  EXPECT_EQ(send(session.info(), "a = %d; b = \"%s\"; c = 0x%X", -3, "x", 0xABCU), 0x123456789ALL);
  EXPECT_EQ(received, "a = -3; b = \"x\"; c = 0xABC");
  EXPECT_EQ(sendLow(session.info(), "%f,%f", 0.0, 180.0), 0x3456789A);
  EXPECT_EQ(received, "0.000000,180.000000");

  const std::string longest(65535, 'x');
  EXPECT_NE(send(session.info(), "%s", longest.c_str()), 0);
  EXPECT_EQ(received, longest);
  const int sent = session.faults.calls(Service::ScriptExecuteHi);
  EXPECT_EQ(send(session.info(), "%s;", longest.c_str()), 0);
  EXPECT_EQ(sendLow(session.info(), "%s;", longest.c_str()), 0);
  EXPECT_EQ(session.faults.calls(Service::ScriptExecuteHi), sent);
}

TEST_F(Border, NamesLanguages) {
  const auto name = symbol<const char *(int)>("LangSubstring");
  EXPECT_STREQ(name(1), "RU");
  EXPECT_STREQ(name(2), "DE");
  for (const int other : {0, 3, 7, -1})
    EXPECT_STREQ(name(other), "EN");
  symbol<void(...)>("debug")("%d", 1);
  symbol<void(...)>("message")("%d", 1);
}

} // namespace
} // namespace zol
