#include "host/services/picture_memory.h"
#include "host/services/pools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace zol::host {
namespace {

constexpr size_t kPiece = size_t{1} << 20;

class PictureMemory : public testing::Test {
protected:
  void SetUp() override { keepPictureMemory(2 * kPiece); }
  void TearDown() override { keepPictureMemory(0); }
};

TEST_F(PictureMemory, ServesTheNextOfItsSizeAndIsClearWhereThatIsAskedFor) {
  void *const first = unwrittenPictureMemory(kPiece);
  std::memset(first, 7, kPiece);
  releasePictureMemory(first, kPiece);
  void *const other = unwrittenPictureMemory(kPiece / 2);
  EXPECT_NE(other, first);
  auto *const next = static_cast<unsigned char *>(clearPictureMemory(kPiece));
  EXPECT_EQ(next, first);
  EXPECT_TRUE(std::all_of(next, next + kPiece, [](unsigned char byte) { return byte == 0; }));
  releasePictureMemory(next, kPiece);
  releasePictureMemory(other, kPiece / 2);
}

TEST_F(PictureMemory, GivesTheOldestBackForWhatIsLeftLater) {
  void *pieces[3];
  for (void *&piece : pieces)
    piece = unwrittenPictureMemory(kPiece);
  for (void *piece : pieces)
    releasePictureMemory(piece, kPiece);
  // The first would show up as a third piece that is kept: a checker of memory sees it freed.
  void *const latest = unwrittenPictureMemory(kPiece), *const before = unwrittenPictureMemory(kPiece);
  EXPECT_EQ(latest, pieces[2]);
  EXPECT_EQ(before, pieces[1]);
  releasePictureMemory(latest, kPiece);
  releasePictureMemory(before, kPiece);
}

TEST_F(PictureMemory, PicturesAreClearWhateverStoodInThoseBefore) {
  const auto used = [] {
    auto picture = PictureBuffer::make(512, 256);
    std::fill_n(picture->record()->Pixels, picture->pixels(), _color_t{1, 2, 3, 4});
    return picture->record()->Pixels;
  }();
  const auto next = PictureBuffer::make(512, 256);
  EXPECT_EQ(next->record()->Pixels, used);
  const auto *pixels = reinterpret_cast<const unsigned char *>(next->record()->Pixels);
  EXPECT_TRUE(std::all_of(pixels, pixels + next->pixels() * sizeof(_color_t),
                          [](unsigned char byte) { return byte == 0; }));
  EXPECT_NE(PictureBuffer::make(0, 0), nullptr);
}

} // namespace
} // namespace zol::host
