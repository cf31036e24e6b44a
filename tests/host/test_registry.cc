// Finding effects by what users type, and the pictures that they bring.

#include "host/model/names.h"
#include "host/model/registry.h"
#include "host/script/xpm.h"

#include <gtest/gtest.h>

namespace zol::host {
namespace {

Registry registryOf(std::initializer_list<const char *> names) {
  Registry registry;
  for (const char *name : names) {
    Effect effect;
    effect.name = name;
    effect.sign = std::string("sign of ") + name;
    registry.add(effect);
  }
  return registry;
}

TEST(Registry, FindsByNameSignAndEnd) {
  const Registry registry = registryOf({"Filters/Blur", "Filters/Motion Blur", "Compositing/Keyer",
                                        "Compositing/Color Keyer", "Filters/Mix", "Compositing/Mix"});
  const auto found = [&](const char *wanted) {
    const Effect *effect = registry.find(wanted);
    return effect != nullptr ? effect->name : "";
  };
  EXPECT_EQ(found("Filters/Blur"), "Filters/Blur");
  EXPECT_EQ(found("sign of Filters/Blur"), "Filters/Blur");
  EXPECT_EQ(found("bLUR"), "Filters/Blur");
  EXPECT_EQ(found("motion blur"), "Filters/Motion Blur");
  EXPECT_EQ(found("otion BLUR"), "Filters/Motion Blur");
  EXPECT_EQ(found("compositing/mix"), "Compositing/Mix");
  EXPECT_EQ(found("mix"), "");
  EXPECT_EQ(registry.matches("mix").size(), 2U);
  EXPECT_EQ(found("er"), "");
  EXPECT_EQ(found(""), "");
  EXPECT_EQ(registry.nearest("blurr"), std::vector<std::string>{"Filters/Blur"});
  EXPECT_EQ(registry.nearest("colour keyer"), std::vector<std::string>{"Compositing/Color Keyer"});
  EXPECT_TRUE(registry.nearest("somewhat else").empty());
  const std::vector<std::string> fields = {"Opacity", "Delta2", "Delta1"};
  EXPECT_EQ(nearestNames("delta", fields), (std::vector<std::string>{"Delta2", "Delta1"}));
}

TEST(Xpm, ReadsColoursAndPixels) {
  const std::vector<std::string> rows = {
      "2 2 4 2 0 0", "   c None", "aa s back m black c #fff", "ab\tc #12345678ABCD", "ac c white g black",
      "  aa",        "abac",
  };
  const Icon icon = parseXpm(rows);
  EXPECT_EQ(icon.width, 2);
  EXPECT_EQ(icon.colors, 4);
  EXPECT_EQ(icon.charsPerPixel, 2);
  EXPECT_EQ(icon.pixels, (std::vector<uint32_t>{0, 0xFFFFFFFF, 0xFF1256AB, 0xFFFFFFFF}));
}

TEST(Xpm, RefusesMalformedPictures) {
  const std::vector<std::vector<std::string>> kMalformed = {
      {},
      {""},
      {"1 1 1"},
      {"0 1 1 1", "a c red"},
      {"1 1 1 9", "a c red", "a"},
      {"1 99999999999 1 1", "a c red", "a"},
      {"1x 1 1 1", "a c red", "a"},
      {"1 2 1 1", "a c red", "a"},
      {"1 1 1 2", "a", "aa"},
      {"1 1 1 1", "a c #12345", "a"},
      {"1 1 1 1", "a c #-1+2-3", "a"},
      {"1 1 1 1", "a c nocolour", "a"},
      {"1 1 1 1", "a m black", "a"},
      {"1 1 1 1", "a c red", "b"},
      {"1 1 1 1", "a c red", ""},
      {"1 1 1 1", "a c red", "aa"},
  };
  for (const auto &rows : kMalformed)
    EXPECT_THROW(parseXpm(rows), XpmError) << testing::PrintToString(rows);
}

} // namespace
} // namespace zol::host
