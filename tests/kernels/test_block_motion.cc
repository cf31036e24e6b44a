// Block motion apart from the engine: a pair searched once gives the engine's frame of every weight.

#include "kernels/motion/pair_motion.h"

#include "plain/slow_motion.h"
#include "tests/support/levels.h"
#include "tests/support/scenes.h"

#include <gtest/gtest.h>

namespace zol::slomo {
namespace {

using test::Frame;
using test::FramePair;
using test::Scenes;

/// The plain engine over one pair.
struct PlainEngine : plain::SlowMotion {
  void *FrameProvider(void *, unsigned) override { return nullptr; }
};

const uint8_t *bytesOf(const Frame &frame) { return reinterpret_cast<const uint8_t *>(frame.data()); }
uint8_t *bytesOf(Frame &frame) { return reinterpret_cast<uint8_t *>(frame.data()); }

std::vector<BlockVector> search(const FieldPair &field, const BlockGrid &grid, bool quickly) {
  std::vector<uint16_t> memory(quickly ? BlockFinder::entriesFor(grid) : 0);
  std::vector<BlockVector> vectors(grid.count());
  BlockFinder(field, grid, quickly ? memory.data() : nullptr).find(0, vectors.size(), vectors.data());
  return vectors;
}

TEST(BlockMotion, OneSearchServesEveryWeight) {
  test::atEveryLevel([] {
    for (const auto &[width, height] : {std::pair{120U, 70U}, {64U, 48U}, {17U, 17U}, {131U, 33U}}) {
      const FramePair pair = Scenes(width, height, width).texture(7, -5, 1);
      const FieldPair field{bytesOf(pair.a), bytesOf(pair.b), width, height, size_t{width} * 4};
      const BlockGrid grid{width, height, 16, 16};
      PairMotion motion(grid);
      ASSERT_TRUE(motion);
      motion.begin(field);
      for (unsigned row = 0; row < motion.blockRows(); ++row)
        motion.searchRow(row);
      PlainEngine engine;
      engine.SetSequence(&engine, width, height, 1, 2, 0, 0, 0);
      for (const unsigned w : {0U, 511U, 512U, 9000U, 16384U, 32767U}) {
        Frame made(pair.a.size()), expected(pair.a.size());
        motion.makeField(field, w, bytesOf(made));
        engine.Vector(expected.data(), pair.a.data(), pair.b.data(), w, 0);
        ASSERT_EQ(made, expected) << width << "x" << height << " at " << w;
      }
    }
  });
}

TEST(BlockMotion, VectorsAreTheMotion) {
  const FramePair pair = Scenes(160, 112, 5).texture(9, -4, 0);
  const FieldPair field{bytesOf(pair.a), bytesOf(pair.b), 160, 112, 640};
  const BlockGrid grid{160, 112, 16, 16};
  ASSERT_EQ(grid.count(), 70U);
  const std::vector<BlockVector> quick = search(field, grid, true), slow = search(field, grid, false);
  for (size_t i = 0; i < quick.size(); ++i) {
    EXPECT_TRUE(quick[i].dx == slow[i].dx && quick[i].dy == slow[i].dy) << i;
    const bool staysInside = grid.left(i) + 16 + 9 <= 160 && grid.top(i) >= 4;
    EXPECT_TRUE(!staysInside || (quick[i].dx == 9 && quick[i].dy == -4)) << i;
  }
}

TEST(BlockMotion, GridsCoverTheFieldOnceAndOverlapAtItsEnds) {
  const BlockGrid grid{37, 20, 16, 8};
  ASSERT_EQ(grid.count(), 9U);
  const unsigned lefts[] = {0, 16, 21}, tops[] = {0, 8, 12};
  for (size_t i = 0; i < grid.count(); ++i)
    EXPECT_TRUE(grid.left(i) == lefts[i % 3] && grid.top(i) == tops[i / 3]) << i;
  EXPECT_EQ((BlockGrid{16, 100, 16, 16}.count()), 0U); // no room to move
  EXPECT_EQ((BlockGrid{0, 0, 16, 16}.count()), 0U);
}

} // namespace
} // namespace zol::slomo
