#include "host/media/extent.h"

#include "host/media/process.h"
#include "host/model/text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <string_view>

namespace zol::host {
namespace {

constexpr std::chrono::seconds kLongestScan(10);
constexpr double kPatience = 60; // seconds without a packet

/// The times of packets that come one after another.
class Packets {
public:
  explicit Packets(bool canJump) : canJump_(canJump) {}

  /// A line of times in seconds: of presentation, of decoding, and the duration; some may be missing.
  void add(std::string_view line) {
    const auto fields = split(line, ',');
    if (fields.size() < 3)
      return;
    const auto shown = numberIn(fields[0]), decoded = numberIn(fields[1]);
    const double duration = numberIn(fields[2]).value_or(0);
    sum_ += duration;
    const auto time = shown ? shown : decoded;
    if (!time)
      return;
    constexpr double kBack = 0.1, kAhead = 10; // seconds; ffmpeg's own limits
    const double order = decoded.value_or(*time);
    jumps_ = jumps_ || (canJump_ && any_ && (order < last_ - kBack || order > last_ + kAhead));
    last_ = order;
    end_ = any_ ? std::max(end_, *time + duration) : *time + duration;
    any_ = true;
  }

  /// Times count from `start`.
  [[nodiscard]] Extent extent(double start) const { return {any_ && !jumps_ ? end_ - start : sum_, jumps_}; }

private:
  bool canJump_, any_ = false, jumps_ = false;
  double end_ = 0, last_ = 0, sum_ = 0;
};

} // namespace

std::optional<Extent> measure(const InputAddress &input, const MediaInfo &info,
                              const MediaPrograms &programs) {
  std::vector<std::string> arguments{programs.ffprobe,
                                     "-v",
                                     "quiet",
                                     "-select_streams",
                                     info.hasVideo ? "V:0" : "a:0",
                                     "-show_entries",
                                     "packet=pts_time,dts_time,duration_time",
                                     "-print_format",
                                     "csv=p=0"};
  arguments.insert(arguments.end(), input.options.begin(), input.options.end());
  arguments.push_back(input.url);
  Process::Options options;
  options.output = Process::Stream::Pipe;
  options.patience = kPatience;
  Process process(arguments, options);

  Packets packets(isTransport(info.format));
  const auto begun = std::chrono::steady_clock::now();
  std::string text, block(4096, '\0');
  size_t got;
  do {
    got = process.read(block.data(), block.size());
    text.append(block, 0, got);
    size_t begin = 0;
    for (size_t end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1)
      packets.add(std::string_view(text).substr(begin, end - begin));
    text.erase(0, begin);
    if (std::chrono::steady_clock::now() - begun > kLongestScan)
      return std::nullopt;
  } while (got == block.size());
  const Extent extent = packets.extent(info.startTime);
  return extent.end > 0 ? std::optional(extent) : std::nullopt;
}

} // namespace zol::host
