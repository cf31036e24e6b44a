#include "host/media/conversion.h"

#include "host/media/aligned_bytes.h"
#include "host/media/bgra_rows.h"
#include "host/model/error.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#ifdef ZOL_WITH_ZIMG
#include <zimg.h>
#endif

namespace zol::host {

#ifdef ZOL_WITH_ZIMG
namespace {

constexpr size_t kAlignment = static_cast<size_t>(kPictureAlignment);

enum class Part { Color, Alpha };

size_t roundUp(size_t value, size_t to) { return (value + to - 1) / to * to; }
int roundUpShift(int value, int shift) { return (value + (1 << shift) - 1) >> shift << shift; }
int ceilShift(int value, int shift) { return (value + (1 << shift) - 1) >> shift; }

/// Samples of one channel in memory.
template <class Byte> struct View {
  Byte *data;
  size_t pitch;
  int columns, rows; // those that there are
  int shiftX, shiftY;

  [[nodiscard]] Byte *row(int y) const { return data + static_cast<size_t>(y) * pitch; }
};

/// The channels of one part of one field of a picture: a packed view, or planes in zimg's order.
template <class Byte> struct Channels {
  bool packed = false;
  size_t sampleBytes = 1;
  std::vector<View<Byte>> views;
};

template <class Byte>
Channels<Byte> channelsOf(const PictureLayout &layout, Part part, Byte *data, int field, int fields) {
  const PixelFormat &format = layout.format;
  Channels<Byte> channels{format.packed, static_cast<size_t>(format.sampleBytes()), {}};
  std::vector<int> planes{0};
  if (!format.packed && part == Part::Alpha)
    planes = {format.planes() - 1};
  else if (!format.packed && format.family == ColorFamily::Yuv)
    planes = {0, 1, 2};
  else if (!format.packed && format.family == ColorFamily::Rgb)
    planes = {2, 0, 1}; // red, green, blue out of green, blue, red
  for (const int index : planes) {
    const PictureLayout::Plane plane = layout.plane(index);
    const bool chroma = format.isChroma(index);
    // Where a source has no row in this field, its first one stands in.
    const int first = std::is_const_v<Byte> && field >= plane.height ? 0 : field;
    channels.views.push_back({data + plane.offset + static_cast<size_t>(first) * plane.pitch,
                              plane.pitch * static_cast<size_t>(fields), plane.width,
                              (plane.height - first + fields - 1) / fields, chroma ? format.chromaShiftX : 0,
                              chroma ? format.chromaShiftY : 0});
  }
  return channels;
}

/// The size and format of one end of a graph.
struct End {
  zimg_image_format format;
  int planes;
  size_t sampleBytes;

  [[nodiscard]] int shiftX(int plane) const { return plane == 0 ? 0 : static_cast<int>(format.subsample_w); }
  [[nodiscard]] int shiftY(int plane) const { return plane == 0 ? 0 : static_cast<int>(format.subsample_h); }
};

zimg_matrix_coefficients_e zimgMatrix(ColorMatrix matrix) {
  switch (matrix) {
  case ColorMatrix::Rgb: return ZIMG_MATRIX_RGB;
  case ColorMatrix::Bt601: return ZIMG_MATRIX_ST170_M;
  case ColorMatrix::Bt709: return ZIMG_MATRIX_BT709;
  case ColorMatrix::Fcc: return ZIMG_MATRIX_FCC;
  case ColorMatrix::Smpte240m: return ZIMG_MATRIX_ST240_M;
  case ColorMatrix::YCgCo: return ZIMG_MATRIX_YCGCO;
  case ColorMatrix::Bt2020: return ZIMG_MATRIX_BT2020_NCL;
  }
  return ZIMG_MATRIX_UNSPECIFIED;
}

zimg_chroma_location_e zimgSite(ChromaSite site) {
  switch (site) {
  case ChromaSite::Left: return ZIMG_CHROMA_LEFT;
  case ChromaSite::Center: return ZIMG_CHROMA_CENTER;
  case ChromaSite::TopLeft: return ZIMG_CHROMA_TOP_LEFT;
  case ChromaSite::Top: return ZIMG_CHROMA_TOP;
  case ChromaSite::BottomLeft: return ZIMG_CHROMA_BOTTOM_LEFT;
  case ChromaSite::Bottom: return ZIMG_CHROMA_BOTTOM;
  }
  return ZIMG_CHROMA_LEFT;
}

/// `grey`: both ends have but one channel.
End endOf(const PictureLayout &layout, Part part, bool grey, int width, int rows,
          zimg_field_parity_e parity) {
  const PixelFormat &format = layout.format;
  const bool color = part == Part::Color && !grey;
  End end{{}, color ? 3 : 1, format.packed ? 1 : static_cast<size_t>(format.sampleBytes())};
  zimg_image_format &f = end.format;
  zimg_image_format_default(&f, ZIMG_API_VERSION);
  f.width = static_cast<unsigned>(width);
  f.height = static_cast<unsigned>(rows);
  f.pixel_type = end.sampleBytes > 1 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
  f.depth = static_cast<unsigned>(format.depth);
  f.field_parity = parity;
  f.pixel_range = ZIMG_RANGE_FULL;
  f.color_family = color ? ZIMG_COLOR_RGB : ZIMG_COLOR_GREY;
  f.matrix_coefficients = color ? ZIMG_MATRIX_RGB : ZIMG_MATRIX_UNSPECIFIED;
  if (part == Part::Alpha || format.family == ColorFamily::Rgb)
    return end;
  f.pixel_range = layout.coding.fullRange ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
  if (color) {
    f.color_family = ZIMG_COLOR_YUV; // grey too, the luma of colours
    f.matrix_coefficients = zimgMatrix(layout.coding.matrix);
    f.chroma_location = zimgSite(layout.coding.site);
    f.subsample_w = static_cast<unsigned>(format.chromaShiftX);
    f.subsample_h = static_cast<unsigned>(format.chromaShiftY);
  }
  return end;
}

[[noreturn]] void failWithReason() {
  char reason[256] = "";
  zimg_get_last_error(reason, sizeof reason);
  zimg_clear_last_error();
  throw HostError(std::string("pictures cannot be converted: ") + reason);
}

/// Some rows of every plane, used in turn.
struct Ring {
  AlignedBytes memory;
  struct Plane {
    uint8_t *data;
    size_t pitch;
    unsigned mask;

    [[nodiscard]] uint8_t *row(int y) const { return data + (static_cast<unsigned>(y) & mask) * pitch; }
  };
  std::vector<Plane> planes;

  Ring(const End &end, unsigned lines) {
    const unsigned all = zimg_select_buffer_mask(lines);
    const auto rowsOf = [&](int plane) {
      const size_t wanted = all == ZIMG_BUFFER_MAX ? end.format.height : size_t{all} + 1;
      return std::max<size_t>(wanted >> end.shiftY(plane), 1);
    };
    size_t size = 0;
    for (int i = 0; i < end.planes; ++i) {
      const size_t pitch = roundUp((end.format.width >> end.shiftX(i)) * end.sampleBytes, kAlignment);
      planes.push_back({nullptr, pitch, all == ZIMG_BUFFER_MAX ? all : all >> end.shiftY(i)});
      size += pitch * rowsOf(i);
    }
    memory = alignedBytes(size);
    uint8_t *at = memory.get();
    for (int i = 0; i < end.planes; ++i) {
      planes[static_cast<size_t>(i)].data = at;
      at += planes[static_cast<size_t>(i)].pitch * rowsOf(i);
    }
  }
};

void repeat(const uint8_t *sample, size_t sampleBytes, int times, uint8_t *to) {
  for (int i = 0; i < times; ++i)
    std::memcpy(to + static_cast<size_t>(i) * sampleBytes, sample, sampleBytes);
}

/// Brings rows of a picture into a ring; what lies beyond its last column and row repeats them.
struct Fetch {
  const Channels<const uint8_t> *from;
  const Ring *ring;
  Part part;
  int rowsAtOnce; // of the plane that is not subsampled

  static int call(void *user, unsigned line, unsigned left, unsigned right) {
    const Fetch &fetch = *static_cast<const Fetch *>(user);
    if (fetch.from->packed)
      fetch.packedRow(static_cast<int>(line), static_cast<int>(left), static_cast<int>(right));
    else
      fetch.planarRows(static_cast<int>(line), static_cast<int>(left), static_cast<int>(right));
    return 0;
  }

  void packedRow(int line, int left, int right) const {
    const View<const uint8_t> &view = from->views[0];
    const uint8_t *row = view.row(std::min(line, view.rows - 1));
    const int end = std::clamp(view.columns, left, right);
    const auto n = static_cast<size_t>(end - left), start = static_cast<size_t>(left);
    const auto &p = ring->planes;
    if (part == Part::Alpha)
      splitAlpha(row + 4 * start, n, p[0].row(line) + start);
    else
      splitBgra(row + 4 * start, n, p[2].row(line) + start, p[1].row(line) + start, p[0].row(line) + start);
    const uint8_t *last = row + 4 * static_cast<size_t>(view.columns - 1);
    for (size_t i = 0; i < p.size(); ++i)
      repeat(last + (part == Part::Alpha ? 3 : 2 - i), 1, right - end, p[i].row(line) + end);
  }

  void planarRows(int line, int left, int right) const {
    const size_t bytes = from->sampleBytes;
    for (size_t i = 0; i < from->views.size(); ++i) {
      const View<const uint8_t> &view = from->views[i];
      const int begin = left >> view.shiftX, stop = ceilShift(right, view.shiftX);
      const int end = std::clamp(view.columns, begin, stop);
      const int first = line >> view.shiftY;
      for (int y = first; y < first + std::max(rowsAtOnce >> view.shiftY, 1); ++y) {
        const uint8_t *row = view.row(std::min(y, view.rows - 1));
        uint8_t *to = ring->planes[i].row(y);
        std::memcpy(to + static_cast<size_t>(begin) * bytes, row + static_cast<size_t>(begin) * bytes,
                    static_cast<size_t>(end - begin) * bytes);
        repeat(row + static_cast<size_t>(view.columns - 1) * bytes, bytes, stop - end,
               to + static_cast<size_t>(end) * bytes);
      }
    }
  }
};

/// Brings rows from a ring into a picture, as far as it reaches.
struct Store {
  const Channels<uint8_t> *to;
  const Ring *ring;
  const View<const uint8_t> *alpha; // null: opaque
  int rowsAtOnce;

  static int call(void *user, unsigned line, unsigned left, unsigned right) {
    const Store &store = *static_cast<const Store *>(user);
    if (store.to->packed)
      store.packedRow(static_cast<int>(line), static_cast<int>(left), static_cast<int>(right));
    else
      store.planarRows(static_cast<int>(line), static_cast<int>(left), static_cast<int>(right));
    return 0;
  }

  void packedRow(int line, int left, int right) const {
    const View<uint8_t> &view = to->views[0];
    const int end = std::min(view.columns, right);
    if (line >= view.rows || left >= end)
      return;
    const auto &p = ring->planes;
    const bool grey = p.size() == 1;
    joinBgra(p[grey ? 0 : 2].row(line) + left, p[grey ? 0 : 1].row(line) + left, p[0].row(line) + left,
             alpha != nullptr ? alpha->row(line) + left : nullptr, static_cast<size_t>(end - left),
             view.row(line) + 4 * static_cast<size_t>(left));
  }

  void planarRows(int line, int left, int right) const {
    const size_t bytes = to->sampleBytes;
    for (size_t i = 0; i < to->views.size(); ++i) {
      const View<uint8_t> &view = to->views[i];
      const int begin = left >> view.shiftX, end = std::min(view.columns, ceilShift(right, view.shiftX));
      const int first = line >> view.shiftY;
      for (int y = first; y < std::min(first + std::max(rowsAtOnce >> view.shiftY, 1), view.rows); ++y)
        if (begin < end)
          std::memcpy(view.row(y) + static_cast<size_t>(begin) * bytes,
                      ring->planes[i].row(y) + static_cast<size_t>(begin) * bytes,
                      static_cast<size_t>(end - begin) * bytes);
    }
  }
};

/// Whether zimg can work in the picture itself.
template <class Byte> bool usable(const Channels<Byte> &channels, const End &end) {
  if (channels.packed || channels.views.size() != static_cast<size_t>(end.planes))
    return false;
  for (const View<Byte> &view : channels.views)
    if ((reinterpret_cast<uintptr_t>(view.data) | view.pitch) % kAlignment != 0 ||
        view.columns << view.shiftX != static_cast<int>(end.format.width) ||
        view.rows << view.shiftY != static_cast<int>(end.format.height))
      return false;
  return true;
}

/// A conversion of one part of one field.
class Graph {
public:
  Graph(const End &from, const End &to) : from_(from), to_(to) {
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    params.cpu_type = ZIMG_CPU_AUTO_64B;
    params.resample_filter = params.resample_filter_uv = ZIMG_RESIZE_BICUBIC;
    params.filter_param_a = params.filter_param_a_uv = 0; // Catmull-Rom
    params.filter_param_b = params.filter_param_b_uv = 0.5;
    graph_.reset(zimg_filter_graph_build(&from_.format, &to_.format, &params));
    unsigned linesIn = 0, linesOut = 0;
    if (!graph_ || zimg_filter_graph_get_tmp_size(graph_.get(), &scratch_) != 0 ||
        zimg_filter_graph_get_input_buffering(graph_.get(), &linesIn) != 0 ||
        zimg_filter_graph_get_output_buffering(graph_.get(), &linesOut) != 0)
      failWithReason();
    in_ = std::make_unique<Ring>(from_, linesIn);
    out_ = std::make_unique<Ring>(to_, linesOut);
  }

  /// Bytes of working memory.
  [[nodiscard]] size_t scratch() const { return scratch_; }
  [[nodiscard]] const End &to() const { return to_; }

  void run(Part part, const Channels<const uint8_t> &from, const Channels<uint8_t> &to,
           const View<const uint8_t> *alpha, uint8_t *scratch) const {
    zimg_image_buffer_const source{};
    zimg_image_buffer target{};
    source.version = target.version = ZIMG_API_VERSION;
    const bool fetched = !usable(from, from_), stored = !usable(to, to_);
    for (size_t i = 0; i < in_->planes.size(); ++i) {
      const Ring::Plane &ring = in_->planes[i];
      source.plane[i] = {ring.data, static_cast<ptrdiff_t>(ring.pitch), ring.mask};
      if (!fetched)
        source.plane[i] = {from.views[i].data, static_cast<ptrdiff_t>(from.views[i].pitch), ZIMG_BUFFER_MAX};
    }
    for (size_t i = 0; i < out_->planes.size(); ++i) {
      const Ring::Plane &ring = out_->planes[i];
      target.plane[i] = {ring.data, static_cast<ptrdiff_t>(ring.pitch), ring.mask};
      if (!stored)
        target.plane[i] = {to.views[i].data, static_cast<ptrdiff_t>(to.views[i].pitch), ZIMG_BUFFER_MAX};
    }
    Fetch fetch{&from, in_.get(), part, 1 << from_.format.subsample_h};
    Store store{&to, out_.get(), alpha, 1 << to_.format.subsample_h};
    if (zimg_filter_graph_process(graph_.get(), &source, &target, scratch, fetched ? Fetch::call : nullptr,
                                  &fetch, stored ? Store::call : nullptr, &store) != 0)
      failWithReason();
  }

private:
  struct Free {
    void operator()(zimg_filter_graph *graph) const { zimg_filter_graph_free(graph); }
  };

  End from_, to_;
  std::unique_ptr<zimg_filter_graph, Free> graph_;
  std::unique_ptr<Ring> in_, out_;
  size_t scratch_ = 0;
};

} // namespace

struct Converter::Work {
  struct Field {
    std::unique_ptr<Graph> color, alpha;
  };

  Work(const PictureLayout &source, const PictureLayout &target, Fit fit, uint32_t barBytes)
      : from(source), to(target), placed(target), bars(barBytes), at(place(source, target, fit)),
        scaled(fit != Fit::extend) {
    const PixelFormat &in = from.format, &out = to.format;
    if (!in.packed && !out.packed)
      throw HostError("pictures cannot be converted: neither side is BGRA");
    placed.width = static_cast<int>(at.target.width);
    placed.height = static_cast<int>(at.target.height);
    // Chroma of a quarter of the rows is not interlaced.
    const int shiftY = std::max(in.chromaShiftY, out.chromaShiftY);
    const bool byFields =
        (from.interlaced || to.interlaced) && (shiftY == 1 || (shiftY == 0 && from.height != placed.height));
    for (int i = 0; i < (byFields ? 2 : 1); ++i) {
      Field &field = fields.emplace_back();
      const int count = byFields ? 2 : 1;
      if (placed.height <= i)
        break;
      field.color = graph(Part::Color, i, count);
      if (in.alpha && out.alpha)
        field.alpha = graph(Part::Alpha, i, count);
    }
    size_t largest = 0, largestAlpha = 0;
    for (const Field &field : fields)
      for (const auto &one : {field.color.get(), field.alpha.get()})
        if (one != nullptr)
          largest = std::max(largest, one->scratch());
    scratch = alignedBytes(std::max<size_t>(largest, 1));
    for (const Field &field : fields)
      if (field.alpha && out.packed)
        largestAlpha = std::max(largestAlpha, alphaPitch(*field.alpha) * field.alpha->to().format.height);
    if (largestAlpha > 0)
      alphaPlane = alignedBytes(largestAlpha);
  }

  [[nodiscard]] static size_t alphaPitch(const Graph &graph) {
    return roundUp(graph.to().format.width, kAlignment);
  }

  [[nodiscard]] std::unique_ptr<Graph> graph(Part part, int field, int count) const {
    const PixelFormat &in = from.format, &out = to.format;
    const bool color = part == Part::Color;
    const int inX = color ? in.chromaShiftX : 0, inY = color ? in.chromaShiftY : 0;
    const int outX = color ? out.chromaShiftX : 0, outY = color ? out.chromaShiftY : 0;
    const auto rowsOf = [&](int height) { return std::max((height - field + count - 1) / count, 1); };
    int inWidth = roundUpShift(from.width, inX), inRows = roundUpShift(rowsOf(from.height), inY);
    int outWidth = roundUpShift(placed.width, outX), outRows = roundUpShift(rowsOf(placed.height), outY);
    const bool resized = scaled && (from.width != placed.width || from.height != placed.height ||
                                    at.source.width != from.width || at.source.height != from.height);
    if (!resized) {
      inWidth = outWidth = std::max(roundUpShift(from.width, std::max(inX, outX)),
                                    roundUpShift(placed.width, std::max(inX, outX)));
      inRows = outRows = std::max(roundUpShift(rowsOf(from.height), std::max(inY, outY)),
                                  roundUpShift(rowsOf(placed.height), std::max(inY, outY)));
    }
    const zimg_field_parity_e parity = count == 1   ? ZIMG_FIELD_PROGRESSIVE
                                       : field == 0 ? ZIMG_FIELD_TOP
                                                    : ZIMG_FIELD_BOTTOM;
    const bool grey = in.family == ColorFamily::Grey;
    End source = endOf(from, part, grey, inWidth, inRows, parity);
    const End target = endOf(to, part, grey, outWidth, outRows, parity);
    if (resized) {
      // The rows and columns that make a size even reach beyond the picture by as much at both ends.
      source.format.active_region.left = at.source.x;
      source.format.active_region.top = at.source.y / count;
      source.format.active_region.width = at.source.width * outWidth / placed.width;
      source.format.active_region.height = at.source.height * outRows / placed.height;
    }
    return std::make_unique<Graph>(source, target);
  }

  void drawBars(uint8_t *picture) const {
    const auto left = static_cast<int>(at.target.x), top = static_cast<int>(at.target.y);
    const auto fill = [&](int y, int begin, int end) {
      uint8_t *pixel =
          picture + 4 * (static_cast<size_t>(y) * static_cast<size_t>(to.width) + static_cast<size_t>(begin));
      for (int x = begin; x < end; ++x, pixel += 4)
        std::memcpy(pixel, &bars, 4);
    };
    for (int y = 0; y < to.height; ++y) {
      const bool beside = y >= top && y < top + placed.height;
      fill(y, 0, beside ? left : to.width);
      if (beside)
        fill(y, left + placed.width, to.width);
    }
  }

  PictureLayout from, to;
  PictureLayout placed; ///< The part of `to` that the picture fills.
  uint32_t bars;
  Placement at;
  bool scaled;
  std::vector<Field> fields;
  AlignedBytes scratch, alphaPlane;
};

bool Converter::available() { return true; }

Converter::Converter(const PictureLayout &from, const PictureLayout &to, Fit fit, uint32_t bars)
    : work_(std::make_unique<Work>(from, to, fit, bars)) {}

void Converter::convert(const uint8_t *from, uint8_t *to) {
  const Work &work = *work_;
  const bool barred = work.placed.width != work.to.width || work.placed.height != work.to.height;
  if (barred)
    work.drawBars(to);
  const auto count = static_cast<int>(work.fields.size());
  for (int i = 0; i < count; ++i) {
    const Work::Field &field = work.fields[static_cast<size_t>(i)];
    if (!field.color)
      continue;
    const auto target = [&](Part part) {
      Channels<uint8_t> channels = channelsOf(work.to, part, to, i, count);
      if (barred) {
        View<uint8_t> &view = channels.views[0];
        view.data += (static_cast<size_t>(work.at.target.y) * static_cast<size_t>(work.to.width) +
                      static_cast<size_t>(work.at.target.x)) *
                     4;
        view.columns = work.placed.width;
        view.rows = (work.placed.height - i + count - 1) / count;
      }
      return channels;
    };
    View<const uint8_t> alpha{};
    if (field.alpha) {
      const auto source = channelsOf(work.from, Part::Alpha, from, i, count);
      if (work.to.format.packed) {
        const zimg_image_format &size = field.alpha->to().format;
        const size_t pitch = Work::alphaPitch(*field.alpha);
        const Channels<uint8_t> plane{false,
                                      1,
                                      {{work.alphaPlane.get(), pitch, static_cast<int>(size.width),
                                        static_cast<int>(size.height), 0, 0}}};
        field.alpha->run(Part::Alpha, source, plane, nullptr, work.scratch.get());
        alpha = {work.alphaPlane.get(),         pitch, static_cast<int>(size.width),
                 static_cast<int>(size.height), 0,     0};
      } else {
        field.alpha->run(Part::Alpha, source, target(Part::Alpha), nullptr, work.scratch.get());
      }
    }
    field.color->run(Part::Color, channelsOf(work.from, Part::Color, from, i, count), target(Part::Color),
                     alpha.data != nullptr ? &alpha : nullptr, work.scratch.get());
  }
}
#else
struct Converter::Work {};

bool Converter::available() { return false; }

Converter::Converter(const PictureLayout &, const PictureLayout &, Fit, uint32_t) {
  throw HostError("pictures cannot be converted: this program was built without zimg");
}

void Converter::convert(const uint8_t *, uint8_t *) {}
#endif

Converter::~Converter() = default;
Converter::Converter(Converter &&) noexcept = default;
Converter &Converter::operator=(Converter &&) noexcept = default;

} // namespace zol::host
