// Reading ahead and writing behind: order, bounds, ends, failures, and stopping in the midst of it.
#include "host/media/pipe_size.h"
#include "host/media/queue.h"

#include <array>
#include <atomic>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <unistd.h>
#include <utility>
#include <vector>

namespace zol::host {
namespace {

struct Pipe {
  std::array<int, 2> ends{};
  Pipe() { EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0); }
  ~Pipe() {
    for (const int end : ends)
      if (end >= 0)
        close(end);
  }
  Pipe(const Pipe &) = delete;
  Pipe &operator=(const Pipe &) = delete;
};

TEST(ReadAhead, KeepsOrderAndStaysWithinItsDepth) {
  constexpr int kCount = 2000, kDepth = 3;
  std::atomic<int> made = 0;
  ReadAhead<std::unique_ptr<int>> reader(kDepth, [&]() -> std::optional<std::unique_ptr<int>> {
    return made == kCount ? std::nullopt : std::optional(std::make_unique<int>(made++));
  });
  for (int i = 0; i < kCount; ++i) {
    const auto value = reader.next();
    ASSERT_TRUE(value);
    EXPECT_EQ(**value, i);
    EXPECT_LE(made, i + 1 + kDepth + 1); // taken, waiting, and the one at hand
  }
  EXPECT_FALSE(reader.next());
  EXPECT_FALSE(reader.next());
}

TEST(ReadAhead, ThrowsWhereTheFailureWas) {
  int made = 0;
  ReadAhead<int> reader(8, [&]() -> std::optional<int> {
    if (made == 5)
      throw std::runtime_error("broken off");
    return made++;
  });
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(reader.next(), i);
  EXPECT_THROW(reader.next(), std::runtime_error);
  EXPECT_THROW(reader.next(), std::runtime_error);
}

TEST(ReadAhead, StopsWhileItWaitsForRoomOrForItsSource) {
  {
    const ReadAhead<int> full(1, [] { return std::optional(1); });
  }
  Pipe pipe;
  const ReadAhead<char> waiting(
      1,
      [&]() -> std::optional<char> {
        char byte = 0;
        return read(pipe.ends[0], &byte, 1) == 1 ? std::optional(byte) : std::nullopt;
      },
      [&] { close(std::exchange(pipe.ends[1], -1)); });
}

TEST(WriteBehind, ConsumesEverythingInOrderBeforeItFinishes) {
  std::vector<int> written;
  WriteBehind<std::unique_ptr<int>> writer(
      2, [&](const std::unique_ptr<int> &value) { written.push_back(*value); });
  for (int i = 0; i < 2000; ++i)
    writer.put(std::make_unique<int>(i));
  writer.finish();
  ASSERT_EQ(written.size(), 2000u);
  for (int i = 0; i < 2000; ++i)
    EXPECT_EQ(written[static_cast<size_t>(i)], i);
}

TEST(WriteBehind, ThrowsToWhoeverPutsOrFinishes) {
  WriteBehind<int> writer(2, [](int value) {
    if (value == 3)
      throw std::runtime_error("disk full");
  });
  EXPECT_THROW(
      {
        for (int i = 0; i < 1000; ++i)
          writer.put(i);
      },
      std::runtime_error);
  EXPECT_THROW(writer.put(1), std::runtime_error);
  EXPECT_THROW(writer.finish(), std::runtime_error);

  WriteBehind<int> last(2, [](int) { throw std::runtime_error("disk full"); });
  last.put(1);
  EXPECT_THROW(last.finish(), std::runtime_error);
}

TEST(WriteBehind, DropsWhatWaitsWhenItIsGivenUp) {
  Pipe pipe;
  std::atomic<int> consumed = 0;
  {
    WriteBehind<int> writer(
        4,
        [&](int) {
          char byte = 0;
          ++consumed;
          EXPECT_EQ(read(pipe.ends[0], &byte, 1), 0);
        },
        [&] { close(std::exchange(pipe.ends[1], -1)); });
    for (int i = 0; i < 4; ++i)
      writer.put(i);
  }
  EXPECT_LE(consumed, 1);
}

TEST(PipeSize, GrowsAndLeavesOtherDescriptorsAlone) {
  const Pipe pipe;
  const int before = fcntl(pipe.ends[0], F_GETPIPE_SZ);
  enlargePipe(pipe.ends[1]);
  EXPECT_GT(fcntl(pipe.ends[0], F_GETPIPE_SZ), before);
  enlargePipe(-1);
}

} // namespace
} // namespace zol::host
