#include "host/media/writer.h"

#include "host/model/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

constexpr int kLargestSide = 32767;
constexpr size_t kMostQueued = size_t{64} << 20;

enum class Kind { Still, Sound, Moving };

/// How pictures become those of the format. All but Asis are options of the filter chain.
enum class Pixels {
  Asis,     // ffmpeg chooses
  Rgba,     // as they are, with alpha
  Palette,  // a palette for each frame
  Jpeg,     // full-range 4:4:4
  Yuv420,   // BT.709, even sizes
  Plain420, // untagged: the matrix that players suppose for the size, even sizes
  Yuva420,  // the same with alpha
  Yuva444   // BT.709, 10 bits, with alpha
};

struct Format {
  std::string_view extension;
  Kind kind;
  Pixels pixels;
  std::string_view video; ///< Options of the picture encoder.
  std::string_view sound; ///< Options of the sound encoder.
};

constexpr std::string_view kH264 = "-c:v libx264 -preset medium -crf 17";
constexpr std::string_view kAac = "-c:a aac -b:a 256k";
constexpr std::string_view kFloat = "-c:a pcm_f32le";

constexpr Format kFormats[] = {
    {"png", Kind::Still, Pixels::Rgba, "-c:v png -pred mixed", ""},
    {"tif", Kind::Still, Pixels::Rgba, "-c:v tiff -compression_algo deflate", ""},
    {"tiff", Kind::Still, Pixels::Rgba, "-c:v tiff -compression_algo deflate", ""},
    {"tga", Kind::Still, Pixels::Rgba, "-c:v targa", ""},
    {"bmp", Kind::Still, Pixels::Asis, "-c:v bmp", ""},
    {"jpg", Kind::Still, Pixels::Jpeg, "-c:v mjpeg -q:v 2", ""},
    {"jpeg", Kind::Still, Pixels::Jpeg, "-c:v mjpeg -q:v 2", ""},
    {"webp", Kind::Still, Pixels::Rgba, "-c:v libwebp -quality 92", ""},
    {"ppm", Kind::Still, Pixels::Asis, "", ""},
    {"pgm", Kind::Still, Pixels::Asis, "", ""},
    {"pam", Kind::Still, Pixels::Rgba, "", ""},
    {"exr", Kind::Still, Pixels::Asis, "", ""},
    {"jp2", Kind::Still, Pixels::Rgba, "", ""},
    {"jxl", Kind::Still, Pixels::Rgba, "", ""},
    {"sgi", Kind::Still, Pixels::Rgba, "", ""},
    {"pcx", Kind::Still, Pixels::Asis, "", ""},

    {"mp4", Kind::Moving, Pixels::Yuv420, kH264, kAac},
    {"m4v", Kind::Moving, Pixels::Yuv420, kH264, kAac},
    {"mov", Kind::Moving, Pixels::Yuva444, "-c:v prores_ks -profile:v 4444 -vendor apl0", "-c:a pcm_f32le"},
    {"webm", Kind::Moving, Pixels::Yuva420,
     "-c:v libvpx-vp9 -crf 24 -b:v 0 -deadline good -cpu-used 4 -row-mt 1 -auto-alt-ref 0",
     "-c:a libopus -b:a 192k"},
    {"mkv", Kind::Moving, Pixels::Rgba, "-c:v ffv1 -level 3 -g 1 -slicecrc 1", kFloat},
    {"avi", Kind::Moving, Pixels::Plain420, "-c:v mpeg4 -q:v 2", "-c:a pcm_s16le"},
    {"gif", Kind::Moving, Pixels::Palette, "-c:v gif", ""},
    {"apng", Kind::Moving, Pixels::Rgba, "-c:v apng -plays 0", ""},
    {"nut", Kind::Moving, Pixels::Rgba, "-c:v rawvideo", kFloat},
    {"ts", Kind::Moving, Pixels::Yuv420, kH264, kAac},
    {"mpg", Kind::Moving, Pixels::Yuv420, "-c:v mpeg2video -q:v 2", "-c:a mp2 -b:a 320k"},
    {"flv", Kind::Moving, Pixels::Yuv420, kH264, kAac},

    {"wav", Kind::Sound, Pixels::Asis, "", "-c:a pcm_f32le -rf64 auto"},
    {"w64", Kind::Sound, Pixels::Asis, "", kFloat},
    {"caf", Kind::Sound, Pixels::Asis, "", kFloat},
    {"aif", Kind::Sound, Pixels::Asis, "", "-c:a pcm_f32be"},
    {"aiff", Kind::Sound, Pixels::Asis, "", "-c:a pcm_f32be"},
    {"au", Kind::Sound, Pixels::Asis, "", "-c:a pcm_f32be"},
    {"flac", Kind::Sound, Pixels::Asis, "", "-c:a flac -sample_fmt s32 -bits_per_raw_sample 24"},
    {"mp3", Kind::Sound, Pixels::Asis, "", "-c:a libmp3lame -q:a 0"},
    {"ogg", Kind::Sound, Pixels::Asis, "", "-c:a libvorbis -q:a 8"},
    {"oga", Kind::Sound, Pixels::Asis, "", "-c:a libvorbis -q:a 8"},
    {"opus", Kind::Sound, Pixels::Asis, "", "-c:a libopus -b:a 192k"},
    {"m4a", Kind::Sound, Pixels::Asis, "", kAac},
    {"aac", Kind::Sound, Pixels::Asis, "", kAac},
    {"wv", Kind::Sound, Pixels::Asis, "", "-c:a wavpack -sample_fmt fltp"},
    {"ac3", Kind::Sound, Pixels::Asis, "", "-c:a ac3 -b:a 448k"},
    {"mp2", Kind::Sound, Pixels::Asis, "", "-c:a mp2 -b:a 320k"},
};

constexpr Format kOther{"", Kind::Moving, Pixels::Asis, "", ""};

const Format &formatOf(const std::string &file) {
  std::string extension = fs::path(file).extension().string();
  for (char &c : extension)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const Format &format : kFormats)
    if (extension.size() == format.extension.size() + 1 && extension.ends_with(format.extension))
      return format;
  return kOther;
}

void addWords(std::vector<std::string> &args, std::string_view words) {
  while (!words.empty()) {
    const size_t end = std::min(words.find(' '), words.size());
    args.emplace_back(words.substr(0, end));
    words.remove_prefix(std::min(end + 1, words.size()));
  }
}

/// Repeats the last column and row where 4:2:0 needs even sizes.
std::string evenSize(int width, int height) {
  const int right = width % 2, bottom = height % 2;
  if (right == 0 && bottom == 0)
    return {};
  return "format=gbrap,pad=" + std::to_string(width + right) + ":" + std::to_string(height + bottom) +
         ",fillborders=right=" + std::to_string(right) + ":bottom=" + std::to_string(bottom) + ":mode=smear,";
}

std::string filtersFor(Pixels pixels, int width, int height) {
  const auto convert = [](const char *range, const char *matrix, const char *format) {
    return std::string("scale=out_range=") + range + ":out_color_matrix=" + matrix +
           ":flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp,format=" + format;
  };
  const bool highDefinition = width >= 1280 || height >= 720;
  // Some encoders look at the frames alone, some files at the options alone: both name the colours.
  const char *const named = ",setparams=colorspace=bt709:color_primaries=bt709:color_trc=bt709:range=tv";
  switch (pixels) {
  case Pixels::Asis:
  case Pixels::Rgba: return {};
  case Pixels::Palette:
    return "split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=new=1:dither=sierra2_4a";
  case Pixels::Jpeg: return convert("pc", "bt601", "yuvj444p");
  case Pixels::Yuv420: return evenSize(width, height) + convert("tv", "bt709", "yuv420p") + named;
  case Pixels::Plain420:
    return evenSize(width, height) + convert("tv", highDefinition ? "bt709" : "bt601", "yuv420p");
  case Pixels::Yuva420: return evenSize(width, height) + convert("tv", "bt709", "yuva420p") + named;
  case Pixels::Yuva444: return convert("tv", "bt709", "yuva444p10le") + named;
  }
  return {};
}

bool isBt709(Pixels pixels) {
  return pixels == Pixels::Yuv420 || pixels == Pixels::Yuva420 || pixels == Pixels::Yuva444;
}

/// The name that the unfinished file has: in the same folder, hidden, with the same extension.
fs::path partialName(const fs::path &target) {
  constexpr size_t kKeptOfName = 200; // the name must not become too long
  std::random_device random;
  std::string name(1, '.');
  name.append(target.stem().string(), 0, kKeptOfName).append(1, '.');
  for (int i = 0; i < 12; ++i)
    name += static_cast<char>('a' + random() % 26);
  return target.parent_path() / name.append(target.extension().string());
}

} // namespace

MediaWriter::MediaWriter(std::string file, WriterOptions options)
    : file_(std::move(file)), options_(std::move(options)) {
  check();
}

MediaWriter::~MediaWriter() {
  if (!done_)
    abandon();
}

bool MediaWriter::isStill(const std::string &file) { return formatOf(file).kind == Kind::Still; }

bool MediaWriter::isSound(const std::string &file) { return formatOf(file).kind == Kind::Sound; }

void MediaWriter::check() const {
  const auto refuse = [&](const std::string &why) {
    throw HostError("cannot write " + (toStandardOutput() ? std::string("to standard output") : file_) +
                    ": " + why);
  };
  const WriterOptions &o = options_;
  if (!hasPictures() && !hasSamples())
    refuse("neither pictures nor sound");
  if (hasPictures() && (o.width < 1 || o.height < 1 || o.width > kLargestSide || o.height > kLargestSide))
    refuse("pictures of " + std::to_string(o.width) + "x" + std::to_string(o.height) + " are not possible");
  if (hasPictures() && !(o.rate.value() > 0 && o.rate.value() <= 1000))
    refuse("a frame rate of " + numberText(o.rate.value()) + " is not possible");
  if (hasSamples() && (o.sampleRate < 1 || o.sampleRate > 768000 || o.channels > 64))
    refuse("a sample rate of " + std::to_string(o.sampleRate) + " with " + std::to_string(o.channels) +
           " channels is not possible");
  if (toStandardOutput()) {
    if (hasPictures() && hasSamples())
      refuse("either pictures or sound, not both");
    return;
  }
  const Kind kind = formatOf(file_).kind;
  if (kind == Kind::Sound && hasPictures())
    refuse("such a file holds sound alone");
  if (kind == Kind::Still && (hasSamples() || !o.soundFile.empty()))
    refuse("such a file holds a picture alone");

  std::error_code error;
  const fs::path target(file_);
  const fs::file_status status = fs::status(target, error);
  if (fs::is_directory(status))
    refuse(errorMessage(EISDIR));
  if (!fs::exists(status)) {
    if (status.type() == fs::file_type::none)
      refuse(error.message());
  } else if (fs::is_regular_file(status) && !o.overwrite) {
    refuse("the file exists");
  }
  if (target.extension().empty())
    refuse("its name has no extension that tells the format");
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  if (access(folder.c_str(), F_OK) != 0 ||
      ((!fs::exists(status) || fs::is_regular_file(status)) && access(folder.c_str(), W_OK | X_OK) != 0))
    refuse(errorMessage(errno));
}

std::vector<std::string> MediaWriter::arguments(const std::string &target) const {
  const Format &format = formatOf(file_);
  const WriterOptions &o = options_;
  std::vector<std::string> args{o.programs.ffmpeg, "-v", "error", "-nostdin", "-y"};
  const auto add = [&](std::initializer_list<std::string> more) { args.insert(args.end(), more); };
  if (o.soundFile.empty())
    add({"-xerror"}); // otherwise small damage in the sound file would end it all
  // Sound comes first: its pipe can always be fed.
  if (hasSamples())
    add({"-f", "f32le", "-ar", std::to_string(o.sampleRate), "-ac", std::to_string(o.channels), "-probesize",
         "32", "-analyzeduration", "0", "-i", hasPictures() ? "pipe:3" : "pipe:0"});
  if (hasPictures())
    add({"-f", "rawvideo", "-pixel_format", "bgra", "-video_size",
         std::to_string(o.width) + "x" + std::to_string(o.height), "-framerate", o.rate.text(), "-probesize",
         "32", "-analyzeduration", "0", "-i", "pipe:0"});
  const bool soundFile = hasPictures() && !hasSamples() && !o.soundFile.empty();
  if (soundFile) {
    if (o.soundStart > 0)
      add({"-ss", numberText(o.soundStart)});
    if (o.soundDuration > 0)
      add({"-t", numberText(o.soundDuration)});
    add({"-i", fileUrl(o.soundFile)});
  }

  if (hasPictures()) {
    add({"-map", hasSamples() ? "1:v" : "0:v"});
    Pixels pixels = format.pixels;
    if (!o.alpha && pixels == Pixels::Yuva420)
      pixels = Pixels::Yuv420;
    std::string filters = filtersFor(pixels, o.width, o.height);
    if (!o.alpha && pixels == Pixels::Rgba)
      filters = "format=bgr0";
    if (!o.filter.empty())
      filters = filters.empty() ? o.filter : o.filter + ',' + filters;
    if (!filters.empty())
      add({"-vf", filters});
    constexpr int kLeastOfFfv1 = 4; // smaller ones come back damaged
    addWords(args, format.extension == "mkv" && std::min(o.width, o.height) < kLeastOfFfv1 ? "-c:v png"
                                                                                           : format.video);
    if (isBt709(pixels))
      add({"-colorspace", "bt709", "-color_primaries", "bt709", "-color_trc", "bt709", "-color_range", "tv"});
    if (format.kind == Kind::Still)
      add({"-frames:v", "1", "-update", "1"});
  }
  if (hasSamples() || soundFile) {
    add({"-map", soundFile ? "1:a:0" : "0:a"});
    addWords(args, format.sound);
    if (soundFile && o.soundDuration <= 0)
      add({"-af", "apad", "-shortest"});
    if (hasPictures())
      add({"-max_muxing_queue_size", "65536"});
  }
  if (format.extension == "mp4" || format.extension == "m4v" || format.extension == "m4a")
    add({"-movflags", "+faststart"});
  add({"-map_metadata", "-1", fileUrl(target)});
  return args;
}

std::string MediaWriter::commandLine() const {
  return toStandardOutput() ? std::string() : shellQuoted(arguments(file_));
}

void MediaWriter::start() {
  if (done_)
    throw std::logic_error("the file is already complete or given up");
  if (process_ || toStandardOutput())
    return;
  const fs::file_status status = fs::status(file_);
  inPlace_ = fs::exists(status) && !fs::is_regular_file(status);
  if (!inPlace_) {
    partial_ = partialName(file_).string();
    const Descriptor created(open(partial_.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666));
    if (!created) {
      const int error = errno;
      partial_.clear();
      fail(errorMessage(error));
    }
  }
  Process::Options options;
  options.input = Process::Stream::Pipe;
  options.secondInput = hasPictures() && hasSamples();
  try {
    process_ = std::make_unique<Process>(arguments(inPlace_ ? file_ : partial_), options);
  } catch (const HostError &error) {
    fail(error.what());
  }
}

void MediaWriter::put(const void *data, size_t size) {
  if (toStandardOutput()) {
    const int error = writeFully(STDOUT_FILENO, data, size);
    if (error != 0)
      fail(errorMessage(error));
  } else if (!process_->write(data, size)) {
    failAsChild();
  }
}

void MediaWriter::writeFrame(const void *pixels) {
  if (!hasPictures())
    throw std::logic_error("a picture for a file of sound");
  if (frames_ == 1 && isStill(file_))
    fail("such a file holds one picture");
  if (hasSamples() && !samplesEnded_ &&
      static_cast<double>(samples_) < std::floor(timeOf(frames_, options_.rate) * options_.sampleRate) + 1)
    throw std::logic_error("the sound of a picture comes before the picture");
  start();
  put(pixels, size_t{4} * static_cast<size_t>(options_.width) * static_cast<size_t>(options_.height));
  ++frames_;
}

void MediaWriter::writeSamples(const float *samples, size_t frames) {
  if (!hasSamples() || samplesEnded_)
    throw std::logic_error("samples for a file of pictures");
  start();
  const size_t size = frames * static_cast<size_t>(options_.channels) * sizeof(float);
  samples_ += frames;
  if (!hasPictures()) {
    put(samples, size);
    return;
  }
  if (!process_->queueSecond(samples, size))
    failAsChild();
  if (process_->queued() > kMostQueued)
    fail("the sound runs too far ahead of the pictures");
}

void MediaWriter::endSamples() {
  samplesEnded_ = true;
  if (process_)
    process_->endSecond();
}

void MediaWriter::finish() {
  if (done_)
    return;
  if (!process_ && !toStandardOutput())
    fail(hasPictures() ? "no pictures came" : "no sound came");
  if (process_) {
    const int status = process_->wait();
    const std::string &said = process_->errorTail();
    if (status != 0 || said.find("Error writing trailer") != std::string::npos ||
        said.find("Error closing file") != std::string::npos)
      failAsChild();
    process_.reset();
    publish();
  }
  done_ = true;
}

/// Gives the complete file its name.
void MediaWriter::publish() {
  if (inPlace_)
    return;
  int result = renameat2(AT_FDCWD, partial_.c_str(), AT_FDCWD, file_.c_str(),
                         options_.overwrite ? 0u : static_cast<unsigned>(RENAME_NOREPLACE));
  if (result != 0 && errno == EINVAL) // a file system that cannot refuse
    result = rename(partial_.c_str(), file_.c_str());
  if (result != 0)
    fail(errno == EEXIST ? "the file exists" : errorMessage(errno));
  partial_.clear();
}

void MediaWriter::abandon() {
  process_.reset();
  if (!partial_.empty())
    unlink(partial_.c_str());
  partial_.clear();
}

void MediaWriter::fail(const std::string &reason) {
  abandon();
  done_ = true;
  throw HostError("cannot write " + (toStandardOutput() ? std::string("to standard output") : file_) + ": " +
                  reason);
}

void MediaWriter::failAsChild() {
  process_->wait();
  std::string reason = reasonOf(*process_, fileUrl(partial_));
  for (size_t at; !partial_.empty() && (at = reason.find(partial_)) != std::string::npos;)
    reason.replace(at, partial_.size(), file_);
  fail(reason);
}

} // namespace zol::host
