#include "host/media/writer.h"

#include "host/media/zscale.h"
#include "host/model/text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <stdexcept>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace zol::host {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr int kLargestSide = 32767;
constexpr double kMostReordered = 500; // pictures a second that milliseconds tell apart from file to file
constexpr size_t kMostQueued = size_t{64} << 20;

void add(Words &args, const Words &more) { args.insert(args.end(), more.begin(), more.end()); }

void addWords(Words &args, std::string_view words) {
  for (const std::string_view word : split(words, ' '))
    if (!word.empty())
      args.emplace_back(word);
}

/// Options of an input or an output. Some encoders look at the frames alone, some files at the options alone:
/// both name the colours.
Words colourWords(Colours colours) {
  if (colours == Colours::jpeg)
    return {"-color_range", "pc"};
  if (colours == Colours::untagged)
    return {"-color_range", "tv"};
  if (colours == Colours::bt709)
    return {"-color_range",
            "tv",
            "-colorspace",
            "bt709",
            "-color_primaries",
            "bt709",
            "-color_trc",
            "bt709",
            "-chroma_sample_location",
            "left"};
  return {};
}

/// Of the user's own words those that concern sound or the file, or the others, which concern the pictures.
Words wordsApart(const Words &options, bool pictures) {
  constexpr std::string_view kValued[] = {"-acodec", "-ac", "-ar", "-af", "-f", "-movflags", "-metadata"};
  constexpr std::string_view kBare[] = {"-an", "-sn", "-dn"};
  const auto isOneOf = [](const std::string &word, const auto &names) {
    return std::find(std::begin(names), std::end(names), word) != std::end(names);
  };
  Words kept;
  for (size_t i = 0; i < options.size(); ++i) {
    const bool valued =
        i + 1 < options.size() &&
        (isOneOf(options[i], kValued) || (options[i].starts_with('-') && options[i].ends_with(":a")));
    if (pictures != (valued || isOneOf(options[i], kBare)))
      kept.insert(kept.end(), options.begin() + static_cast<ptrdiff_t>(i),
                  options.begin() + static_cast<ptrdiff_t>(i) + (valued ? 2 : 1));
    i += valued ? 1 : 0;
  }
  return kept;
}

// ---- Pictures that are copied ----

/// What the format counts the times of pictures in, in seconds; nothing where that is not known.
std::optional<Rational> clockOf(std::string_view muxer, Rational rate) {
  constexpr int kLeast = 10000; // ticks a second, below which clocks of this family are doubled
  const auto isOneOf = [&](std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), muxer) != names.end();
  };
  if (isOneOf({"mp4", "mov", "ipod", "3gp", "3g2", "f4v"})) {
    int64_t ticks = rate.num;
    while (ticks < kLeast)
      ticks *= 2;
    return Rational(1, ticks);
  }
  if (isOneOf({"matroska", "webm", "flv", "asf"}))
    return Rational(1, 1000);
  if (muxer == "mpegts")
    return Rational(1, 90000);
  if (isOneOf({"avi", "mxf"}))
    return Rational(rate.den, rate.num);
  return std::nullopt;
}

/// A list of files as ffmpeg's "concat" reads it.
std::string listOf(const EncodedPictures &pictures, Rational rate) {
  std::string list;
  for (size_t i = 0; i < pictures.files.size(); ++i) {
    std::string name = fileUrl(pictures.files[i]);
    for (size_t at = 0; (at = name.find('\'', at)) != name.npos; at += 4)
      name.replace(at, 1, "'\\''");
    list += "file '" + name + "'\nduration " + numberText(timeOf(pictures.frames[i], rate)) + '\n';
  }
  return list;
}

/// As ffmpeg's files of metadata have it.
std::string metadataOf(const std::string &name, const std::string &value) {
  std::string text = ";FFMETADATA1\n" + name + '=';
  for (const char c : value) {
    if (std::string_view("=;#\\\n").find(c) != std::string_view::npos)
      text += '\\';
    text += c;
  }
  return text + '\n';
}

/// Slower than half goes in steps.
std::string tempoFilter(double tempo) {
  std::string filter;
  while (tempo < 0.5) {
    filter += "atempo=0.5,";
    tempo *= 2;
  }
  return filter + "atempo=" + numberText(tempo);
}

} // namespace

bool canCopyPictures(const std::string &from, const std::string &to, const EncodingChoice &encoding,
                     const MediaPrograms &programs) {
  Words args{programs.ffmpeg, "-v", "error", "-nostdin", "-y", "-i", fileUrl(from)};
  add(args, {"-map", "0:V:0", "-c", "copy", "-frames:v", "1"});
  if (const std::string_view muxer = formatOf(to, encoding).muxer; !muxer.empty())
    add(args, {"-f", std::string(muxer)});
  args.emplace_back("/dev/null");
  return Process(args).wait() == 0;
}

MediaWriter::MediaWriter(std::string file, WriterOptions options)
    : file_(std::move(file)), options_(std::move(options)),
      raw_(file_ == "-" && optionOf(options_.encoding.options, "-f").empty()) {
  std::optional<std::pair<uint64_t, uint64_t>> numbers;
  if (options_.pictures)
    numbers = {options_.firstNumber, options_.firstNumber + *options_.pictures};
  if (!raw_)
    output_ = isSequence(file_) ? makeOutputSequence(file_, options_.overwrite, numbers)
                                : makeOutputFile(file_, options_.overwrite);
  check();
  pipe_ = pipeLayout();
}

MediaWriter::~MediaWriter() = default;

bool MediaWriter::isStill(const std::string &file) {
  return kindOf(file) == FileKind::still && !hasNumber(file);
}

bool MediaWriter::isSound(const std::string &file) { return kindOf(file) == FileKind::sound; }

bool MediaWriter::writesInPlace(const std::string &file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  return file == "-" || (fs::exists(status) && !fs::is_regular_file(status));
}

bool MediaWriter::isSequence(const std::string &file) {
  return kindOf(file) == FileKind::still && hasNumber(file);
}

void MediaWriter::check() const {
  const auto refuse = [&](const std::string &why) { throw HostError("cannot write " + name() + ": " + why); };
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
  if (raw_) {
    if (hasPictures() && hasSamples())
      refuse("either pictures or sound, not both");
    if (isatty(STDOUT_FILENO) == 1)
      refuse("raw bytes are not for a terminal");
    return;
  }
  const Format &format = formatOf(file_, o.encoding);
  if (copiesPictures() && !clockOf(format.muxer, o.rate))
    refuse("encoded pictures can be copied into mp4, mov, mkv, webm, ts, mxf, avi, flv and their like alone");
  for (const std::string &part : o.encoded.files)
    if (part.find('\n') != part.npos)
      refuse("a part has a line break in its name");
  if (o.encoded.delay > 0 && o.rate.value() > kMostReordered)
    refuse("so many pictures a second can be joined only where none is coded out of order");
  if (format.kind == FileKind::sound && hasPictures())
    refuse("such a file holds sound alone");
  if (format.sounds.empty() && (hasSamples() || o.companion.sound))
    refuse(format.kind == FileKind::still ? "such a file holds a picture alone"
                                          : "such a file holds pictures alone");
  if (hasPictures())
    (void)pictureEncoding(format, file_, o.encoding, o.alpha);
  if (hasSamples() || o.companion.sound)
    (void)soundEncoding(format, file_, o.encoding);
}

size_t MediaWriter::pictureBytes() const {
  return size_t{4} * static_cast<size_t>(options_.width) * static_cast<size_t>(options_.height);
}

// ---- The command ----

PictureEncoding MediaWriter::encodingOfPictures() const {
  const WriterOptions &o = options_;
  constexpr int kLeastOfFfv1 = 4; // smaller ones come back damaged
  PictureEncoding encoding = pictureEncoding(formatOf(file_, o.encoding), file_, o.encoding, o.alpha);
  // What x265 tells of its processors would stand in the headers, which all parts have in common.
  constexpr std::string_view kQuiet = "log-level=error";
  if (const size_t at = encoding.words.find(kQuiet); isPart() && at != encoding.words.npos)
    encoding.words.insert(at + kQuiet.size(), ":info=0");
  if (encoding.words.starts_with("-c:v ffv1") && std::min(o.width, o.height) < kLeastOfFfv1)
    return {"-c:v png", o.alpha ? "rgba" : "rgb24", Colours::asis, o.alpha, false};
  return encoding;
}

/// Pictures as the child gets them: the encoder's where they can be made here.
PictureLayout MediaWriter::pipeLayout() const {
  const WriterOptions &o = options_;
  PictureLayout layout{kBgra, o.width, o.height};
  if (!hasPictures() || raw_ || !o.filter.empty() || !Converter::available())
    return layout;
  const PictureEncoding encoding = encodingOfPictures();
  const auto coding = codingOf(encoding.colours, o.width, o.height);
  const PixelFormat format = pipeFormat(encoding.pixelFormat);
  if (!coding || format.family != ColorFamily::Yuv)
    return layout;
  return {format, format.roundedWidth(o.width), format.roundedHeight(o.height), *coding,
          o.fields != FieldOrder::none && encoding.fields};
}

void MediaWriter::addPictureWords(Words &args, const std::string &input) const {
  const WriterOptions &o = options_;
  const Format &format = formatOf(file_, o.encoding);
  const PictureEncoding encoding = encodingOfPictures();
  add(args, {"-map", input + ":v:0"});
  const bool fields = o.fields != FieldOrder::none && encoding.fields;
  const bool zscale =
      !Converter::available() && codingOf(encoding.colours, o.width, o.height) && hasZscale(o.programs);
  std::string filters =
      filtersFor(encoding, {o.width, o.height, o.pixelAspect, fields ? o.fields : FieldOrder::none},
                 pipe_.format, zscale);
  if (!o.filter.empty())
    filters = filters.empty() ? o.filter : o.filter + ',' + filters;
  if (!filters.empty())
    add(args, {"-vf", filters});
  addWords(args, encoding.words);
  if (isPart() && o.rate.value() > kMostReordered)
    add(args, {"-bf", "0"});
  if (fields)
    add(args, {"-flags", "+ildct+ilme"});
  add(args, colourWords(encoding.colours));
  if (isSequence(file_))
    add(args, {"-start_number", std::to_string(o.firstNumber)});
  else if (format.kind == FileKind::still)
    add(args, {"-frames:v", "1", "-update", "1"});
  if (!o.timecode.empty())
    add(args, {"-metadata", "timecode=" + o.timecode});
}

void MediaWriter::addSoundWords(Words &args, const std::string &input) const {
  const Companion &from = options_.companion;
  const Format &format = formatOf(file_, options_.encoding);
  const SoundEncoding encoding = soundEncoding(format, file_, options_.encoding);
  add(args, {"-map", input + (from.sound && format.manyTracks ? ":a" : ":a:0")});
  addWords(args, encoding.words);
  std::string filters;
  const auto append = [&](const std::string &filter) { (filters += filters.empty() ? "" : ",") += filter; };
  if (from.sound && from.tempo != 1)
    append(tempoFilter(from.tempo));
  if (!encoding.layouts.empty())
    append("aformat=channel_layouts=" + encoding.layouts);
  const bool endless = from.sound && from.duration <= 0 && hasPictures() && !soundComesLate();
  if (endless)
    append("apad");
  if (!filters.empty())
    add(args, {"-af", filters});
  if (endless)
    add(args, {"-shortest"});
}

/// All but the sound that samples stand for.
void MediaWriter::addCompanionTracks(Words &args, const std::string &input) const {
  const Companion &from = options_.companion;
  const Format &format = formatOf(file_, options_.encoding);
  if (from.pictures) {
    add(args, {"-map", input + ":v:0"});
    if (from.copied) {
      add(args, {"-c:v", "copy"});
    } else {
      const PictureEncoding encoding = pictureEncoding(format, file_, options_.encoding, true);
      addWords(args, encoding.words);
      if (!encoding.pixelFormat.empty())
        add(args, {"-pix_fmt", encoding.pixelFormat});
    }
  }
  size_t kept = 0;
  for (size_t i = 0; i < from.subtitles.size(); ++i)
    if (const std::string codec = subtitleEncoding(format, from.subtitles[i]); !codec.empty()) {
      add(args, {"-map", input + ":s:" + std::to_string(i)});
      add(args, {"-c:s:" + std::to_string(kept++), codec});
    }
  if (from.attachments && holdsAttachments(format))
    add(args, {"-map", input + ":t", "-c:t", "copy"});
}

void MediaWriter::addEncodedPictures(Words &args, const std::string &input) const {
  const WriterOptions &o = options_;
  const EncodedPictures &from = o.encoded;
  const std::string_view muxer = formatOf(file_, o.encoding).muxer;
  const Rational tick = clockOf(muxer, o.rate).value(), frame(o.rate.den, o.rate.num);
  const auto ticks = [&](const std::string &frames) { // in whole numbers, which halves need
    return "round(" + frames + '*' + std::to_string(frame.num * tick.den) + '/' +
           std::to_string(frame.den * tick.num) + ')';
  };
  // Matroska counts milliseconds: they tell the picture, which tells the exact time. Whether the filter gets
  // them as such or in ticks already depends on ffmpeg: a picture's own length tells.
  const std::string inFrames = "*(" + tick.text() + ")/(" + frame.text() + ')';
  const std::string ticked = "not(round(DURATION" + inFrames + ")-1)";
  const std::string shown = from.delay == 0 ? "N"
                                            : "round(PTS*(" + ticked + "*(" + tick.text() + ")+(1-" + ticked +
                                                  ")/1000)/(" + frame.text() + "))";
  std::string filters;
  const bool ownHeaders = muxer == "avi" || muxer == "mxf";
  if (ownHeaders && from.codec == "h264")
    filters = "h264_mp4toannexb,";
  else if ((ownHeaders || muxer == "mpegts") && from.codec.starts_with("mpeg"))
    filters = "dump_extra,";
  filters += "setts=pts=" + ticks(shown) + ":dts=" + ticks("(N-" + std::to_string(from.delay) + ')') +
             ":duration=" + ticks("1") + ":time_base=" + tick.text();
  add(args, {"-map", input + ":v:0", "-c:v", "copy", "-bsf:v", filters, "-r", o.rate.text()});
  if (!from.encoder.empty())
    add(args, {"-metadata:s:v:0", "encoder=" + from.encoder});
  if (!o.timecode.empty())
    add(args, {"-metadata", "timecode=" + o.timecode});
}

std::vector<std::string> MediaWriter::arguments(const std::string &target, Pass pass,
                                                const std::string &picturesAlone) const {
  const Format &format = formatOf(file_, options_.encoding);
  const WriterOptions &o = options_;
  const Companion &from = o.companion;
  Words args{o.programs.ffmpeg, "-v", "error", "-nostdin", "-y"};
  int inputs = 0;
  std::string sound, pictures, companion, tag; // the numbers of the inputs
  const auto next = [&] { return std::to_string(inputs++); };
  if (from.file.empty())
    add(args, {"-xerror"}); // otherwise small damage in the companion would end it all
  // Sound comes first: its pipe can always be fed.
  if (hasSamples()) {
    add(args,
        {"-f", "f32le", "-ar", std::to_string(o.sampleRate), "-ac", std::to_string(o.channels), "-probesize",
         "32", "-analyzeduration", "0", "-i", hasPictures() && !copiesPictures() ? "pipe:3" : "pipe:0"});
    sound = next();
  }
  if (pass == Pass::joining) {
    add(args, {"-i", picturesAlone});
    pictures = next();
  } else if (copiesPictures()) {
    add(args, {"-protocol_whitelist", "file,pipe", "-f", "concat", "-safe", "0", "-auto_convert", "0", "-i",
               "pipe:3"});
    pictures = next();
  } else if (hasPictures()) {
    add(args,
        {"-f", "rawvideo", "-pixel_format", pipe_.format == kBgra && !o.alpha ? "bgr0" : pipe_.format.name(),
         "-video_size", std::to_string(pipe_.width) + "x" + std::to_string(pipe_.height), "-framerate",
         o.rate.text(), "-probesize", "32", "-analyzeduration", "0"});
    if (pipe_.format != kBgra)
      add(args, colourWords(encodingOfPictures().colours));
    add(args, {"-i", "pipe:0"});
    pictures = next();
  }
  if (!from.file.empty() && pass != Pass::picturesAlone) {
    if (soundComesLate())
      add(args,
          {"-f", "f32le", "-ar", std::to_string(from.rawRate), "-ac", std::to_string(from.rawChannels)});
    if (from.start > 0)
      add(args, {"-ss", numberText(from.start)});
    if (from.duration > 0)
      add(args, {"-t", numberText(from.duration)});
    add(args, {"-i", fileUrl(from.file)});
    companion = next();
    if (from.sound)
      sound = companion;
  }
  if (!tagFile_.empty()) {
    add(args, {"-f", "ffmetadata", "-i", fileUrl(tagFile_)});
    tag = next();
  }

  if (pass == Pass::joining)
    add(args, {"-map", pictures + ":v", "-c:v", "copy"});
  else if (copiesPictures())
    addEncodedPictures(args, pictures);
  else if (hasPictures())
    addPictureWords(args, pictures);
  if (!sound.empty()) {
    addSoundWords(args, sound);
    if (hasPictures() || from.pictures)
      add(args, {"-max_muxing_queue_size", "65536"});
  }
  if (!companion.empty())
    addCompanionTracks(args, companion);
  addWords(args, format.words);
  const std::string told = !companion.empty() && from.tags ? companion : "-1";
  add(args, {"-map_metadata", tag.empty() ? told : tag, "-map_chapters", told});
  if (!format.muxer.empty())
    add(args, {"-f", std::string(format.muxer)});
  Words own = o.encoding.options;
  if (pass == Pass::joining || copiesPictures())
    own = wordsApart(own, false);
  else if (isPart())
    own = wordsApart(own, true);
  args.insert(args.end(), own.begin(), own.end());
  args.push_back(target);
  return args;
}

std::vector<std::string> MediaWriter::commandLines() const {
  if (raw_)
    return {};
  const std::string target = file_ == "-" ? "pipe:1" : fileUrl(file_);
  if (!soundComesLate())
    return {shellQuoted(arguments(target, Pass::whole, {}))};
  const std::string pictures = fileUrl(file_ + ".pictures");
  return {shellQuoted(arguments(pictures, Pass::picturesAlone, {})),
          shellQuoted(arguments(target, Pass::joining, pictures))};
}

// ---- The child ----

/// What goes wrong outside of the child ends the writer too.
template <class Work> auto MediaWriter::orFail(Work work) {
  try {
    return work();
  } catch (const HostError &error) {
    fail(error.what());
  }
}

void MediaWriter::prepare() {
  if (done_)
    throw std::logic_error("the file is already complete or given up");
  if (behind_)
    return;
  if (raw_) {
    standardOutput_ = nonBlockingOutput();
  } else {
    Process::Options options;
    if (!copiesPictures() || hasSamples())
      options.input = Process::Stream::Pipe;
    options.output = file_ == "-" ? Process::Stream::Inherit : Process::Stream::None;
    options.secondInput = copiesPictures() || (hasPictures() && hasSamples());
    orFail([&] {
      if (soundComesLate())
        picturesAlone_ = output_->spare();
      writeTag();
      process_ = std::make_unique<Process>(soundComesLate()
                                               ? arguments(fileUrl(picturesAlone_), Pass::picturesAlone, {})
                                               : arguments(output_->begin(), Pass::whole, {}),
                                           options);
      if (!copiesPictures())
        return;
      const std::string list = listOf(options_.encoded, options_.rate);
      process_->queueSecond(list.data(), list.size());
      process_->endSecond();
    });
  }
  constexpr size_t kWaiting = size_t{64} << 20, kMostPictures = 4, kBlocks = 64;
  const size_t depth =
      hasPictures() ? std::clamp<size_t>(kWaiting / pictureBytes(), 1, kMostPictures) : kBlocks;
  behind_.emplace(
      depth, [](const std::function<void()> &work) { work(); },
      [this] {
        if (process_)
          process_->terminate();
      });
}

/// A tag may be longer than a word of a command line.
void MediaWriter::writeTag() {
  if (!isPart())
    return;
  tagFile_ = output_->spare();
  std::ofstream stream(tagFile_, std::ios::binary);
  stream << metadataOf(options_.tag.first, options_.tag.second) << std::flush;
  if (!stream)
    throw HostError(errorMessage(errno));
}

/// Has something done in the thread.
void MediaWriter::hand(std::function<void()> work) {
  prepare();
  begun_ = true;
  orFail([&] { behind_->put(std::move(work)); });
}

void MediaWriter::put(const void *data, size_t size) {
  if (raw_) {
    const int error = writeFully(standardOutput_.get(), data, size);
    if (error != 0)
      throw HostError(errorMessage(error));
  } else if (!process_->write(data, size)) {
    throwAsChild();
  }
}

void MediaWriter::sendPicture(const void *pixels) {
  if (pipe_.format == kBgra) {
    put(pixels, pictureBytes());
    return;
  }
  if (!converter_) {
    converter_.emplace(PictureLayout{kBgra, options_.width, options_.height}, pipe_, Fit::extend);
    converted_ = alignedBytes(pipe_.bytes());
  }
  converter_->convert(static_cast<const uint8_t *>(pixels), converted_.get());
  put(converted_.get(), pipe_.bytes());
}

void MediaWriter::sendSamples(const std::vector<float> &samples) {
  if (!hasPictures() || copiesPictures())
    put(samples.data(), samples.size() * sizeof(float));
  else if (!process_->queueSecond(samples.data(), samples.size() * sizeof(float)))
    throwAsChild();
  else if (process_->queued() > kMostQueued)
    throw HostError("the sound runs too far ahead of the pictures");
}

void MediaWriter::writeFrame(std::shared_ptr<const void> pixels) {
  if (!hasPictures())
    throw std::logic_error("a picture for a file of sound");
  if (frames_ == 1 && !raw_ && isStill(file_))
    fail("such a file holds one picture");
  if (copiesPictures())
    throw std::logic_error("a picture beside those that are copied");
  if (hasSamples() && !samplesEnded_ &&
      static_cast<double>(samples_) < std::floor(timeOf(frames_, options_.rate) * options_.sampleRate) + 1)
    throw std::logic_error("the sound of a picture comes before the picture");
  ++frames_;
  hand([this, kept = std::move(pixels)] { sendPicture(kept.get()); });
}

void MediaWriter::writeFrame(const void *pixels) {
  const auto *bytes = static_cast<const uint8_t *>(pixels);
  auto copy = std::make_shared<std::vector<uint8_t>>(bytes, bytes + pictureBytes());
  writeFrame(std::shared_ptr<const void>(copy, copy->data()));
}

void MediaWriter::writeSamples(const float *samples, size_t frames) {
  if (!hasSamples() || samplesEnded_)
    throw std::logic_error("samples for a file of pictures");
  samples_ += frames;
  hand([this, copy = std::vector<float>(samples, samples + frames * static_cast<size_t>(options_.channels))] {
    sendSamples(copy);
  });
}

void MediaWriter::endSamples() {
  samplesEnded_ = true;
  if (behind_ && !raw_)
    hand([this] { process_->endSecond(); });
}

std::string MediaWriter::soundBeside() {
  return options_.companion.file = orFail([&] { return output_->spare(); });
}

void MediaWriter::finish() {
  if (done_)
    return;
  if (copiesPictures())
    prepare();
  else if (!begun_ && !raw_)
    fail(hasPictures() ? "no pictures came" : "no sound came");
  if (behind_)
    orFail([&] { behind_->finish(); });
  if (process_) {
    waitForChild();
    if (soundComesLate()) {
      process_ = orFail([&] {
        return std::make_unique<Process>(arguments(output_->begin(), Pass::joining, fileUrl(picturesAlone_)),
                                         Process::Options());
      });
      waitForChild();
    }
    process_.reset();
    orFail([&] { output_->publish(); });
  }
  done_ = true;
}

void MediaWriter::waitForChild() {
  const int status = process_->wait();
  const std::string &said = process_->errorTail();
  if (status != 0 || said.find("Error writing trailer") != std::string::npos ||
      said.find("Error closing file") != std::string::npos)
    orFail([&] { throwAsChild(); });
}

void MediaWriter::fail(const std::string &reason) {
  behind_.reset();
  process_.reset();
  output_.reset();
  done_ = true;
  throw HostError("cannot write " + name() + ": " + reason);
}

void MediaWriter::throwAsChild() {
  process_->wait();
  const std::string place = picturesAlone_.empty() ? output_->place() : picturesAlone_;
  std::string reason = reasonOf(*process_, fileUrl(place));
  for (size_t at; !place.empty() && (at = reason.find(place)) != std::string::npos;)
    reason.replace(at, place.size(), file_);
  throw HostError(reason);
}

} // namespace zol::host
