// Golden files of sections: a title in brackets, and lines.
#pragma once

#include "tests/support/golden.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <string>

namespace zol::test {

using Sections = std::map<std::string, std::string>;

inline std::string goldenPath(const std::string &file) { return ZOL_SOURCE_DIR "/tests/every/" + file; }

inline Sections readSections(const std::string &file) {
  Sections sections;
  std::ifstream stream(goldenPath(file));
  std::string line, name;
  while (std::getline(stream, line))
    if (line.starts_with('['))
      name = line.substr(1, line.size() - 2);
    else if (!line.empty())
      sections[name] += line + '\n';
  return sections;
}

/// Compares a section's lines with those of the file, or replaces them there. A section without lines is not
/// in the file.
inline void expectSection(const std::string &file, const std::string &section, const std::string &lines) {
  Sections sections = readSections(file);
  if (!writesGolden()) {
    EXPECT_EQ(sections[section], lines) << "[" << section << "] of " << file;
    return;
  }
  sections[section] = lines;
  std::ofstream out(goldenPath(file));
  for (const auto &[title, text] : sections)
    if (!text.empty())
      out << '[' << title << "]\n" << text << '\n';
}

} // namespace zol::test
