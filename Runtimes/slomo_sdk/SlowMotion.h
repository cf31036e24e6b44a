// The slow-motion engine: makes a frame for any time out of a sequence of source frames. A client derives
// from CSlowMotion, supplies the frames, and links the library; this header is all that it includes.
//
// A frame is `height` rows of (width * bytesPerPixel + 3) / 4 words of 32 bits, packed. All arithmetic
// works on the four bytes of a word, whatever the pixel format.
#ifndef ZOL_SLOW_MOTION_H
#define ZOL_SLOW_MOTION_H

#include <cstddef>

#define ZOL_SLOW_MOTION_API __attribute__((visibility("default")))
#define ZOL_SLOW_MOTION_OWN __attribute__((visibility("hidden")))

/// What GetObjectData tells of one object; the box is inclusive, in words and rows.
struct SObjectData {
  unsigned minX, maxX, minY, maxY;
  unsigned topX;  // the smallest x met on the rows that were topmost when they were met
  unsigned count; // of words
};

/// Not copyable in effect: it owns its buffers. One object serves one thread at a time.
class ZOL_SLOW_MOTION_API CSlowMotion {
public:
  CSlowMotion();
  ~CSlowMotion();
  CSlowMotion(const CSlowMotion &) = delete;
  CSlowMotion &operator=(const CSlowMotion &) = delete;

  /// The pixels of source frame `frame`, or null when it cannot be had. They stay the provider's and
  /// must hold until the engine's answer has been read.
  virtual void *FrameProvider(void *pSeqID, unsigned frame) = 0;

  /// Sets sizes (pixels), source rate (frames a second), interlacing, the field that comes first, and the
  /// format (1: 2 bytes a pixel, else 4). 0, or -1 when memory runs out or a coordinate of the frame
  /// would not fit 16 bits; the engine is then of no use until a call succeeds.
  int SetSequence(void *pSeqID, unsigned width, unsigned height, double fps, unsigned frames,
                  unsigned interlaced, unsigned fieldOrder, unsigned format);

  /// The frame for `time` seconds; mode 1 moves blocks, 2 moves objects, any other mixes. The answer is the
  /// engine's own buffer (until the next call), a frame of the provider's, or null without any frame.
  void *GetFrameToTime(double time, unsigned mode);
  /// The same for frame number `frame` at the rate m_dNewFPS.
  void *GetFrameToNum(unsigned frame, unsigned mode);

  /// Frees everything and forgets the sequence.
  void Close();

  // ---- Methods: write the frame, or the field, that lies w / 32768 of the way from frame A to frame B ----
  void Interpol(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field);
  /// Mixes what is alike in both frames and marks what changed with the word 0x01000000.
  void StaticSel(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field);
  void Vector(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field);
  void Object(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field);

  // ---- Building blocks. Widths are in words, strides in bytes; words x rows must not exceed the
  // sequence's where flood fills are made. ----

  /// Sum of squared byte differences; once a row's end finds it above `limit`, extrapolated from there.
  unsigned ComputeMSE(const void *a, const void *b, unsigned stride, unsigned words, unsigned rows,
                      unsigned limit);
  /// Searches pBuf1's block at (bx, by) in pBuf2, around vec; vec becomes the displacement.
  unsigned GetVector(const void *pBuf1, const void *pBuf2, unsigned words, unsigned rows, unsigned stride,
                     unsigned bx, unsigned by, unsigned bw, unsigned bh, int *vec);
  /// Takes the connected words of one key among those marked 0x01000000; answers their number.
  unsigned GetObjectData(const void *pic, void *marks, unsigned words, unsigned rows, unsigned stride,
                         unsigned x, unsigned y, SObjectData *data);
  /// Searches an object like `ref` around (x, y); 1 and its displacement, or 0.
  unsigned FindObject(const void *pic, unsigned words, unsigned rows, unsigned stride, unsigned key,
                      const SObjectData *ref, unsigned x, unsigned y, int *vec, void *marks);
  /// Clears the mask and sets it over the connected words of one key; answers 0.
  unsigned GetObject(void *mask, const void *pic, unsigned words, unsigned rows, unsigned stride, unsigned x,
                     unsigned y);
  /// Mixes the masked object at (x, y) in place and clears its mask.
  void InterpolateObject(void *dst, const void *a, const void *b, void *mask, unsigned words, unsigned rows,
                         unsigned stride, unsigned w, unsigned x, unsigned y);
  /// Copies the masked words from startRow on, read at vecSrc and written at vecDst from where they are;
  /// answers 0.
  unsigned MoveObject(void *dst, const void *src, const void *mask, unsigned words, unsigned rows,
                      unsigned stride, int *vecSrc, int *vecDst, unsigned startRow);
  void CopyFrame(const void *src, void *dst, unsigned words, unsigned rows, unsigned stride);

  // ---- State ----
  void *m_pSeqID;         // the client's name of the sequence, handed to FrameProvider
  double m_dNewFPS;       // rate of the numbers given to GetFrameToNum
  double m_dOldFPS;       // rate of the source frames
  unsigned m_bInterlaced; // 0 or 1
  unsigned m_bFieldOrder; // 0 or 1
  unsigned m_nFormat;
  unsigned m_nWidth;
  unsigned m_nHeight;
  unsigned m_nOldFrames;
  unsigned m_nNewFrames;
  unsigned m_nBytesPerPixel;
  unsigned m_nCPUFlags; // bit 0 switches mixing and block search off
  unsigned char *m_pOutFrame;
  unsigned char *m_pFrameA; // the provider's
  unsigned char *m_pFrameB; // the provider's
  unsigned m_SquareTable[512];
  unsigned *m_pSquares;         // the table's entry for a difference of 0
  unsigned char *m_pMask;       // work frame
  unsigned char *m_pObjectList; // 4 x int16 an object: x, y, dx, dy
  unsigned char *m_pFillStack;  // 2 x int16 a word: x, y

private:
  struct ZOL_SLOW_MOTION_OWN SField;
  struct ZOL_SLOW_MOTION_OWN SWork;

  ZOL_SLOW_MOTION_OWN SField FieldOf(void *dst, const void *frameA, const void *frameB, unsigned field) const;
  bool HasBuffers() const { return m_pFillStack != nullptr; } // the last one that SetSequence allocates
  size_t StackPlaces() const { return HasBuffers() ? m_nArea / 2 : 0; }
  ZOL_SLOW_MOTION_OWN SWork *Work();
  ZOL_SLOW_MOTION_OWN void FreeWork();

  unsigned m_nArea; // bytes of the mask and of the object list; the fill stack has twice as many
  SWork *m_pWork;   // of the searches; results do not depend on having it
  size_t m_nReserved;
};

/// 1 when the processor identifies itself and has MMX, else 0.
extern "C" ZOL_SLOW_MOTION_API unsigned GetCPUProp(void);

#endif
