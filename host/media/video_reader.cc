#include "host/media/video_reader.h"

#include "host/model/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <utility>

namespace zol::host {
namespace {

constexpr double kFastest = 1000;
constexpr Rational kStillRate = 25;
constexpr double kJump = 10; // seconds ahead from which on a seek is cheaper than reading on

void checkSize(const Source &source, int width, int height) {
  if (!isPictureSize(width, height))
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

/// Brings a picture of that orientation upright.
std::string turningFilters(int orientation) {
  constexpr std::array kFilters{
      "", "hflip,", "hflip,vflip,", "vflip,", "transpose=0,", "transpose=1,", "transpose=3,", "transpose=2,"};
  return kFilters.at(static_cast<size_t>(orientation - 1));
}

std::string sizeText(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

} // namespace

VideoReader::VideoReader(Source source, VideoReaderOptions options)
    : source_(std::move(source)), options_(std::move(options)),
      damage_('"' + source_.name() + '"', options_.strict) {
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

void VideoReader::scaleTo(int width, int height) {
  checkSize(source_, width, height);
  options_.width = width;
  options_.height = height;
}

void VideoReader::setRate(Rational rate) {
  checkRate(source_, rate);
  options_.rate = rate;
}

/// Frame 0 as the fps filter counts. At the file's own rate frames keep their distance from its pictures' own
/// times, which may lie anywhere between: no error of these times then moves a picture into another's place.
double VideoReader::gridStart() const {
  const double frames = (info_.firstPicture - options_.start) * options_.rate.value();
  return options_.start +
         (options_.rate == info_.frameRate ? (frames - std::round(frames)) / options_.rate.value() : 0);
}

/// The frames that there are at most.
std::optional<size_t> VideoReader::limit() const {
  const bool told = !info_.guessed && info_.duration > 0;
  if (!options_.end && !told)
    return std::nullopt;
  constexpr double kSlack = 1e-6; // of a frame
  const double end = options_.end.value_or(info_.duration + kMostBehindEnd);
  return static_cast<size_t>(
      std::max(1.0, std::ceil((end - options_.start) * options_.rate.value() - kSlack)));
}

/// Times stay those of the file, counted from its beginning (-copyts -start_at_zero), and after a seek all
/// frames from the key frame on are used (-noaccurate_seek): so the fps filter rounds the same times in the
/// same way wherever reading begins, and trim counts the same frames. Where the file's times say nothing of
/// the kind, reading begins at its beginning, and ffmpeg makes times that go on.
std::vector<std::string> VideoReader::arguments(size_t first) const {
  std::vector<std::string> args{options_.programs.ffmpeg, "-v", "error", "-nostdin"};
  const auto add = [&](std::initializer_list<std::string> more) { args.insert(args.end(), more); };
  if (options_.raw)
    add({"-f", "rawvideo", "-pixel_format", "bgra", "-video_size",
         sizeText(options_.rawWidth, options_.rawHeight), "-framerate", options_.rawRate.text()});
  if (info_.orientation != 1)
    add({"-noautorotate"});
  if (!info_.still && info_.seekable) {
    add({"-copyts", "-start_at_zero"});
    const double seek = options_.start + timeOf(first, options_.rate) - seekMargin(info_.format);
    if (seek > 0 && !source_.isStream())
      add({"-noaccurate_seek", "-ss", numberText(seek)});
  }
  if (info_.alpha && (info_.videoCodec == "vp8" || info_.videoCodec == "vp9"))
    add({"-c:v", info_.videoCodec == "vp8" ? "libvpx" : "libvpx-vp9"}); // the built-in decoders drop alpha
  const std::vector<std::string> input = source_.arguments();
  args.insert(args.end(), input.begin(), input.end());
  add({"-map", "0:V:0"});

  std::string filters = turningFilters(info_.orientation);
  if (!info_.still) {
    filters += "fps=fps=" + options_.rate.text() + ":start_time=" + numberText(gridStart()) + ",";
    filters += "trim=start_frame=" + std::to_string(first);
    if (const auto frames = limit())
      filters += ":end_frame=" + std::to_string(*frames);
    filters += ",";
  }
  filters += "scale=" + std::to_string(options_.width) + ":" + std::to_string(options_.height) +
             ":flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp";
  if (info_.untaggedHd)
    filters += ":in_color_matrix=bt709";
  add({"-vf", filters + ",format=bgra", "-fps_mode", "passthrough"});
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
  damage_.begin(first > 0 || options_.start > 0);
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
    checkEnd();
    process_.reset();
    return false;
  }
  recent_.push_back(std::move(frame));
  ++next_;
  listen();
  if (recent_.size() > options_.window) {
    if (recent_.front().use_count() == 1)
      spare_ = std::move(recent_.front());
    recent_.pop_front();
  }
  return true;
}

/// What the child says concerns pictures behind those that still stand in the pipe.
void VideoReader::listen() {
  if (source_.sequence() && source_.sequence()->goesOn)
    return; // ffmpeg complains of the gap alone
  const size_t frame = recent_.back()->pixels.size();
  const size_t ahead = process_->waiting() / frame;
  damage_.listen(*process_, source_.address().url,
                 info_.still ? std::nullopt
                             : std::optional(options_.start + timeOf(next_ + ahead, options_.rate)));
}

/// Tells of pictures that should have come before the end.
void VideoReader::checkEnd() {
  if (recent_.empty())
    return;
  listen();
  constexpr double kTolerance = 0.5; // seconds; containers are not exact
  const double time = options_.start + timeOf(next_, options_.rate);
  const double expected = options_.end ? std::min(*options_.end, info_.duration) : info_.duration;
  if (!info_.guessed && time < expected - kTolerance - 2 * timeOf(1, options_.rate))
    damage_.endedEarly(time, info_.duration);
  if (!options_.end && next_ == limit())
    damage_.goesOn(info_.duration);
}

/// Reads to the end from the last place before it that yields a frame.
void VideoReader::findEnd(size_t behind) {
  const HostError nothing("cannot read " + source_.name() + ": no pictures could be decoded");
  if (source_.isStream() || info_.still)
    throw nothing;
  const double known = (options_.end.value_or(info_.duration) - options_.start) * options_.rate.value();
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

bool VideoReader::reaches(size_t index) {
  if (!count_)
    (void)at(index);
  return !count_ || index < *count_;
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
