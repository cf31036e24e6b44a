// Small notions of the host: exact rates, texts between 8 and 16 bits, values as users write them.

#include "host/model/error.h"
#include "host/model/rational.h"
#include "host/model/unicode.h"
#include "host/model/values.h"

#include <cmath>
#include <gtest/gtest.h>

namespace zol::host {
namespace {

TEST(Rational, ReadsRatesExactly) {
  const std::pair<const char *, Rational> rates[] = {
      {"30000/1001", {30000, 1001}},
      {"25", 25},
      {"50/2", 25},
      {"16:15", {16, 15}},
      {"29.97", {2997, 100}},
      {"12.5", {25, 2}},
      {"0.001", {1, 1000}},
      {"29.97002997002997", {30000, 1001}},
      {"23.976", {2997, 125}},
      {"1e5", Rational(100000)},
  };
  for (const auto &[text, rate] : rates) {
    EXPECT_EQ(rationalIn(text), rate) << text;
    EXPECT_EQ(rationalIn(rate.text()), rate) << text;
  }
  for (const char *text :
       {"", "0", "-25", "1/0", "0/1", "a/b", "25/", "/1", "nan", "inf", "1e300", "1e-12", "3000000000/1"})
    EXPECT_EQ(rationalIn(text), std::nullopt) << text;
}

TEST(Rational, NothingAccumulatesOverFrames) {
  const Rational rate(30000, 1001);
  for (const uint64_t frame : {0ULL, 1ULL, 2ULL, 29ULL, 30000ULL, 107892ULL, 999999999ULL}) {
    const double time = timeOf(frame, rate);
    EXPECT_EQ(time, static_cast<double>(frame * 1001) / 30000);
    EXPECT_EQ(indexAt(time, rate), frame);
    EXPECT_EQ(samplesBefore(frame, rate, 48000), (frame * 1001 * 16 + 5) / 10);
  }
  EXPECT_EQ(timeOf(30000, rate), 1001.0); // of 1001.0000000000001 with a rounded rate
  EXPECT_EQ(indexAt(-1, rate), 0U);
  EXPECT_EQ(indexAt(std::nextafter(7 / 25.0, 0), 25), 7U);
  EXPECT_EQ(indexAt(0.999 / 25, 25), 0U);
  EXPECT_EQ(samplesBefore(1000000000, {1000, 1}, 768000), 768000000000U);
}

TEST(Unicode, WhatIsNoTextBecomesTheReplacement) {
  const std::pair<std::u16string, std::string> whole[] = {
      {u"a\u00E9\u20AC\U0001F600z", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z"},
      {u"\uFFFD\U0010FFFF", "\xEF\xBF\xBD\xF4\x8F\xBF\xBF"},
      {u"", ""},
  };
  for (const auto &[wide, narrow] : whole) {
    EXPECT_EQ(toUtf8(wide), narrow);
    EXPECT_EQ(toUtf16(narrow), wide);
  }
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_EQ(toUtf8(std::u16string{u'a', 0xD800}), "a" + mark);
  EXPECT_EQ(toUtf8(std::u16string{0xDC00, 0xD800, u'b'}), mark + mark + "b");
  EXPECT_EQ(toUtf8(std::u16string{0xD800, 0xD83D, 0xDE00}), mark + "\xF0\x9F\x98\x80");
  const std::pair<const char *, std::u16string> broken[] = {
      {"a\xC0\xAF"
       "b",
       u"a\uFFFDb"},                       // an overlong '/'
      {"\xE0\x80\xAF", u"\uFFFD"},         // likewise, of three bytes
      {"\xF0\x80\x80\xAF", u"\uFFFD"},     // and of four
      {"\xED\xA0\x80", u"\uFFFD"},         // half of a surrogate pair
      {"\xF4\x90\x80\x80", u"\uFFFD"},     // beyond the last code point
      {"\xC3", u"\uFFFD"},                 // cut off
      {"\xE2\x82q", u"\uFFFDq"},           //
      {"x\x80y\xFFz", u"x\uFFFDy\uFFFDz"}, // no lead
  };
  for (const auto &[narrow, wide] : broken)
    EXPECT_EQ(toUtf16(narrow), wide) << testing::PrintToString(narrow);
}

TEST(Values, ReadBackAsTheyAreWritten) {
  Field number, choice, toggle;
  number.name = "Level";
  number.type = FieldType::number;
  number.flags = kMinLimit;
  number.min = 0;
  number.max = 1;
  for (const char *text : {"0.5", "0=0.1;0.25=4;1=0.3"})
    EXPECT_EQ(textOf(numbersIn(number, text)), text);
  EXPECT_EQ(textOf(numbersIn(number, " 1 = 2 ; 0=3")), "0=3;1=2");
  for (const char *text : {"#102030", "#10203040", "0=#000000;1=#ffffff"})
    EXPECT_EQ(textOf(colorsIn(number, text)), text);
  choice.type = FieldType::selector;
  choice.items = {{"Off", 3}, {"As it is", 7}};
  EXPECT_EQ(choiceIn(choice, " as IT is "), 7);
  EXPECT_EQ(choiceIn(choice, "3"), 3);
  EXPECT_EQ(textOf(choice, 3), "Off");
  toggle.type = FieldType::toggle;
  EXPECT_EQ(textOf(toggle, choiceIn(toggle, "TRUE")), "on");
  EXPECT_EQ(textOf(toggle, choiceIn(toggle, "off")), "off");
  EXPECT_EQ(startOf(number), 0);
  number.min = 0.25;
  EXPECT_EQ(startOf(number), 0.25);
  for (const char *text : {"", "x", "-1", "nan", "0=1;2", "0=1;=2"})
    EXPECT_THROW(numbersIn(number, text), HostError) << text;
  EXPECT_THROW(colorsIn(number, "red"), HostError);
  EXPECT_THROW(choiceIn(choice, "4"), HostError);
  EXPECT_THROW(choiceIn(toggle, "maybe"), HostError);
}

} // namespace
} // namespace zol::host
