// Everything that the library says when it is loaded, and what its init callbacks do, against one text that
// is kept: users' projects refer to these names and numbers, so none may change unnoticed.
//
// Where a change is meant, ZOL_WRITE_STATEMENTS=1 in the environment has the test write the text anew;
// ZOL_LIBRARY names another build of the library to compare.

#include "host/script/interpreter.h"
#include "host/services/session.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>

namespace zol {
namespace {

constexpr char kGolden[] = ZOL_SOURCE_DIR "/tests/frame/statements.txt";

/// In one line.
std::string escaped(std::string text) {
  for (const auto &[plain, shown] : {std::pair{'\n', "\\n"}, {'\t', "\\t"}})
    for (size_t at; (at = text.find(plain)) != std::string::npos;)
      text.replace(at, 1, shown);
  return text;
}

/// One declaration to a host of the given identity, as text.
class Statements {
public:
  Statements(void *library, const char *identity) : memory_(library), session_(identity) {
    session_.tracing = true;
    session_.onTranslated = [this](const std::u16string &text) {
      const auto *units = reinterpret_cast<const uint16_t *>(text.c_str());
      memory_.handedOut(units, text.size());
      texts_[reinterpret_cast<uintptr_t>(units)] = session_.trace.back();
    };
    session_.onStatement = [this](const char *statement) {
      text_ << shown(statement) << '\n';
      return interpreter_.execute(statement);
    };
    text_ << "==== " << identity << '\n';
    reinterpret_cast<int (*)(t_ZoHostInfo *)>(dlsym(library, "ZoDeclare"))(session_.info());
    for (const auto &error : interpreter_.errors())
      ADD_FAILURE() << error.statement << ": " << error.reason;
    for (const host::Effect &effect : registry_.effects())
      showInit(effect);
  }

  [[nodiscard]] std::string text() const { return text_.str(); }

private:
  /// The statement with every address replaced by what stands there.
  std::string shown(const std::string &statement) {
    static const std::regex address("0x([0-9A-F]{7,})");
    std::string result;
    size_t done = 0;
    for (std::sregex_iterator match(statement.begin(), statement.end(), address), end; match != end;
         ++match) {
      const auto at = static_cast<size_t>(match->position());
      result += statement.substr(done, at - done);
      result += named(static_cast<uintptr_t>(std::stoull((*match)[1], nullptr, 16)), result);
      done = at + static_cast<size_t>(match->length());
    }
    return escaped(result + statement.substr(done));
  }

  /// What an address stands for, behind the words before it.
  std::string named(uintptr_t place, const std::string &before) {
    if (before.ends_with("(word *)"))
      return texts_.contains(place) ? texts_[place] : "?";
    if (before.ends_with("(char *)"))
      return '"' + memory_.text(place).value_or("?") + '"';
    if (before.ends_with("ZoPicFromXPM( ")) {
      const auto rows = memory_.textArray(place, 1);
      return rows ? "xpm \"" + rows->front() + '"' : "?";
    }
    if (before.ends_with("(int *)")) {
      Dl_info symbol{};
      const bool found = dladdr(reinterpret_cast<void *>(place), &symbol) != 0;
      return found && reinterpret_cast<uintptr_t>(symbol.dli_saddr) == place ? symbol.dli_sname : "@";
    }
    return memory_.isCode(place) ? "code" : "?";
  }

  void showInit(const host::Effect &effect) {
    if (effect.init == nullptr)
      return;
    host::Session fresh(session_.info()->Identity);
    fresh.tracing = true;
    EXPECT_EQ(effect.init(fresh.info()), 1) << effect.name;
    text_ << "---- init of " << effect.name << '\n';
    for (const std::string &call : fresh.trace)
      text_ << call << '\n';
  }

  host::ProcessMemory memory_;
  host::Registry registry_;
  host::Interpreter interpreter_{registry_, memory_};
  host::Session session_;
  std::map<uintptr_t, std::string> texts_;
  std::ostringstream text_;
};

TEST(Statements, AreTheOnesThatProjectsReferTo) {
  const char *other = std::getenv("ZOL_LIBRARY");
  void *library =
      dlopen(other != nullptr ? other : ZOL_BUILD_DIR "/libzol.zoeffects.so.1", RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  std::string all;
  for (const char *identity : {"Halvenor", "Quorbel", "some other"})
    all += Statements(library, identity).text();
  dlclose(library);

  if (std::getenv("ZOL_WRITE_STATEMENTS") != nullptr) {
    std::ofstream(kGolden) << all;
    GTEST_SKIP() << "written: " << kGolden;
  }
  std::ifstream golden(kGolden);
  std::istringstream now(all);
  std::string wanted, got;
  for (int line = 1; std::getline(golden, wanted); ++line) {
    std::getline(now, got);
    ASSERT_EQ(got, wanted) << kGolden << ':' << line;
  }
  EXPECT_FALSE(std::getline(now, got)) << "also sent: " << got;
}

} // namespace
} // namespace zol
