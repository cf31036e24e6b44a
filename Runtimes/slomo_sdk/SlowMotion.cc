// The engine's life, the choice of frames around a time, and the methods that look at single words.

#include "Runtimes/slomo_sdk/SlowMotion.h"

#include "Runtimes/slomo_sdk/assertion.h"
#include "Runtimes/slomo_sdk/engine.h"
#include "kernels/motion/words.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#if defined(__i386__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(offsetof(CSlowMotion, m_pSeqID) == 4 && offsetof(CSlowMotion, m_dNewFPS) == 8);
static_assert(offsetof(CSlowMotion, m_bInterlaced) == 24 && offsetof(CSlowMotion, m_nCPUFlags) == 56);
static_assert(offsetof(CSlowMotion, m_pOutFrame) == 60 && offsetof(CSlowMotion, m_SquareTable) == 72);
static_assert(offsetof(CSlowMotion, m_pSquares) == 2120 && offsetof(CSlowMotion, m_pFillStack) == 2132);
#pragma GCC diagnostic pop
#endif

using namespace zol;

namespace {

constexpr int kAttempts = 8;
constexpr unsigned kMaxCoordinates = 32768; // the work lists hold positions of 16 bits with a sign

/// A frame's number for a time: truncated in 64 bits, the low 32 kept; what 64 bits cannot hold is 0.
unsigned frameNumber(double position) {
  constexpr double kLimit = 9223372036854775808.0;
  return position >= -kLimit && position < kLimit ? static_cast<unsigned>(static_cast<int64_t>(position)) : 0;
}

int truncated(double value) {
  if (value >= std::numeric_limits<int>::max())
    return std::numeric_limits<int>::max();
  return value > std::numeric_limits<int>::min() ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

unsigned char *allocate(uint64_t bytes) {
  if (bytes > static_cast<uint64_t>(PTRDIFF_MAX))
    return nullptr;
  return new (std::nothrow) unsigned char[static_cast<size_t>(bytes)];
}

void release(unsigned char *&buffer) {
  delete[] buffer;
  buffer = nullptr;
}

} // namespace

CSlowMotion::CSlowMotion()
    : m_pSeqID(nullptr), m_dNewFPS(25.0), m_dOldFPS(25.0), m_bInterlaced(0), m_bFieldOrder(0), m_nFormat(0),
      m_nWidth(0), m_nHeight(0), m_nOldFrames(0), m_nNewFrames(0), m_nBytesPerPixel(4), m_nCPUFlags(0),
      m_pOutFrame(nullptr), m_pFrameA(nullptr), m_pFrameB(nullptr), m_pSquares(m_SquareTable + 256),
      m_pMask(nullptr), m_pObjectList(nullptr), m_pFillStack(nullptr), m_nArea(0), m_pWork(nullptr),
      m_nReserved(0) {
  for (int d = -256; d < 256; ++d)
    m_SquareTable[d + 256] = static_cast<unsigned>(d * d);
}

CSlowMotion::~CSlowMotion() { Close(); }

int CSlowMotion::SetSequence(void *pSeqID, unsigned width, unsigned height, double fps, unsigned frames,
                             unsigned interlaced, unsigned fieldOrder, unsigned format) {
  ZOL_SLOMO_ASSERT(pSeqID != nullptr, "pSeqID", 150);
  m_pSeqID = pSeqID;
  m_dNewFPS = m_dOldFPS = fps;
  m_nOldFrames = m_nNewFrames = frames;
  m_nWidth = width;
  m_nHeight = height;
  m_bInterlaced = interlaced != 0;
  m_bFieldOrder = fieldOrder != 0;
  m_nFormat = format;
  m_nBytesPerPixel = format == 1 ? 2 : 4;
  m_pFrameA = m_pFrameB = nullptr;

  const uint64_t rowWords = (uint64_t{width} * m_nBytesPerPixel + 3) / 4;
  const uint64_t area =
      ((uint64_t{width} + 15) & ~uint64_t{15}) * ((uint64_t{height} + 15) & ~uint64_t{15}) * m_nBytesPerPixel;
  const bool fits = rowWords <= kMaxCoordinates && height <= kMaxCoordinates && area <= UINT32_MAX;

  m_nArea = 0;
  release(m_pOutFrame);
  if (fits)
    m_pOutFrame = allocate(area);
  FreeWork();
  if (m_pOutFrame == nullptr)
    return -1;
  if (m_bInterlaced != 0) // the last row of an odd frame stays
    std::memset(m_pOutFrame, 0, static_cast<size_t>(area));
  if ((m_pMask = allocate(area)) == nullptr || (m_pObjectList = allocate(area)) == nullptr ||
      (m_pFillStack = allocate(2 * area)) == nullptr)
    return -1;
  m_nArea = static_cast<unsigned>(area);
  return 0;
}

void *CSlowMotion::GetFrameToTime(double time, unsigned mode) {
  ZOL_SLOMO_ASSERT(m_pSeqID != nullptr, "m_pSeqID", 273);
  const double position = time * m_dOldFPS;
  const auto fetch = [&](unsigned frame) {
    return static_cast<unsigned char *>(FrameProvider(m_pSeqID, frame));
  };

  unsigned before = frameNumber(position), after = before + 1;
  m_pFrameA = fetch(before);
  for (int attempt = 1; attempt < kAttempts && m_pFrameA == nullptr; ++attempt)
    m_pFrameA = fetch(before = before == 0 ? 0 : before - 1);
  m_pFrameB = fetch(after);
  for (int attempt = 1; attempt < kAttempts && m_pFrameB == nullptr; ++attempt)
    m_pFrameB = fetch(++after);
  const unsigned char *only = m_pFrameA == nullptr ? m_pFrameB : m_pFrameA;
  if (only == nullptr)
    return nullptr;

  const unsigned words = (m_nWidth * m_nBytesPerPixel + 3) / 4, stride = words * 4;
  if (m_pFrameA == nullptr || m_pFrameB == nullptr) {
    if (!HasBuffers())
      return nullptr;
    CopyFrame(only, m_pOutFrame, words, m_nHeight, stride);
    return m_pOutFrame;
  }

  const int w = truncated((position - before) * slomo::kWeightOne / (after - before));
  if (w <= 0)
    return m_pFrameA;
  if (w >= static_cast<int>(slomo::kWeightOne))
    return m_pFrameB;
  if (!HasBuffers())
    return nullptr;

  const auto run = [&](int weight, unsigned field) {
    const auto method = mode == 1   ? &CSlowMotion::Vector
                        : mode == 2 ? &CSlowMotion::Object
                                    : &CSlowMotion::Interpol;
    (this->*method)(m_pOutFrame, m_pFrameA, m_pFrameB, static_cast<unsigned>(weight), field);
  };
  if (m_bInterlaced == 0) {
    run(w, 0);
    return m_pOutFrame;
  }

  // Twice as many moments as frames: one field is the nearer frame's, the other is made.
  const bool half = w >= 16384;
  const unsigned made = (half ? 1u : 0u) ^ m_bFieldOrder;
  const int fieldWeight = 2 * (half ? w - 16384 : w);
  const auto copyField = [&](const unsigned char *source, unsigned field) {
    const size_t start = field == 0 ? 0 : stride;
    CopyFrame(source + start, m_pOutFrame + start, words, m_nHeight / 2, stride * 2);
  };
  copyField(half ? m_pFrameB : m_pFrameA, made ^ 1);
  if (fieldWeight != 0)
    run(fieldWeight, made);
  else
    copyField(m_pFrameA, made);
  return m_pOutFrame;
}

void *CSlowMotion::GetFrameToNum(unsigned frame, unsigned mode) {
  ZOL_SLOMO_ASSERT(m_dNewFPS != 0.0, "m_dNewFPS", 418);
  return GetFrameToTime(frame / m_dNewFPS, mode);
}

void CSlowMotion::Close() {
  m_pSeqID = nullptr;
  m_dNewFPS = m_dOldFPS = 0.0;
  m_nOldFrames = m_nNewFrames = 0;
  m_nWidth = m_nHeight = 0;
  m_bInterlaced = m_bFieldOrder = m_nFormat = 0;
  m_nBytesPerPixel = 4;
  m_pFrameA = m_pFrameB = nullptr;
  m_nArea = 0;
  release(m_pOutFrame);
  FreeWork();
}

void CSlowMotion::Interpol(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field) {
  if ((m_nCPUFlags & 1) != 0)
    return;
  const SField f = FieldOf(dst, frameA, frameB, field);
  slomo::mixField(f, w, f.dst);
}

void CSlowMotion::StaticSel(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field) {
  const SField f = FieldOf(dst, frameA, frameB, field);
  slomo::mixField(f, w, f.dst);
  slomo::markField(f, f.dst);
}

void CSlowMotion::CopyFrame(const void *src, void *dst, unsigned words, unsigned rows, unsigned stride) {
  slomo::copyRows(static_cast<const unsigned char *>(src), static_cast<unsigned char *>(dst), words, rows,
                  stride);
}

/// The field (or frame) that a method works on: of an interlaced frame every second row.
CSlowMotion::SField CSlowMotion::FieldOf(void *dst, const void *frameA, const void *frameB,
                                         unsigned field) const {
  const unsigned words = (m_nWidth * m_nBytesPerPixel + 3) / 4;
  const bool interlaced = m_bInterlaced != 0;
  const size_t offset = interlaced && field != 0 ? size_t{words} * 4 : 0;
  return {{static_cast<const unsigned char *>(frameA) + offset,
           static_cast<const unsigned char *>(frameB) + offset, words, interlaced ? m_nHeight / 2 : m_nHeight,
           size_t{words} * (interlaced ? 8 : 4)},
          static_cast<unsigned char *>(dst) + offset};
}

/// Kept until Close; null when it cannot be had.
CSlowMotion::SWork *CSlowMotion::Work() {
  if (m_pWork == nullptr) // no plain new: it would bring exception handling along
    if (void *memory = std::malloc(sizeof(SWork)); memory != nullptr)
      m_pWork = new (memory) SWork;
  return m_pWork;
}

void CSlowMotion::FreeWork() {
  release(m_pFillStack);
  release(m_pMask);
  release(m_pObjectList);
  if (m_pWork == nullptr)
    return;
  m_pWork->~SWork();
  std::free(m_pWork);
  m_pWork = nullptr;
}
