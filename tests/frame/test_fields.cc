// The table of fields: what each kind of row sends and puts, and that a host understands all of it.

#include "frame/declaration.h"
#include "host/script/interpreter.h"
#include "host/services/session.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace zol {
namespace {

using host::Session;
using Texts = std::vector<std::string>;

enum Row {
  kInput,
  kMap,
  kInputs,
  kPlace,
  kHeight,
  kTransition,
  kAmount,
  kScale,
  kStill,
  kOpacity,
  kColor,
  kTint,
  kAngle,
  kSeed,
  kMode,
  kFrom,
  kInvert,
  kSpeed,
  kOffset,
  kFreeze,
  kButtons,
  kLabel,
  kGroup,
  kShape,
  kFile,
  kLevels,
  kHidden
};

constexpr const char *kModes[] = {"Normal", "Multiply"};
constexpr int kButtonRow[] = {kFreeze};
constexpr int kGroupRow[] = {kLabel, kInvert};

int stored = -1;

constexpr Field kRows[] = {
    field::input(kInput, "Input").clip().help("What to change."),
    field::input(kMap, "Map").label("Height map"),
    field::plain("Inputs", kInputs, "Inputs"),
    field::curve(kPlace, "X", kOpenSigned, 0),
    field::curve(kHeight, "Height", kShare, 0.3),
    field::curve(kTransition, "Opening", kShare, 0).rising(),
    field::curve(kAmount, "Amount", {-16, 16, "ZodfBothLimits"}, -0.5).at(0.25),
    field::curve(kScale, "Spacing", {0.0005, 1, "ZodfBothLimits"}, 0.02),
    field::curve(kStill, "Bare", {0, 0, "ZodfNone"}, 0).uncolored().unset(),
    field::alpha(kOpacity, "Opacity", 0.6),
    field::color(kColor, "Color", 0xFF3A6EA5),
    field::hlsColor(kTint, "Tint", 0xFFC08040).help("The tint."),
    field::angle(kAngle, "Angle", 45),
    field::integer(kSeed, "Seed", 0, 65535, 7),
    field::selector(kMode, "Mode", kModes, 1),
    field::popup(kFrom, "RFrom", kModes).verbatim().help("As it is."),
    field::toggle(kInvert, "Invert", true).label("In&vert"),
    field::number(kSpeed, "Speed", {-16, 16, "ZodfNone"}, 1),
    field::time(&stored, "InputStartOffset", 0, 14400, 3),
    field::button(kFreeze, "Freeze").label("Freeze here"),
    field::row(kButtons, "buttons", kButtonRow),
    field::label(kLabel, "LabelR", "R "),
    field::group("VGroup", kGroup, "Red", kGroupRow).flags("ZodfHideContent"),
    field::geometry(kShape, "Geometry"),
    field::media(kFile, "Media", "ZodfMediaVideo|ZodfMediaAudio"),
    field::plain("Dataset", kLevels, "Levels"),
    field::integer(kHidden, "Version", 0, 9, 2).flags("ZodfHide"),
};

int dialog(t_ZoHostInfo *) { return 1; }
int edit(t_ZoHostInfo *, int) { return 1; }
int media(t_ZoHostInfo *, void *) { return 1; }
int trim(t_ZoHostInfo *, double *) { return 1; }

constexpr Effect kEverything{
    .name = "Filters/Everything",
    .nameInQuorbel = "Filters/Standard/Everything",
    .nameElsewhere = "Filters/Special/Everything",
    .sign = "Everything",
    .version = 12,
    .section = "Every",
    .type = "Filter",
    .init = defaults<kRows>,
    .onDialogOpen = dialog,
    .onDialogItemEdit = edit,
    .probe = media,
    .initByMedia = media,
    .deleteUserData = dialog,
    .trim = trim,
    .fields = kRows,
};

/// A host to which effects are declared.
class FieldRows : public testing::Test {
protected:
  FieldRows() {
    session.onTranslated = [this](const std::u16string &text) {
      memory.handedOut(reinterpret_cast<const uint16_t *>(text.c_str()), text.size());
    };
    session.onStatement = [this](const char *text) {
      static const std::regex address("0x[0-9A-F]{7,}");
      statements.push_back(std::regex_replace(text, address, "@"));
      return interpreter.execute(text);
    };
  }
  ~FieldRows() override {
    for (const auto &error : interpreter.errors())
      ADD_FAILURE() << error.statement << ": " << error.reason;
  }

  Session session{"Halvenor"};
  host::Registry registry;
  host::ProcessMemory memory{dlopen(nullptr, RTLD_NOW)};
  host::Interpreter interpreter{registry, memory};
  Texts statements;
};

TEST_F(FieldRows, AreSentInTheirKindsForm) {
  EXPECT_EQ(declare(session.info(), kEverything), 1);
  EXPECT_EQ(
      Texts(statements.begin() + 12, statements.end() - 1),
      (Texts{
          R"(*(int *)@ = ZoDataFieldAdd( &eff.df, "Input", "Input", (word *)@, ZodfNone );)",
          R"(ZoDataFieldHelpbyId( &eff.df, 0, (word *)@ );)",
          R"(ZoDataFieldAdd( &eff.df, "Input", "Map", (word *)@, ZodfNone );)",
          R"(DataFieldAdd( &eff.df, "Inputs", "Inputs" );)",
          R"(ZoDataFieldAdd( &eff.df, "FloatA", "X", (word *)@, -1.0, 1.0, ZodfNone, 0xFFFF00 );)",
          R"(ZoDataFieldAdd( &eff.df, "FloatA", "Height", (word *)@, 0.0, 1.0, ZodfBothLimits, 0xFF00FF );)",
          R"(ZoDataFieldAdd( &eff.df, "FloatA", "Opening", (word *)@, 0.0, 1.0, ZodfBothLimits, 0x7FFF7F );)",
          R"(ZoDataFieldAdd( &eff.df, "FloatA", "Amount", (word *)@, -16.0, 16.0, ZodfBothLimits, 0x7F3F7F );)",
          R"(ZoDataFieldAdd( &eff.df, "FloatA", "Spacing", (word *)@, 0.0005, 1.0, ZodfBothLimits, 0xFFFF00 );)",
          R"(ZoDataFieldAdd( &eff.df, "FloatA", "Bare", (word *)@, ZodfNone );)",
          R"(ZoDataFieldAdd( &eff.df, "Alpha", "Opacity", (word *)@, ZodfHideCurve );)",
          R"(ZoDataFieldAdd( &eff.df, "RGBColor", "Color", (word *)@, ZodfHideCurve );)",
          R"(*(int *)@ = DataFieldAdd( &eff.df, "HLScolor", "Tint" );)",
          R"(ZoDataFieldHelpbyId( &eff.df, 11, (word *)@ );)",
          R"(ZoDataFieldAdd( &eff.df, "Angle", "Angle", (word *)@, ZodfNone );)",
          R"(ZoDataFieldAdd( &eff.df, "Long", "Seed", (word *)@, 0.0, 65535.0, ZodfHideCurve );)",
          R"(*(int *)@ = ZoDataFieldAdd( &eff.df, "Selector", "Mode", (word *)@, ZodfNone );)",
          R"(DataFieldSelItemAddById( &eff.df, 14, (word *)@, 0x0 );)",
          R"(DataFieldSelItemAddById( &eff.df, 14, (word *)@, 0x1 );)",
          R"(ZoDataFieldAdd( &eff.df, "Popup", "RFrom", "RFrom", ZodfNone );)",
          R"(ZoDataFieldHelp( &eff.df, "RFrom", "As it is." );)",
          R"(DataFieldSelItemAdd( &eff.df, "RFrom", "Normal", 0x0 );)",
          R"(DataFieldSelItemAdd( &eff.df, "RFrom", "Multiply", 0x1 );)",
          R"(ZoDataFieldAdd( &eff.df, "Bool", "Invert", (word *)@, ZodfNone );)",
          R"(ZoDataFieldAdd( &eff.df, "Double", "Speed", (word *)@, -16.0, 16.0, ZodfNone );)",
          R"(*(int *)@ = ZoDataFieldAdd( &eff.df, "time", "InputStartOffset", (word *)@, 0.0, 14400.0, ZodfNone );)",
          R"(ZoDataFieldAdd( &eff.df, "Button", "Freeze", (word *)@ );)",
          R"(DataFieldAdd( &eff.df, "HGroup", "buttons", ZodfHideName );)",
          R"(DataFieldGroupItemAdd( &eff.df, "buttons", 0x13 );)",
          R"(ZoDataFieldAdd( &eff.df, "Label", "LabelR", (word *)@ );)",
          R"(ZoDataFieldAdd( &eff.df, "VGroup", "Red", (word *)@, ZodfHideContent );)",
          R"(DataFieldGroupItemAdd( &eff.df, "Red", 0x15 );)",
          R"(DataFieldGroupItemAdd( &eff.df, "Red", 0x10 );)",
          R"(ZoDataFieldAdd( &eff.df, "Geometry", "Geometry", (word *)@, ZodfNone );)",
          R"(ZoDataFieldAdd( &eff.df, "Media", "Media", (word *)@, ZodfMediaVideo|ZodfMediaAudio );)",
          R"(DataFieldAdd( &eff.df, "Dataset", "Levels" );)",
          R"(ZoDataFieldAdd( &eff.df, "Long", "Version", (word *)@, 0.0, 9.0, ZodfHide );)",
      }));
  ASSERT_EQ(registry.effects().size(), 1u);
  const host::Effect &effect = registry.effects()[0];
  ASSERT_EQ(effect.fields.size(), std::size(kRows));
  for (size_t i = 0; i < std::size(kRows); ++i)
    EXPECT_EQ(effect.fields[i].name, kRows[i].name);
  EXPECT_EQ(effect.fields[kMap].label, "Height map");
  EXPECT_EQ(effect.fields[kFrom].help, "As it is.");
  EXPECT_EQ(stored, kOffset);
  EXPECT_EQ(reinterpret_cast<void *>(trim), effect.trim);
  EXPECT_NE(effect.probe, nullptr);
  EXPECT_NE(effect.initByMedia, nullptr);
  EXPECT_NE(effect.deleteUserData, nullptr);
}

TEST_F(FieldRows, PutTheirDefaults) {
  stored = 18;
  session.tracing = true;
  EXPECT_EQ(kEverything.init(session.info()), 1);
  EXPECT_EQ(
      session.trace,
      (Texts{"ParamSetFloat(3, 0, 0.5, 0)", "ParamSetFloat(4, 0, 0.5, 0.3)", "ParamSetFloat(5, 0, 0, 0)",
             "ParamSetFloat(5, 0, 1, 1)", "ParamSetFloat(6, 0, 0.25, -0.5)", "ParamSetFloat(7, 0, 0.5, 0.02)",
             "ParamSetFloat(9, 0, 0.5, 0.6)", "ParamSetColor(10, 0, 4282019493, 0.5)",
             "ParamSetColor(11, 0, 4290805824, 0.5)", "ParamSetFloat(12, 0, 0.5, 45)",
             "ParamSetInt(13, 0, 7)", "ParamSetInt(14, 0, 1)", "ParamSetInt(15, 0, 0)",
             "ParamSetInt(16, 0, 1)", "ParamSetFloat(17, 0, 0.5, 1)", "ParamSetFloat(18, 0, 0.5, 3)",
             "ParamSetInt(26, 0, 2)", "ClipGetDefault()", "InputSet(0, 0)"}));
}

TEST(Variants, ExistForTheHostsThatTheyName) {
  constexpr Effect kVariants[] = {
      {.name = "H", .sign = "1", .hosts = Hosts::halvenor},
      {.name = "O", .sign = "2", .hosts = Hosts::allButHalvenor},
      {.name = "Q", .sign = "3", .hosts = Hosts::quorbel},
      {.name = "N", .sign = "4", .hosts = Hosts::allButQuorbel},
  };
  for (const auto &[identity, names, path] : {std::tuple{"hALVENOR", "HN", "Filters/Everything"},
                                              {"quorbel", "OQ", "Filters/Standard/Everything"},
                                              {"another", "ON", "Filters/Special/Everything"}}) {
    Session session(identity);
    std::string declared;
    session.onStatement = [&](const char *text) -> long long {
      static const std::regex name(R"re(\.Name = "(.*)";)re");
      std::cmatch match;
      if (std::regex_search(text, match, name))
        declared += match[1];
      return 1;
    };
    EXPECT_EQ(declare(session.info(), kVariants[0], kVariants[1], kVariants[2], kVariants[3]), 1);
    EXPECT_EQ(declared, names);
    EXPECT_EQ(declare(session.info(), kVariants[0]), names[0] == 'H');
    declared.clear();
    declare(session.info(), kEverything);
    EXPECT_EQ(declared, path);
  }
}

TEST(Effects, StandInTheFilesThatTheListNames) {
  const std::pair<std::string, std::string> listed[] = {
#define ZOL_EFFECT(name, file) {"ZOL_EXPORT int Process" #name "Declare(t_ZoHostInfo *host) {", #file},
#include "frame/effects.inc"
#undef ZOL_EFFECT
  };
  std::set<std::string> files;
  for (const auto &[function, file] : listed) {
    std::ifstream stream(ZOL_SOURCE_DIR "/" + file);
    std::ostringstream text;
    text << stream.rdbuf();
    EXPECT_NE(text.str().find(function), std::string::npos) << file << ": " << function;
    files.insert(file);
  }
  for (const auto &entry : std::filesystem::recursive_directory_iterator(ZOL_SOURCE_DIR "/effects"))
    if (entry.path().extension() == ".cc") {
      EXPECT_TRUE(files.contains(std::filesystem::relative(entry.path(), ZOL_SOURCE_DIR).string()))
          << entry.path();
    }
}

} // namespace
} // namespace zol
