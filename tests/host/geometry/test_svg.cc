// SVG files: all shapes, where they are placed, what is left out, and hostile texts.
#include "host/geometry/svg.h"
#include "tests/host/geometry/geometries.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>

namespace zol::host {
namespace {

std::string svg(const std::string &content, const std::string &attributes = "") {
  return "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' " + attributes +
         '>' + content + "</svg>";
}

Geometry drawn(const std::string &xml) { return readSvg(xml).geometry; }

std::string fault(const std::string &xml) {
  try {
    (void)readSvg(xml);
  } catch (const GeometryError &error) {
    return error.what();
  }
  return "none";
}

/// The content, within the attributes, draws what the path does.
void expectDraws(const std::string &content, const std::string &path, const std::string &attributes = "") {
  expectSame(drawn(svg(content, attributes)), readPath(path), content + attributes, 1e-9);
}

TEST(Svg, DrawsEveryShape) {
  expectDraws("<path d='M1 2\n&#72;5&#x56;3'/>", "M1 2H5V3");
  expectDraws("<rect x='1' y='2' width='10' height='5'/>", "M1 2h10v5h-10z");
  const std::string rounded = "M3 2H9A2 1 0 0 1 11 3V6A2 1 0 0 1 9 7H3A2 1 0 0 1 1 6V3A2 1 0 0 1 3 2Z";
  expectDraws("<rect x='1' y='2' width='10' height='5' rx='2' ry='1'/>", rounded);
  expectDraws("<rect width='10' height='8' rx='2'/>",
              "M2 0H8A2 2 0 0 1 10 2V6A2 2 0 0 1 8 8H2A2 2 0 0 1 0 6V2A2 2 0 0 1 2 0Z");
  expectDraws("<rect width='10' height='8' rx='auto' ry='50'/>",
              "M5 0A5 4 0 0 1 10 4A5 4 0 0 1 5 8A5 4 0 0 1 0 4A5 4 0 0 1 5 0Z");
  expectDraws("<circle cx='5' cy='6' r='3'/>", "M8 6A3 3 0 0 1 2 6A3 3 0 0 1 8 6Z");
  expectDraws("<ellipse cx='5' cy='6' rx='3' ry='1'/>", "M8 6A3 1 0 0 1 2 6A3 1 0 0 1 8 6Z");
  expectDraws("<ellipse ry='1'/>", "M1 0A1 1 0 0 1 -1 0A1 1 0 0 1 1 0Z");
  expectDraws("<line x1='1' y1='2' x2='3' y2='5'/>", "M1 2L3 5");
  expectDraws("<polyline points='1,2 3 4-5,6'/>", "M1 2L3 4L-5 6");
  expectDraws("<polygon points='1,2 3 4-5,6'/>", "M1 2L3 4L-5 6Z");
  expectDraws("<rect width='0' height='5'/><circle/><polygon/><path/><line x1='5'/>", "M5 0L0 0");
  const Geometry geometry = drawn(svg("<polyline points='0,0 1,0 1,1'/><polygon points='0,0 1,0 1,1'/>"));
  EXPECT_FALSE(geometry.contours.at(0).closed);
  EXPECT_TRUE(geometry.contours.at(1).closed);
  expectSame(drawn("<?xml version='1.0'?><!DOCTYPE svg [<!ENTITY ns 'http://'><!-- it's > -->]>\n"
                   "<!-- <path d='M9 9h1'/> --><s:svg xmlns:s='&ns;'><s:g><s:path d='M1 2H5'/></s:g>"
                   "<![CDATA[<path d='M9 9h1'/>]]><?p <path d='M9 9h1'/>?></s:svg >"),
             readPath("M1 2H5"), "prefix and document type");
}

TEST(Svg, AppliesTransformsFromOutsideIn) {
  const struct {
    const char *transform, *path;
  } cases[] = {
      {"matrix(1 2 3 4 5 6)", "M5 6L6 8L9 12"},
      {"translate(3)", "M3 0L4 0L4 1"},
      {"translate(3,-4)", "M3 -4L4 -4L4 -3"},
      {"scale(2)", "M0 0L2 0L2 2"},
      {" scale( 2 , -3 ) ", "M0 0L2 0L2 -3"},
      {"rotate(90)", "M0 0L0 1L-1 1"},
      {"rotate(90 1 0)", "M1 -1L1 0L0 0"},
      {"skewX(45)", "M0 0L1 0L2 1"},
      {"skewY(45)", "M0 0L1 1L1 2"},
      {"translate(10 0),scale(2)\ntranslate(1 0)", "M12 0L14 0L14 2"},
      {"", "M0 0L1 0L1 1"},
  };
  for (const auto &[transform, path] : cases)
    expectDraws("<path d='M0 0L1 0L1 1' transform='" + std::string(transform) + "'/>", path);
  expectDraws("<g transform='translate(10 0)'><g transform='scale(2)'><path d='M0 0h1'/></g>"
              "<path d='M0 0h1'/></g><a><switch><path d='M5 5h1'/></switch></a>",
              "M10 0h2M10 0h1M5 5h1");
  for (const std::string wrong : {"scale", "scale(", "scale()", "scale(1 2 3)", "turn(1)",
                                  "matrix(1 2 3 4 5)", "matrix(1 2 3 4 5 6 7)", "scale(1) x", "rotate(1 2)"})
    EXPECT_NE(fault(svg("\n<g transform='" + wrong + "'/>")).find("line 2: transform, character "),
              std::string::npos)
        << wrong;
}

TEST(Svg, MapsViewBoxesToSizes) {
  const std::string box = "viewBox='10 20 100 50' ";
  const std::string corners = "<path d='M10 20L110 70'/>";
  const struct {
    std::string attributes;
    const char *path;
  } cases[] = {
      {"", "M0 0L100 50"},
      {"width='100%' height='100%'", "M0 0L100 50"},
      {"width='50%' height='50%'", "M0 0L50 25"},
      {"width='200' height='100px'", "M0 0L200 100"},
      {"width='200' height='200'", "M0 50L200 150"},
      {"width='200' height='200' preserveAspectRatio='xMinYMin'", "M0 0L200 100"},
      {"width='200' height='200' preserveAspectRatio='xMaxYMax meet'", "M0 100L200 200"},
      {"width='200' height='200' preserveAspectRatio='none'", "M0 0L200 200"},
      {"width='200' height='200' preserveAspectRatio='xMidYMid slice'", "M-100 0L300 200"},
      {"width='200' height='200' preserveAspectRatio='xMaxYMid slice'", "M-200 0L200 200"},
      {"width='1in' height='.5in'", "M0 0L96 48"},
      {"width='2.54cm' height='12.7mm'", "M0 0L96 48"},
      {"width='72pt' height='3pc'", "M0 0L96 48"},
  };
  for (const auto &[attributes, path] : cases)
    expectDraws(corners, path, box + attributes);
  expectDraws(corners, "M10 20L110 70", "width='7' height='7'");
  expectDraws("<svg x='5' y='6' width='50%' height='50' viewBox='0 0 10 10'><path d='M0 0L10 10'/></svg>",
              "M5 6L55 56", "viewBox='0 0 100 100'");
  expectDraws("<rect width='50%' height='10%'/><circle r='10%'/>",
              "M0 0h40v6h-40z M7.0710678118654755 0A7.0710678118654755 7.0710678118654755 0 0 1 "
              "-7.0710678118654755 0A7.0710678118654755 7.0710678118654755 0 0 1 7.0710678118654755 0",
              "viewBox='0 0 80 60'");
  EXPECT_TRUE(drawn(svg(corners, "viewBox='0 0 0 9'")).contours.empty());
  EXPECT_NE(fault(svg("", "width='3em'")).find("unit"), std::string::npos);
  EXPECT_NE(fault(svg("", "viewBox='0 0 9'")).find("viewBox, character 6"), std::string::npos);
}

TEST(Svg, FollowsUses) {
  expectDraws("<defs><g id='a' transform='scale(2)'><path id='b' d='M0 0h1'/></g></defs>"
              "<use href='#a' x='10' y='1'/><use transform='translate(0 5)' xlink:href='#b'/>",
              "M10 1h2 M0 5h1");
  expectDraws("<symbol id='s' viewBox='0 0 10 10'><path d='M0 0L10 10'/></symbol>"
              "<use href='#s' x='7' width='20' height='20'/>",
              "M7 0L27 20");
  EXPECT_NE(fault(svg("<g id='a'><g><use href='#a'/></g></g>")).find("circle"), std::string::npos);
  std::string wide = "<path id='u0' d='M0 0h1'/>"; // 10^20 lines
  for (int i = 0; i < 20; ++i) {
    wide += "<g id='u" + std::to_string(i + 1) + "'>";
    for (int k = 0; k < 10; ++k)
      wide += "<use href='#u" + std::to_string(i) + "'/>";
    wide += "</g>";
  }
  EXPECT_NE(fault(svg("<defs>" + wide + "</defs><use href='#u20'/>")).find("too"), std::string::npos);
}

TEST(Svg, LeavesOutWhatIsNotDrawnAndTellsWhatIsNotRead) {
  const std::string path = "<path d='M9 9h1'/>";
  std::string content = "<path d='M0 0h1'/>";
  for (const char *name : {"defs", "clipPath", "mask", "symbol", "marker", "pattern", "title", "unknown"})
    content += '<' + std::string(name) + "><g>" + path + "</g></" + name + '>';
  content += "<g display='none'>" + path + "</g><g style='fill:red; display : none'>" + path +
             "</g><g style='display:inline' display='none'><path d='M5 5h1'/></g>";
  expectDraws(content, "M0 0h1M5 5h1");
  EXPECT_TRUE(readSvg(svg(content)).notes.empty());
  EXPECT_EQ(readSvg(svg("<text>A</text><text/><image href='a.png'/><defs><style>path{display:none}</style>"
                        "<text/></defs><use href='other.svg#a'/><g clip-path='url(#c)' mask='none'/>"))
                .notes,
            (std::vector<std::string>{"1 clip-path property is not read", "1 image element is not read",
                                      "1 style element is not read", "2 text elements are not read",
                                      "1 use element is not read"}));
}

TEST(Svg, SaysWhereItIsWrong) {
  const struct {
    const char *xml, *why;
  } cases[] = {
      {"", "no element"},
      {"<svg>\n<path d='M0'/></svg>", "line 2: path data, character 3: a number expected"},
      {"<svg>\n\n<path d='M0", "line 3: no ' follows"},
      {"<svg><g></svg>", "</svg> is no end here"},
      {"<svg><g>", "<g> has no end"},
      {"<svg></g>", "</g> is no end here"},
      {"<svg></svg x>", "</svg> is no end here"},
      {"<svg a></svg>", "attribute a"},
      {"<svg a=b></svg>", "attribute a"},
      {"<svg a='b'c='d'></svg>", "a tag has no end"},
      {"<svg", "a tag has no end"},
      {"<svg><></svg>", "a name expected"},
      {"<svg><!-- ", "no --> follows"},
      {"<!DOCTYPE svg [", "declaration"},
      {"<svg><path d='&x;'/></svg>", "&x; is not read"},
      {"<svg><path d='&#x110000;'/></svg>", "&#x110000; is not read"},
      {"<svg><path d='&amp'/></svg>", "&amp"},
      {"<svg><polygon points='1 2 3'/></svg>", "points, character 6"},
      {"<svg><g transform='scale(1e9)'><path d='M0 0h2'/></g></svg>", "too far away"},
      {"<svg><g transform='scale(1e9)'><g transform='scale(1e-9)'><path d='M0 0h2'/></g></g></svg>", "none"},
  };
  for (const auto &[xml, why] : cases)
    EXPECT_NE(fault(xml).find(why), std::string::npos) << xml << ": " << fault(xml);
}

TEST(Svg, StaysWithinItsStackHoweverDeepElementsAre) {
  const auto repeated = [](const std::string &element) {
    std::string all;
    for (int i = 0; i < 400000; ++i)
      all += element;
    return all;
  };
  for (const std::string element : {"<g>", "<g a='/>' b=\"'/>\">", "<g><!-- </g></g> -->",
                                    "<g><![CDATA[</g></g>]]>", "<g><?p </g></g>?>", "<g><!x y>"})
    EXPECT_NE(fault("<svg>" + repeated(element)).find("nested too deep"), std::string::npos) << element;
  EXPECT_NE(fault("<svg></<![CDATA[>" + repeated("<g>")), "none");
  EXPECT_NE(fault("<b></<![CDATA[><A><[><</></></>"), "none");
  expectDraws(repeated("<g a='>'/><g></g>") + "<path d='M0 0h1'/>", "M0 0h1");
}

TEST(Svg, ReadsFiles) {
  const std::string name = testing::TempDir() + "zol_geometry_test.svg";
  const auto message = [&](const std::string &text) {
    std::ofstream(name, std::ios::binary) << text;
    try {
      (void)readDrawing("@" + name);
    } catch (const GeometryError &error) {
      return std::string(error.what());
    }
    return std::string("none");
  };
  EXPECT_EQ(message("\xEF\xBB\xBF<svg><path d='M0 0h1'/><text/></svg>"), "none");
  EXPECT_EQ(readDrawing("@" + name).notes.size(), 1u);
  EXPECT_EQ(message("<svg><text/></svg>"),
            "cannot read " + name + ": no shape in it; 1 text element is not read");
  EXPECT_EQ(message(""), "cannot read " + name + ": nothing could be read");
  std::remove(name.c_str());
  EXPECT_NE(
      [&] {
        try {
          (void)readDrawing("@" + name);
        } catch (const GeometryError &error) {
          return std::string(error.what());
        }
        return std::string();
      }()
          .find("No such file"),
      std::string::npos);
  EXPECT_EQ(endsOf(readDrawing("M0 0H1V1").geometry).size(), 3u);
}

} // namespace
} // namespace zol::host
