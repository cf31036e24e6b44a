// Small notions of the host: exact rates, times, texts between 8 and 16 bits, values as users write them.

#include "host/model/colors.h"
#include "host/model/error.h"
#include "host/model/rational.h"
#include "host/model/text.h"
#include "host/model/times.h"
#include "host/model/unicode.h"
#include "host/model/values.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <iterator>

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

TEST(Times, ReadUnitsClocksAndFractions) {
  const std::pair<const char *, Time> times[] = {
      {"2.5", 2.5},
      {"2s", 2.0},
      {"500ms", 0.5},
      {"40us", 4e-5},
      {"1/25s", 0.04},
      {"1/4", 0.25},
      {"00:00:02.5", 2.5},
      {"1:30", 90.0},
      {"100:00:07", 360007.0},
      {"0:59.999", 59.999},
      {"50f", Time::frame(50)},
      {"-1s", -1.0},
  };
  for (const auto &[text, time] : times) {
    EXPECT_EQ(timeIn(text), time) << text;
    EXPECT_EQ(timeIn(time.text()), time) << text;
  }
  EXPECT_EQ(timeIn("0.5", TimeUnit::shares), Time(0.5, TimeUnit::shares));
  EXPECT_EQ(timeIn("7", TimeUnit::frames), Time::frame(7));
  EXPECT_EQ(timeIn("7s", TimeUnit::frames), Time(7.0));
  EXPECT_EQ(Time::frame(30000).seconds({30000, 1001}), 1001);
  for (const char *text : {"", "s", "f", "nan", "infs", "1m", "2 s", "1:60", "1:2:3:4", "1.5:00", "-1:00",
                           "1:-5", ":30", "30:", "1/0s", "1:1e1"})
    EXPECT_EQ(timeIn(text), std::nullopt) << text;
}

TEST(Times, RatesThatAreRoundedOrNamedAreExact) {
  const std::pair<const char *, Rational> rates[] = {
      {"29.97", {30000, 1001}},
      {"23.976", {24000, 1001}},
      {"23.98", {24000, 1001}},
      {"59.94", {60000, 1001}},
      {"119.88", {120000, 1001}},
      {"14.985", {15000, 1001}},
      {"29.97003", {30000, 1001}},
      {"ntsc", {30000, 1001}},
      {"NTSC-film", {24000, 1001}},
      {"pal", 25},
      {"film", 24},
      {"30000/1001", {30000, 1001}},
      {"2997/100", {2997, 100}},
      {"25", 25},
      {"12.5", {25, 2}},
      {"29.9", {299, 10}},
      {"29.98", {1499, 50}},
      {"23.97", {2397, 100}},
      {"59.95", {1199, 20}},
  };
  for (const auto &[text, rate] : rates)
    EXPECT_EQ(rateIn(text), rate) << text;
  for (const char *text : {"", "0", "-25", "secam", "nan", "0.0009", "100001", "25f"})
    EXPECT_EQ(rateIn(text), std::nullopt) << text;
}

TEST(Colors, ReadDigitsAndNames) {
  const std::pair<const char *, unsigned> colors[] = {
      {"#102030", 0xFF102030},   {"#10203040", 0x40102030},
      {"#1af", 0xFF11AAFF},      {"#1af8", 0x8811AAFF},
      {"0x102030", 0xFF102030},  {"0X10203040", 0x40102030},
      {"orange", 0xFFFFA500},    {"RebeccaPurple", 0xFF663399},
      {"aliceblue", 0xFFF0F8FF}, {"yellowgreen", 0xFF9ACD32},
      {"transparent", 0},
  };
  for (const auto &[text, color] : colors)
    EXPECT_EQ(colorIn(text), color) << text;
  for (const char *text : {"", "#", "#12", "#12345", "#1234567", "#123456789", "#+12345", "#12345g", "0x",
                           "102030", "reddish", " red"})
    EXPECT_EQ(colorIn(text), std::nullopt) << text;
}

TEST(Curve, GoesOnFromEachKeyAsItSays) {
  Field field;
  const NumberCurve curve = numbersIn(field, "0=0;0.5|=1;1~=0;2~=4;3=8;4=8");
  const std::pair<double, double> points[] = {{-1, 0}, {0.25, 0.5}, {0.5, 1}, {0.999, 1},
                                              {1, 0},  {3.5, 8},    {9, 8}};
  for (const auto &[time, value] : points)
    EXPECT_EQ(curve.at(time)[0], value) << time;
  EXPECT_EQ(numbersIn(field, "0~=2;1=4").at(0.5)[0], 3) << "half-way at half time, level at both ends";
  EXPECT_NEAR(numbersIn(field, "0~=2;1=4").at(0.1)[0], 2 + 2 * (3 * 0.01 - 2 * 0.001), 1e-15);
}

TEST(Curve, SmoothOnesNeitherBendNorOvershoot) {
  Field field;
  const double values[] = {3, 3.5, 8, 8, -2, -1.9, 5, 0};
  const double times[] = {0, 0.1, 0.15, 0.4, 0.5, 0.8, 0.95, 1};
  NumberCurve curve;
  for (size_t i = 0; i < std::size(times); ++i)
    curve.set(times[i], {values[i]}, Course::smooth);
  constexpr double kStep = 1e-7;
  const auto slope = [&](double time) { return (curve.at(time + kStep)[0] - curve.at(time)[0]) / kStep; };
  for (size_t i = 0; i + 1 < std::size(times); ++i) {
    const auto [low, high] = std::minmax(values[i], values[i + 1]);
    double before = values[i];
    for (int n = 0; n <= 50; ++n) {
      const double value = curve.at(times[i] + (times[i + 1] - times[i]) * n / 50)[0];
      EXPECT_GE(value, low - 1e-12) << i;
      EXPECT_LE(value, high + 1e-12) << i;
      EXPECT_GE((value - before) * (values[i + 1] - values[i]), -1e-12) << i;
      before = value;
    }
    EXPECT_NEAR(slope(times[i] - kStep), slope(times[i]), 1e-2) << i;
  }
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
  for (const char *text : {"0.5", "0=0.1;0.25=4;1=0.3", "0|=0.1;0.25~=4;1=0.3"})
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
  const KeySpan span{4, {25, 2}};
  for (const char *text :
       {"0=1;0.5=2;1=3", "0s=1;2s=2;4s=3", "0f=1;25f=2;50f=3", "0=1;00:00:02=2;4000ms=3"}) {
    EXPECT_EQ(textOf(numbersIn(number, text, span)), "0=1;0.5=2;1=3") << text;
    EXPECT_EQ(strayKey(number, text, span), std::nullopt);
  }
  EXPECT_EQ(textOf(colorsIn(number, "0s|=red;2s=#0000ff80", span)), "0|=#ff0000;0.5=#0000ff80");
  EXPECT_EQ(strayKey(number, "0=0;8.3=1", span),
            "field \"Level\": the key at 8.3 lies outside of the effect's span, 0 to 1; a time in seconds is "
            "written 8.3s");
  EXPECT_NE(strayKey(number, "0=0;5s=1", span).value_or("").find("at 5s"), std::string::npos);
  Field time = number;
  time.kind = "time";
  time.max = std::nullopt;
  EXPECT_EQ(textOf(numbersIn(time, "0=2;1=25f", span)), "0=2;1=2");
  for (const char *text : {"", "x", "-1", "nan", "0=1;2", "0=1;=2", "0|1", "0||=1;1=2", "1x=2"})
    EXPECT_THROW(numbersIn(number, text), HostError) << text;
  EXPECT_THROW(colorsIn(number, "reddish"), HostError);
  EXPECT_THROW(choiceIn(choice, "4"), HostError);
  EXPECT_THROW(choiceIn(toggle, "maybe"), HostError);
}

TEST(Labels, AreShownWithoutTheirMnemonics) {
  for (const auto &[label, shown] : {std::pair("Keep &brightness", "Keep brightness"),
                                     {"&&Co", "&Co"},
                                     {"R &", "R &"},
                                     {"plain", "plain"}})
    EXPECT_EQ(withoutMnemonic(label), shown);
}

} // namespace
} // namespace zol::host
