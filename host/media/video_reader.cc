#include "host/media/video_reader.h"

#include "host/media/zscale.h"
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
    info_.pixels = kBgra;
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

void VideoReader::scaleTo(int width, int height, double pixelAspect, Fit fit) {
  checkSize(source_, width, height);
  options_.width = width;
  options_.height = height;
  options_.pixelAspect = pixelAspect;
  options_.fit = fit;
}

PictureLayout VideoReader::frameLayout() const {
  return {.width = options_.width, .height = options_.height, .pixelAspect = options_.pixelAspect};
}

/// As pictures come out of the decoder, turned.
PictureLayout VideoReader::sourceLayout() const {
  PictureLayout layout{info_.pixels, info_.width,      info_.height,
                       info_.coding, info_.interlaced, info_.pixelAspect};
  if (info_.turned || info_.orientation != 1) { // the places of chroma and fields are turned too
    layout.coding.site = ChromaSite::Center;
    layout.interlaced = false;
    if (layout.format.chromaShiftX != layout.format.chromaShiftY)
      layout.format.chromaShiftX = layout.format.chromaShiftY = 0;
  }
  return layout;
}

PictureLayout VideoReader::pipeLayout() const {
  return Converter::available() ? sourceLayout() : frameLayout();
}

/// The filters that bring all pictures to what the pipe carries. They do nothing to those that are as the
/// file says.
std::string VideoReader::scaling() const {
  const auto pair = [](double a, double b) {
    return std::to_string(std::lround(a)) + ':' + std::to_string(std::lround(b));
  };
  const auto scale = [&](const PictureLayout &to) {
    return "scale=" + pair(to.width, to.height) +
           ":flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp,format=" + to.format.name();
  };
  const PictureLayout own = sourceLayout(), pipe = pipeLayout();
  if (Converter::available())
    return scale(pipe);
  const auto [source, target] = place(own, pipe, options_.fit);
  PictureLayout part = own, placed = pipe;
  const bool cut = source.width < own.width || source.height < own.height;
  part.width = static_cast<int>(std::lround(source.width));
  part.height = static_cast<int>(std::lround(source.height));
  placed.width = static_cast<int>(target.width);
  placed.height = static_cast<int>(target.height);
  const bool wholeChroma = part.format.roundedWidth(part.width) == part.width &&
                           part.format.roundedHeight(part.height) == part.height;
  const bool exact =
      own.format.family == ColorFamily::Yuv && !own.interlaced && wholeChroma && hasZscale(options_.programs);
  std::string filters = exact ? scale(own) + ',' : "";
  if (cut)
    filters += "crop=" + pair(source.width, source.height) + ':' + pair(source.x, source.y) + ":exact=1,";
  filters += exact ? zscaleFilters(part, placed) : scale(placed);
  if (target.width < pipe.width || target.height < pipe.height)
    filters += ",pad=" + pair(pipe.width, pipe.height) + ':' + pair(target.x, target.y) + ":black@" +
               (info_.alpha ? "0" : "1");
  return filters;
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

double VideoReader::duration() const {
  if (info_.guessed || info_.still)
    return 0;
  return std::max(0.0, std::min(options_.end.value_or(info_.duration), info_.duration) - options_.start);
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
  add({"-vf", filters + scaling(), "-fps_mode", "passthrough"});
  if (info_.still)
    add({"-frames:v", "1"});
  add({"-f", "rawvideo", "-pix_fmt", pipeLayout().format.name(), "pipe:1"});
  if (!soundFile_.empty()) // -y: the file is there already
    add({"-map", "0:a:0", "-af", "aresample=async=1:first_pts=0", "-ar", std::to_string(info_.sampleRate),
         "-ac", std::to_string(info_.channels), "-f", "f32le", "-y", fileUrl(soundFile_)});
  return args;
}

std::string VideoReader::commandLine() const { return shellQuoted(arguments(0)); }

FrameFormat VideoReader::format() const {
  return {pipeLayout(), frameLayout(), options_.fit, info_.alpha ? 0 : 0xFF000000};
}

/// `stretch`: all that will be kept of it is read before any of it is shown.
void VideoReader::open(Cursor &cursor, size_t first, bool stretch) {
  cursor.stream.reset();
  cursor.recent.clear();
  if (!pool_)
    pool_ = std::make_shared<FramePool>(options_.width, options_.height);
  cursor.stream = std::make_unique<FrameStream>(source_.start(arguments(first)),
                                                first > 0 || options_.start > 0, format(), pool_, stretch);
  cursor.window = stretch ? widestWindow(pipeLayout().bytes()) : options_.window;
  cursor.next = first;
}

/// Takes the next frame from the stream; false at its end.
bool VideoReader::readNext(Cursor &cursor) {
  std::optional<HeardFrame> heard = cursor.stream->next();
  if (!heard) {
    Process &child = cursor.stream->child();
    if (child.wait() != 0)
      throw source_.failure(child);
    if (cursor.stream->brokeOff())
      throw HostError("cannot read " + source_.name() + ": a picture broke off");
    checkEnd(cursor);
    cursor.stream.reset();
    return false;
  }
  cursor.recent.push_back({cursor.next++, std::move(heard->frame), std::move(heard->packed)});
  tellDamage(heard->said, cursor.next + heard->ahead);
  while (cursor.recent.size() > cursor.window)
    cursor.recent.pop_front();
  return true;
}

/// What a child said concerns a frame that is not known exactly.
void VideoReader::tellDamage(const std::string &said, size_t index) {
  if (said.empty() || (source_.sequence() && source_.sequence()->goesOn))
    return; // of a sequence with a gap ffmpeg complains of that alone
  damage_.heard(said, source_.address().url,
                info_.still ? std::nullopt : std::optional(options_.start + timeOf(index, options_.rate)));
}

/// Tells of pictures that should have come before the end.
void VideoReader::checkEnd(Cursor &cursor) {
  if (cursor.recent.empty())
    return;
  tellDamage(cursor.stream->lastWords(), cursor.next);
  constexpr double kTolerance = 0.5; // seconds; containers are not exact
  const double time = options_.start + timeOf(cursor.next, options_.rate);
  const double expected = options_.end ? std::min(*options_.end, info_.duration) : info_.duration;
  if (!info_.guessed && time < expected - kTolerance - 2 * timeOf(1, options_.rate))
    damage_.endedEarly(time, info_.duration);
  if (!options_.end && cursor.next == limit())
    damage_.goesOn(info_.duration);
}

/// Reads to the end from the last place before it that yields a frame.
void VideoReader::findEnd(Cursor &cursor, size_t behind) {
  const HostError nothing("cannot read " + source_.name() + ": no pictures could be decoded");
  if (source_.isStream() || info_.still)
    throw nothing;
  const double known = (options_.end.value_or(info_.duration) - options_.start) * options_.rate.value();
  const auto end = static_cast<size_t>(std::clamp(known, 0.0, static_cast<double>(behind)));
  for (const double back : {1.0, 15.0, 0.0}) {
    const auto step = static_cast<size_t>(std::ceil(back * options_.rate.value()));
    open(cursor, back > 0 && end > step ? end - step : 0);
    while (readNext(cursor)) {
    }
    if (!cursor.recent.empty())
      break;
  }
  if (cursor.recent.empty())
    throw nothing;
}

std::shared_ptr<const Frame> VideoReader::frameOf(const Known &known) {
  if (known.packed == nullptr)
    return known.frame;
  if (!unpacking_) {
    const FrameFormat made = format();
    unpacking_.emplace(made.pipe, made.frames, made.fit, made.bars);
  }
  std::shared_ptr<Frame> frame = pool_->take();
  unpacking_->convert(known.packed.get(), frame->pixels.data());
  return frame;
}

std::shared_ptr<const Frame> VideoReader::known(size_t index) {
  const auto in = [&](const std::deque<Known> &frames) -> std::shared_ptr<const Frame> {
    const auto found =
        std::find_if(frames.begin(), frames.end(), [&](const Known &one) { return one.index == index; });
    return found == frames.end() ? nullptr : frameOf(*found);
  };
  if (auto frame = in(asked_))
    return frame;
  for (const Cursor &cursor : cursors_)
    if (auto frame = in(cursor.recent))
      return frame;
  return nullptr;
}

/// Frames beyond which keeping them costs more than reading them again.
size_t VideoReader::widestWindow(size_t frameBytes) const {
  constexpr size_t kBytes = size_t{256} << 20, kMost = 512;
  return std::clamp(kBytes / frameBytes, options_.window, std::max(options_.window, kMost));
}

/// Begins anew before a frame that lies behind what the cursor keeps. The first time it is a step that a
/// wider window could have spared: next time it does. From the second one on it goes backwards.
void VideoReader::stepBack(Cursor &cursor, size_t index) {
  const bool backwards = ++cursor.stepsBack > 1;
  if (!backwards)
    options_.window = std::clamp(std::max(2 * options_.window, cursor.next - index), options_.window,
                                 widestWindow(frameLayout().bytes()));
  const size_t length = backwards ? widestWindow(pipeLayout().bytes()) : options_.window;
  open(cursor, index - std::min(index, length - 1), backwards);
}

/// One that will yield the frame: on its way there, or begun anew.
VideoReader::Cursor &VideoReader::cursorFor(size_t index) {
  const auto farthest = static_cast<size_t>(std::ceil(kJump * options_.rate.value()));
  const auto willYield = [&](const Cursor &cursor) {
    return cursor.stream && cursor.next <= index && (source_.isStream() || index - cursor.next <= farthest);
  };
  Cursor *best = nullptr;
  for (Cursor &cursor : cursors_)
    if (willYield(cursor) && (best == nullptr || cursor.next > best->next))
      best = &cursor;
  if (best != nullptr) {
    best->stepsBack = 0;
    return *best;
  }
  for (Cursor &cursor : cursors_) {
    const size_t kept = cursor.recent.empty() ? 0 : cursor.recent.front().index;
    if (kept > index && kept - index <= widestWindow(frameLayout().bytes())) {
      stepBack(cursor, index);
      return cursor;
    }
  }
  constexpr size_t kMostCursors = 3;
  if (best == nullptr && cursors_.size() < kMostCursors)
    best = &cursors_.emplace_back();
  if (best == nullptr)
    best = &*std::min_element(cursors_.begin(), cursors_.end(),
                              [](const Cursor &a, const Cursor &b) { return a.used < b.used; });
  best->stepsBack = 0;
  open(*best, index);
  return *best;
}

std::shared_ptr<const Frame> VideoReader::read(size_t index) {
  Cursor &cursor = cursorFor(index);
  cursor.used = ++clock_;
  while (cursor.next <= index) {
    if (cursor.stream && readNext(cursor) && !info_.still)
      continue;
    if (cursor.recent.empty())
      findEnd(cursor, index);
    count_ = cursor.next;
    last_ = frameOf(cursor.recent.back());
    cursor.stream.reset();
    if (index >= *count_)
      return last_;
  }
  const auto frame = known(index);
  return frame != nullptr ? frame : frameOf(cursor.recent.front()); // damage may leave nothing nearer
}

bool VideoReader::reaches(size_t index) {
  if (!count_)
    (void)at(index);
  return !count_ || index < *count_;
}

void VideoReader::prepare(size_t index) {
  if (cursors_.empty())
    open(cursors_.emplace_back(), info_.still ? 0 : index);
}

std::shared_ptr<const Frame> VideoReader::at(size_t index) try {
  if (count_ && index >= *count_)
    return last_;
  constexpr size_t kAsked = 4;
  auto frame = known(index);
  if (frame == nullptr)
    frame = read(index);
  std::erase_if(asked_, [&](const Known &one) { return one.index == index; });
  asked_.push_back({index, frame});
  if (asked_.size() > kAsked)
    asked_.pop_front();
  return frame;
} catch (const std::bad_alloc &) {
  throw HostError("cannot read " + source_.name() + ": not enough memory for pictures of " +
                  sizeText(options_.width, options_.height));
}

} // namespace zol::host
