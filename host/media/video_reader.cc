#include "host/media/video_reader.h"

#include "host/model/text.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace zol::host {
namespace {

constexpr int kLargestSide = 32767; // pictures have 16-bit sizes
constexpr double kFastest = 1000;
constexpr Rational kStillRate = 25;
constexpr double kJump = 10; // seconds ahead from which on a seek is cheaper than reading on

void checkSize(const Source &source, int width, int height) {
  if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide)
    throw HostError("cannot read " + source.name() + ": pictures of " + std::to_string(width) + "x" +
                    std::to_string(height) + " are not possible");
}

void checkRate(const Source &source, Rational rate) {
  if (!(rate.value() > 0 && rate.value() <= kFastest))
    throw HostError("cannot read " + source.name() + ": a frame rate of " + numberText(rate.value()) +
                    " is not possible");
}

/// How far before the wanted time to seek, so that decoding surely begins before it.
double seekMargin(const std::string &format) {
  for (const char *indexed : {"mov", "matroska", "avi", "nut", "rawvideo", "gif"})
    if (format.starts_with(indexed))
      return 0.5;
  return 12; // found by guessing positions: a group of pictures or more
}

std::string sizeText(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

} // namespace

VideoReader::VideoReader(Source source, VideoReaderOptions options)
    : source_(std::move(source)), options_(std::move(options)) {
  options_.window = std::max<size_t>(options_.window, 1);
  if (!(std::isfinite(options_.start) && options_.start >= 0))
    throw HostError("cannot read " + source_.name() + " from " + numberText(options_.start) + " seconds on");
  if (options_.raw) {
    checkSize(source_, options_.rawWidth, options_.rawHeight);
    checkRate(source_, options_.rawRate);
    info_.format = info_.videoCodec = "rawvideo";
    info_.hasVideo = info_.alpha = true;
    info_.width = options_.rawWidth;
    info_.height = options_.rawHeight;
    info_.frameRate = options_.rawRate;
  } else {
    info_ = source_.look(options_.programs);
    if (!info_.hasVideo)
      throw HostError("cannot read " + source_.name() + ": no pictures in it");
    checkSize(source_, info_.width, info_.height);
  }
  if (options_.width == 0 && options_.height == 0) {
    options_.width = info_.width;
    options_.height = info_.height;
  }
  checkSize(source_, options_.width, options_.height);
  if (options_.rate.num == 0)
    options_.rate = info_.still ? kStillRate : info_.frameRate;
  checkRate(source_, options_.rate);
}

VideoReader::~VideoReader() = default;

void VideoReader::scaleTo(const Raster &raster, Fit fit) {
  checkSize(source_, raster.width, raster.height);
  options_.width = raster.width;
  options_.height = raster.height;
  options_.pixelAspect = raster.pixelAspect;
  options_.fit = fit;
}

/// The filters that make frames of pictures.
std::string VideoReader::scaling() const {
  const auto [width, height] =
      fittedSize({info_.width, info_.height, info_.pixelAspect},
                 {options_.width, options_.height, options_.pixelAspect}, options_.fit);
  std::string filters = "scale=" + std::to_string(width) + ":" + std::to_string(height) +
                        ":flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp";
  if (info_.untaggedHd)
    filters += ":in_color_matrix=bt709";
  filters += ",format=bgra";
  if (width == options_.width && height == options_.height)
    return filters;
  const std::string whole = std::to_string(options_.width) + ":" + std::to_string(options_.height);
  return filters + (options_.fit == Fit::crop
                        ? ",crop=" + whole + ":exact=1"
                        : ",pad=" + whole + ":(ow-iw)/2:(oh-ih)/2:black@" + (info_.alpha ? "0" : "1"));
}

/// Times stay those of the file, counted from its beginning (-copyts -start_at_zero), and after a seek all
/// frames from the key frame on are used (-noaccurate_seek): so the fps filter rounds the same times in the
/// same way wherever reading begins, and trim counts the same frames.
std::vector<std::string> VideoReader::arguments(size_t first) const {
  std::vector<std::string> args{options_.programs.ffmpeg, "-v", "error", "-nostdin"};
  const auto add = [&](std::initializer_list<std::string> more) { args.insert(args.end(), more); };
  if (options_.raw)
    add({"-f", "rawvideo", "-pixel_format", "bgra", "-video_size",
         sizeText(options_.rawWidth, options_.rawHeight), "-framerate", options_.rawRate.text()});
  if (!info_.still) {
    add({"-copyts", "-start_at_zero"});
    const double seek = options_.start + timeOf(first, options_.rate) - seekMargin(info_.format);
    if (seek > 0 && !source_.isStream())
      add({"-noaccurate_seek", "-ss", numberText(seek)});
  }
  if (info_.alpha && (info_.videoCodec == "vp8" || info_.videoCodec == "vp9"))
    add({"-c:v", info_.videoCodec == "vp8" ? "libvpx" : "libvpx-vp9"}); // the built-in decoders drop alpha
  add({"-i", source_.url(), "-map", "0:V:0"});

  std::string filters;
  if (!info_.still) {
    filters += "fps=fps=" + options_.rate.text() + ":start_time=" + numberText(options_.start) + ",";
    if (first > 0)
      filters += "trim=start_frame=" + std::to_string(first) + ",";
  }
  add({"-vf", filters + scaling(), "-fps_mode", "passthrough"});
  if (info_.still)
    add({"-frames:v", "1"});
  add({"-f", "rawvideo", "-pix_fmt", "bgra", "pipe:1"});
  return args;
}

std::string VideoReader::commandLine() const { return shellQuoted(arguments(0)); }

void VideoReader::open(size_t first) {
  process_.reset();
  recent_.clear();
  process_ = source_.start(arguments(first));
  next_ = first;
}

/// Takes the next frame from the child; false at its end.
bool VideoReader::readNext() {
  std::shared_ptr<Frame> frame = std::move(spare_);
  if (!frame) {
    frame = std::make_shared<Frame>();
    frame->width = options_.width;
    frame->height = options_.height;
    frame->pixels.resize(size_t{4} * static_cast<size_t>(options_.width) *
                         static_cast<size_t>(options_.height));
  }
  const size_t size = frame->pixels.size();
  const size_t got = process_->read(frame->pixels.data(), size);
  if (got < size) {
    if (process_->wait() != 0)
      throw source_.failure(*process_);
    if (got > 0)
      throw HostError("cannot read " + source_.name() + ": a picture broke off");
    process_.reset();
    return false;
  }
  recent_.push_back(std::move(frame));
  ++next_;
  if (recent_.size() > options_.window) {
    if (recent_.front().use_count() == 1)
      spare_ = std::move(recent_.front());
    recent_.pop_front();
  }
  return true;
}

/// Reads to the end from the last place before it that yields a frame.
void VideoReader::findEnd(size_t behind) {
  const HostError nothing("cannot read " + source_.name() + ": no pictures could be decoded");
  if (source_.isStream() || info_.still)
    throw nothing;
  const double known = (info_.duration - options_.start) * options_.rate.value();
  const auto end = static_cast<size_t>(std::clamp(known, 0.0, static_cast<double>(behind)));
  for (const double back : {1.0, 15.0, 0.0}) {
    const auto step = static_cast<size_t>(std::ceil(back * options_.rate.value()));
    open(back > 0 && end > step ? end - step : 0);
    while (readNext()) {
    }
    if (!recent_.empty())
      break;
  }
  if (recent_.empty())
    throw nothing;
}

std::shared_ptr<const Frame> VideoReader::at(size_t index) try {
  if (count_ && index >= *count_)
    return last_;
  const bool behind = index + recent_.size() < next_;
  const bool farAhead = !source_.isStream() && static_cast<double>(index) - static_cast<double>(next_) >
                                                   kJump * options_.rate.value();
  if (!info_.still && (behind || farAhead))
    open(index);
  else if (!process_ && next_ == 0)
    open(0);
  while (next_ <= index) {
    if (process_ && readNext() && !info_.still)
      continue;
    if (recent_.empty())
      findEnd(index);
    count_ = next_;
    last_ = recent_.back();
    process_.reset();
    if (index >= *count_)
      return last_;
  }
  return recent_[recent_.size() - std::min(recent_.size(), next_ - index)];
} catch (const std::bad_alloc &) {
  throw HostError("cannot read " + source_.name() + ": not enough memory for pictures of " +
                  sizeText(options_.width, options_.height));
}

} // namespace zol::host
