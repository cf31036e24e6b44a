// zol icons: every effect's icon at 1:1 on one labelled sheet.

#include "apps/zol/commands.h"

#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/script/library.h"

#include <algorithm>
#include <string>
#include <vector>

namespace zol::command {
namespace {

constexpr int kColumns = 6;
constexpr int kCellWidth = 210, kCellHeight = 112;
constexpr int kIconTop = 8, kLabelTop = 88, kLabelSize = 11;
constexpr uint32_t kPaper = 0xFFE8E8E8;

/// An ffmpeg drawtext of one label, centred under its icon.
std::string labelFilter(const std::string &name, int column, int row) {
  std::string text;
  for (const char c : name) {
    if (std::string_view("\\':%,;[]").find(c) != std::string_view::npos)
      continue; // marks of the filter language, which no effect's name needs
    text += c;
  }
  return "drawtext=text='" + text + "':fontsize=" + std::to_string(kLabelSize) +
         ":fontcolor=black:x=" + std::to_string(column * kCellWidth + kCellWidth / 2) +
         "-tw/2:y=" + std::to_string(row * kCellHeight + kLabelTop);
}

void drawIcon(const host::Icon &icon, int column, int row, int sheetWidth, std::vector<uint32_t> &sheet) {
  const int left = column * kCellWidth + (kCellWidth - icon.width) / 2;
  const int top = row * kCellHeight + kIconTop;
  for (int y = 0; y < std::min(icon.height, kCellHeight - kIconTop); ++y)
    for (int x = 0; x < std::min(icon.width, kCellWidth); ++x)
      if (const uint32_t pixel =
              icon.pixels[static_cast<size_t>(y) * static_cast<size_t>(icon.width) + static_cast<size_t>(x)];
          pixel >> 24 != 0)
        sheet[static_cast<size_t>(top + y) * static_cast<size_t>(sheetWidth) +
              static_cast<size_t>(std::max(0, left) + x)] = pixel;
}

void drawSheet(const HostOptions &options, const std::string &output, bool overwrite) {
  const host::EffectLibrary library(options.libraryFile(), options.host);
  std::vector<const host::Effect *> effects;
  for (const host::Effect &effect : library.registry().effects())
    if (effect.icon)
      effects.push_back(&effect);
  if (effects.empty())
    throw host::HostError("no effect has an icon under " + options.host);
  const int rows = (static_cast<int>(effects.size()) + kColumns - 1) / kColumns;
  host::WriterOptions writing;
  writing.width = kColumns * kCellWidth;
  writing.height = rows * kCellHeight;
  writing.overwrite = overwrite;
  std::vector<uint32_t> sheet(static_cast<size_t>(writing.width) * static_cast<size_t>(writing.height),
                              kPaper);
  for (size_t i = 0; i < effects.size(); ++i) {
    const int column = static_cast<int>(i) % kColumns, row = static_cast<int>(i) / kColumns;
    drawIcon(*effects[i]->icon, column, row, writing.width, sheet);
    writing.filter += (i == 0 ? "" : ",") + labelFilter(effects[i]->name, column, row);
  }
  host::MediaWriter writer(output, writing);
  writer.writeFrame(sheet.data());
  writer.finish();
}

} // namespace

void addIcons(CLI::App &zol) {
  CLI::App *app = zol.add_subcommand("icons", "All icons at 1:1 on one labelled sheet");
  const auto options = std::make_shared<HostOptions>();
  const auto output = std::make_shared<std::string>();
  const auto overwrite = std::make_shared<bool>(false);
  app->add_option("-o", *output, "Picture to write")->type_name("FILE")->required();
  app->add_flag("-y", *overwrite, "Replace it if it exists");
  options->addTo(*app);
  app->callback([=] { drawSheet(*options, *output, *overwrite); });
}

} // namespace zol::command
