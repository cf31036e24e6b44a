// Writes what the editor reads of every plug-in below a folder: zol_kdenlive FOLDER.

#include "bridges/kdenlive/assets.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

int main(int count, char **words) {
  if (count != 2) {
    std::fputs("zol_kdenlive: takes the folder to write into\n", stderr);
    return 2;
  }
  try {
    for (const zol::bridge::Plugin &plugin : zol::bridge::plugins()) {
      if (plugin.effect == nullptr || plugin.stacked)
        continue;
      const auto folder = std::filesystem::path(words[1]) / assetFolder(plugin);
      std::filesystem::create_directories(folder);
      std::ofstream file(folder / ("frei0r_" + plugin.id + ".xml"));
      file.exceptions(std::ios::badbit | std::ios::failbit);
      file << assetText(plugin);
      file.close();
    }
  } catch (const std::exception &error) {
    std::fprintf(stderr, "zol_kdenlive: cannot write below %s: %s\n", words[1], error.what());
    return 1;
  }
}
