// The class's object motion and its building blocks, over kernels/motion/.

#include "kernels/motion/objects.h"
#include "Runtimes/slomo_sdk/engine.h"
#include "kernels/motion/object_motion.h"

using namespace zol;
using slomo::FillStack;
using slomo::ObjectBox;
using slomo::Place;

namespace {

FillStack stackOf(unsigned char *memory, size_t places) {
  return {reinterpret_cast<Place *>(memory), places};
}

} // namespace

void CSlowMotion::Object(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field) {
  const SField f = FieldOf(dst, frameA, frameB, field);
  if (!HasBuffers() || f.words == 0 || f.rows == 0)
    return;
  SWork *work = Work();
  const slomo::ObjectMemory memory{m_pMask,
                                   reinterpret_cast<slomo::MovedObject *>(m_pObjectList),
                                   m_nArea / sizeof(slomo::MovedObject),
                                   reinterpret_cast<Place *>(m_pFillStack),
                                   StackPlaces(),
                                   work != nullptr ? work->tablesOf(slomo::objectTableBytes(f)) : nullptr};
  slomo::moveObjects(f, w, memory, f.dst);
}

unsigned CSlowMotion::GetObjectData(const void *pic, void *marks, unsigned words, unsigned rows,
                                    unsigned stride, unsigned x, unsigned y, SObjectData *data) {
  const ObjectBox box =
      slomo::takeObject({words, rows, stride}, pic, marks, x, y, stackOf(m_pFillStack, StackPlaces()));
  *data = {box.minX, box.maxX, box.minY, box.maxY, box.topX, box.count};
  return box.count;
}

unsigned CSlowMotion::FindObject(const void *pic, unsigned words, unsigned rows, unsigned stride,
                                 unsigned key, const SObjectData *ref, unsigned x, unsigned y, int *vec,
                                 void *marks) {
  const ObjectBox sought{ref->minX, ref->maxX, ref->minY, ref->maxY, ref->topX, ref->count};
  return slomo::walkToObject({words, rows, stride}, pic, key, sought, x, y, vec, marks,
                             stackOf(m_pFillStack, StackPlaces()))
             ? 1
             : 0;
}

unsigned CSlowMotion::GetObject(void *mask, const void *pic, unsigned words, unsigned rows, unsigned stride,
                                unsigned x, unsigned y) {
  slomo::maskObject({words, rows, stride}, pic, mask, x, y, stackOf(m_pFillStack, StackPlaces()));
  return 0;
}

void CSlowMotion::InterpolateObject(void *dst, const void *a, const void *b, void *mask, unsigned words,
                                    unsigned rows, unsigned stride, unsigned w, unsigned x, unsigned y) {
  slomo::mixMasked({words, rows, stride}, a, b, dst, mask, w, x, y, stackOf(m_pFillStack, StackPlaces()));
}

unsigned CSlowMotion::MoveObject(void *dst, const void *src, const void *mask, unsigned words, unsigned rows,
                                 unsigned stride, int *vecSrc, int *vecDst, unsigned startRow) {
  slomo::copyMasked({words, rows, stride}, src, dst, mask, vecSrc, vecDst, startRow);
  return 0;
}
