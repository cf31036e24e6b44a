// Declaration scripts: statements in, registered effects and errors out.

#include "host/script/interpreter.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sstream>

namespace zol::host {
namespace {

/// A few addresses that were handed over.
class FakeMemory : public Memory {
public:
  std::map<uintptr_t, int> stored;

  std::optional<std::string> text(uintptr_t address) override {
    return address == 0x100 ? std::optional<std::string>("Copies") : std::nullopt;
  }
  std::optional<std::u16string> wideText(uintptr_t address) override {
    return address == 0x200 ? std::optional<std::u16string>(u"Größe \U0001D11E") : std::nullopt;
  }
  std::optional<std::vector<std::string>> textArray(uintptr_t address, size_t count) override {
    const std::vector<std::string> icon = {"2 1 2 1", ". c None", "# c #0A141E", ".#"};
    if (address != 0x300 || count > icon.size())
      return std::nullopt;
    return std::vector(icon.begin(), icon.begin() + static_cast<std::ptrdiff_t>(count));
  }
  bool isCode(uintptr_t address) override { return address == 0x400; }
  bool storeInt(uintptr_t address, int value) override {
    if (address != 0x500 && address != 0x504)
      return false;
    stored[address] = value;
    return true;
  }
};

class Script : public testing::Test {
protected:
  Registry registry;
  FakeMemory memory;
  Interpreter interpreter{registry, memory};

  /// Runs a text after which no error may have occurred.
  long long run(std::string_view text) {
    const long long result = interpreter.execute(text);
    for (const Interpreter::Error &error : interpreter.errors())
      ADD_FAILURE() << error.statement << " column " << error.column << ": " << error.reason;
    return result;
  }
  const Effect &registered() {
    run("EffectAdd( eff );");
    return registry.effects().back();
  }
  void begin() { run("ZoEffect eff; eff.Sign = \"S\"; eff.Name = \"Filters/N\"; eff.Version = 0xA;"); }
};

TEST_F(Script, DeclaresARecordWithEveryMember) {
  run("ZoEffect obj; obj.Name = \"Filters/Copy\"; obj.Sign = \"Copy \\\"2\\\"\\x41\"; obj.Version = 0xA;");
  EXPECT_EQ(run("obj.Description = (char *)0x100;"), 1);
  run("obj.Icon = ZoPicFromXPM( 0x300 );");
  run("obj.DefaultIconMode = \"One+Saw\"; obj.Type = \"Filter\";");
  run("obj.InitFunction = 0x400;\nobj.RenderVideoFunction = 0x400;obj.RenderVideoFunctionRT = 0x400;");
  run("obj.RenderAudioFunction = 0x400; obj.OnDialogOpen = 0x400; obj.OnDialogItemEdit = 0x400;");
  run("obj.Probe=0x400; obj.InitByMedia=0x400; obj.DeleteUserData=0x400; obj.Trim=0x400;");
  EXPECT_TRUE(registry.effects().empty());
  run(" EffectAdd( obj ) ; ");
  run("obj.DescriptionW = (word *)0x200;");
  ASSERT_EQ(registry.effects().size(), 1U);

  const Effect &effect = registry.effects()[0];
  EXPECT_EQ(effect.name, "Filters/Copy");
  EXPECT_EQ(effect.sign, "Copy \"2\"A");
  EXPECT_EQ(effect.version, 10);
  EXPECT_EQ(effect.description, "Copies"); // what follows the registration does not change it
  EXPECT_EQ(effect.iconMode, "One+Saw");
  EXPECT_EQ(effect.type, "Filter");
  ASSERT_TRUE(effect.icon.has_value());
  EXPECT_EQ(effect.icon->pixels, (std::vector<uint32_t>{0, 0xFF0A141E}));
  const auto code = uintptr_t{0x400};
  EXPECT_EQ(reinterpret_cast<uintptr_t>(effect.init), code);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(effect.onDialogItemEdit), code);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(effect.trim), code);
  EXPECT_EQ(effect.statements.size(), 8U);
  EXPECT_EQ(effect.statements.back(), " EffectAdd( obj ) ; ");

  run("EffectAdd( obj );"); // the same sign again
  ASSERT_EQ(registry.effects().size(), 1U);
  EXPECT_EQ(registry.effects()[0].description, "Größe \U0001D11E");
}

TEST_F(Script, TakesEveryLayoutOfTheFieldStatements) {
  constexpr const char *kStatements[] = {
      R"(DataFieldAdd( &eff.df, "Input", "Input" );)",
      R"(ZoDataFieldAdd( &eff.df, "FloatA", "Blurriness", (word *)0x200, 0.0, 1.0, ZodfMinLimit );)",
      R"(ZoDataFieldAdd( &eff.df, "RGBColor", "Color", (word *)0x200, ZodfHideCurve );)",
      R"(*(int *)0x500 = ZoDataFieldAdd( &eff.df, "Input", "Background", (word *)0x200, 0x0 );)",
      R"(*((int *)0x504) = ZoDataFieldAdd( &eff.df, "Long", "T", (word *)0x200, 0.000000,100.000000, ZodfHideCurve );)",
      R"(ZoDataFieldAdd( &eff.df, "FloatA", "D", (word *)0x200, -0.5, 1.0, ZodfBothLimits|ZodfHideCurve, 0xFF00FF );)",
      R"(ZoDataFieldAdd( &eff.df, "FloatA", "D1", "L", ZodfMinLimit | ZodfMaxLimit | 0x0 );)",
      R"(ZoDataFieldAdd( &eff.df, "time", "X", "label", 0.01, 14400.0 );)",
      R"(ZoDataFieldAdd( &eff.df, "Time", "X", "label", 0, 1e3, ZodfHide, 0x0 );)",
      R"(DataFieldAdd( &eff.df, "Double", "Size", 0.0, 2.5, "Size", ZodfHideName|ZodfFlatten );)",
      R"(ZoDataFieldAdd( &eff.df, "Button", "Add", "Add Input" );)",
      R"(DataFieldAdd( &eff.df, "HGroup", "group", ZodfHideName|ZodfHideContent );)",
      R"(DataFieldAdd( &eff.df, "Dataset", "Input levels" );)",
      R"(ZoDataFieldAdd( &eff.df, "Selector", "Keymode", (word *)0x200, 0x0 );)",
      R"(DataFieldAdd( &eff.df, "Media", "File", "File", ZodfMediaVideo|ZodfMediaAudio );)",
  };
  begin();
  int id = 0;
  for (const char *statement : kStatements)
    EXPECT_EQ(run(statement), id++);
  EXPECT_EQ(memory.stored, (std::map<uintptr_t, int>{{0x500, 3}, {0x504, 4}}));
  run("DataFieldGroupItemAdd( &eff.df, \"group\", 0xA ); DataFieldGroupItemAddById( &eff.df, 11, 9 );");
  run("DataFieldSelItemAdd( &eff.df, \"Keymode\", \"One\", 0xFFFFFFFF );");
  run("DataFieldSelItemAddById( &eff.df, 13, (word *)0x200, 0x2 );");
  run("ZoDataFieldHelp( &eff.df, \"Input\", \"line\nwith\ttab\" ); ZoDataFieldHelpbyId( &eff.df, 1, (word "
      "*)0x200 );");

  std::ostringstream seen;
  seen << std::hex;
  for (const Field &f : registered().fields) {
    seen << static_cast<int>(f.type) << ' ' << f.name << '[' << f.label << ']' << f.help;
    if (f.min)
      seen << ' ' << *f.min << ".." << *f.max;
    seen << ' ' << f.flags;
    if (f.curveColor)
      seen << '#' << *f.curveColor;
    for (const Item &item : f.items)
      seen << ' ' << item.text << '=' << item.value;
    for (const int member : f.members)
      seen << " >" << member;
    seen << '\n';
  }
  EXPECT_EQ(seen.str(), "0 Input[]line\nwith\ttab 0\n"
                        "2 Blurriness[Größe \U0001D11E]Größe \U0001D11E 0..1 1\n"
                        "4 Color[Größe \U0001D11E] 4\n"
                        "0 Background[Größe \U0001D11E] 0\n"
                        "3 T[Größe \U0001D11E] 0..100 4\n"
                        "2 D[Größe \U0001D11E] -0.5..1 7#ff00ff\n"
                        "2 D1[L] 3\n"
                        "2 X[label] 0.01..14400 0\n"
                        "2 X[label] 0..1000 8#0\n"
                        "2 Size[Size] 0..2.5 50\n"
                        "7 Add[Add Input] 0\n"
                        "9 group[] 30 >a >9\n"
                        "c Input levels[] 0\n"
                        "5 Keymode[Größe \U0001D11E] 0 One=ffffffff Größe \U0001D11E=2\n"
                        "b File[File] 180\n");
}

TEST_F(Script, TellsWhatItDoesNotUnderstandAndWhere) {
  struct Case {
    const char *statement;
    size_t column;
    const char *reason;
  };
  constexpr Case kCases[] = {
      {"eff.Foo = 1;", 5, "unknown member Foo"},
      {"eff.Version = \"1\";", 15, "a version expected"},
      {"eff.Version = 4294967296;", 15, "a version out of range"},
      {"eff.Version = 99999999999999999999;", 15, "number out of range"},
      {"eff.Version = 10", 17, "';' expected instead of the end"},
      {"eff.Name = \"open;", 12, "text without a closing quote"},
      {"eff.Name = 0x1;", 12, "an 8-bit text expected"},
      {"eff.DescriptionW = (char *)0x100;", 20, "a 16-bit text expected"},
      {"eff.Description = (char *)0x101;", 27, "no text was handed over at this address"},
      {"eff.InitFunction = 0x401;", 20, "no code was handed over at this address"},
      {"eff.Icon = ZoPicFromXPM( 0x301 );", 26, "no picture was handed over at this address"},
      {"eff.Version = #;", 15, "unexpected character"},
      {"eff.Version = 0x;", 15, "malformed number"},
      {"eff.Version = 1.2.3;", 15, "malformed number"},
      {"obj.Version = 1;", 1, "unknown variable obj"},
      {"ZoClip eff;", 1, "unknown type ZoClip"},
      {"ZoGeo *gg = ZoGeoContourCreate( 1 );", 1, "unknown type ZoGeo *"},
      {"ZoGeoMove( 1 );", 1, "unknown function ZoGeoMove"},
      {"EffectAdd( \"eff\" );", 12, "a record expected"},
      {"EffectAdd( eff, eff );", 17, "unexpected argument"},
      {"DataFieldAdd( &eff.df, \"input\", \"I\" );", 24, "unknown kind \"input\""},
      {"DataFieldAdd( &eff.fd, \"Input\", \"I\" );", 15, "unknown field list fd"},
      {"DataFieldAdd( &eff.df, \"Input\" );", 1, "too few arguments: the name of a field expected"},
      {"DataFieldAdd( &eff.df, \"Input\", \"I\", ZodfHidden );", 38, "unknown flag ZodfHidden"},
      {"DataFieldAdd( &eff.df, \"Input\", \"I\", 0x1 );", 38, "flags expected"},
      {"DataFieldAdd( &eff.df, \"Input\", \"I\", \"a\", \"b\" );", 43, "unexpected argument"},
      {"DataFieldAdd( &eff.df, \"Inputs\", \"I\", \"a\" );", 39, "a field of kind Inputs takes no label"},
      {"DataFieldAdd( &eff.df, \"Bool\", \"I\", 0.0, 1.0 );", 37, "a field of kind Bool takes no range"},
      {"DataFieldAdd( &eff.df, \"Long\", \"I\", \"a\" );", 1, "a field of kind Long needs a range"},
      {"DataFieldAdd( &eff.df, \"Long\", \"I\", 1.0 );", 37, "a range needs two numbers"},
      {"DataFieldAdd( &eff.df, \"Long\", \"I\", 1.0, 0.0 );", 37, "a range with its limits exchanged"},
      {"DataFieldAdd( &eff.df, \"Alpha\", \"I\", ZodfHide, 0x1 );", 48,
       "a field of kind Alpha takes no colour"},
      {"DataFieldAdd( &eff.df, \"FloatA\", \"I\", ZodfHide, 0x1FFFFFF );", 49, "a colour beyond 24 bits"},
      {"DataFieldSelItemAdd( &eff.df, \"None\", \"I\", 0x0 );", 31, "no field \"None\""},
      {"DataFieldSelItemAddById( &eff.df, 7, \"I\", 0x0 );", 35, "no field with the id 7"},
      {"DataFieldSelItemAdd( &eff.df, \"Group\", \"I\", 0x0 );", 31, "field \"Group\" is no selector"},
      {"DataFieldGroupItemAddById( &eff.df, 0, 0 );", 40, "a group within itself"},
      {"DataFieldGroupItemAddById( &eff.df, 1, 0 );", 40, "a group within itself"},
      {"DataFieldGroupItemAddById( &eff.df, 0, 1 );", 40, "the field is in a group already"},
      {"*(float *)0x500 = 1;", 2, "only an int can be stored"},
      {"*(int *)0x501 = 1;", 9, "no int was handed over at this address"},
      {"eff;", 1, "statement expected"},
      {"eff.Version = ((((((((((((((((((((((((((((((((1))))))))))))))))))))))))))))))));", 47,
       "nested too deeply"},
  };
  begin();
  run("DataFieldAdd( &eff.df, \"HGroup\", \"Group\" ); DataFieldAdd( &eff.df, \"VGroup\", \"Inner\" );"
      "DataFieldGroupItemAddById( &eff.df, 0, 1 );");
  for (const Case &c : kCases) {
    EXPECT_EQ(interpreter.execute(c.statement), 0) << c.statement;
    const Interpreter::Error &error = interpreter.errors().back();
    EXPECT_EQ(error.statement, c.statement);
    EXPECT_EQ(error.reason, c.reason) << c.statement;
    EXPECT_EQ(error.column, c.column) << c.statement;
  }
  EXPECT_EQ(interpreter.errors().size(), std::size(kCases));
  EXPECT_EQ(interpreter.execute("EffectAdd( eff );"), 1);
  EXPECT_EQ(registry.effects()[0].version, 10);
  EXPECT_EQ(registry.effects()[0].fields.size(), 2U);
}

TEST_F(Script, AStatementInErrorSparesItsNeighbours) {
  EXPECT_EQ(interpreter.execute("ZoEffect eff; eff.Sign = \"a;b\"; eff.Nmae = \"x\"; eff.Version = = 1; "
                                "eff.Name = \"N\"; *(int *)0x1 = DataFieldAdd( &eff.df, \"Bool\", \"B\" );"),
            0);
  ASSERT_EQ(interpreter.errors().size(), 3U);
  EXPECT_EQ(interpreter.errors()[0].statement, "eff.Nmae = \"x\";");
  EXPECT_EQ(interpreter.errors()[0].column, 5U);
  EXPECT_EQ(interpreter.errors()[1].column, 15U);
  interpreter.execute("EffectAdd( eff );");
  ASSERT_EQ(registry.effects().size(), 1U);
  EXPECT_EQ(registry.effects()[0].sign, "a;b");
  EXPECT_EQ(registry.effects()[0].fields.size(), 1U); // so that the ids of those behind it hold

  interpreter.execute("ZoEffect eff; EffectAdd( eff );");
  EXPECT_EQ(interpreter.errors().back().reason, "an effect without a sign");
}

int writable = 0;
const int constant = 0;
constexpr char kText[] = "a text of the program";
const char *texts[] = {kText, kText + 2};

TEST(ProcessMemory, HandsOverWhatTheProgramHasAndNoMore) {
  void *program = dlopen(nullptr, RTLD_NOW);
  ProcessMemory memory(program);
  const auto at = [](const auto *object) { return reinterpret_cast<uintptr_t>(object); };
  const std::string onHeap = "a text that is long enough to be on the heap";
  const char16_t wide[] = u"wide";

  EXPECT_EQ(memory.text(at(kText)), kText);
  EXPECT_EQ(memory.text(at(onHeap.c_str())), std::nullopt);
  EXPECT_EQ(memory.text(0), std::nullopt);
  EXPECT_EQ(memory.text(UINTPTR_MAX), std::nullopt);
  EXPECT_EQ(memory.textArray(at(texts), 2), (std::vector<std::string>{kText, kText + 2}));
  EXPECT_EQ(memory.textArray(at(texts), SIZE_MAX / 2), std::nullopt);
  EXPECT_EQ(memory.textArray(at(kText), 1), std::nullopt);
  EXPECT_TRUE(memory.isCode(reinterpret_cast<uintptr_t>(&ZoDeclare)));
  EXPECT_FALSE(memory.isCode(at(&writable)));
  EXPECT_EQ(memory.wideText(at(wide)), std::nullopt);
  memory.handedOut(reinterpret_cast<const uint16_t *>(wide), 4);
  EXPECT_EQ(memory.wideText(at(wide)), u"wide");

  int local = 0;
  auto heap = std::make_unique<int>(0);
  EXPECT_TRUE(memory.storeInt(at(&writable), 7));
  EXPECT_TRUE(memory.storeInt(at(&local), 8));
  EXPECT_EQ(writable, 7);
  EXPECT_EQ(local, 8);
  for (const int *unreachable :
       {&constant, static_cast<const int *>(heap.get()), static_cast<const int *>(nullptr)})
    EXPECT_FALSE(memory.storeInt(at(unreachable), 9));
  EXPECT_FALSE(ProcessMemory(nullptr).isCode(reinterpret_cast<uintptr_t>(&ZoDeclare)));
  dlclose(program);
}

} // namespace
} // namespace zol::host
