/* The border between a host and the effects library: records, services, callbacks and exports.
 *
 * Plain C, complete in itself: a host needs no other file of the project. Offsets are those of the
 * shipping target (32-bit x86, System V, doubles aligned to 4 inside records) and are asserted there;
 * other targets use the same members in the same order at their natural alignment.
 *
 * Times are in seconds unless said otherwise. Positions and sizes are in pixels of the frame. */
#ifndef ZOL_H
#define ZOL_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct t_ZoHostInfo t_ZoHostInfo;

/* ---- Pictures ---- */

/* One pixel; read as a little-endian word it is 0xAARRGGBB. Alpha 255 is opaque. */
typedef struct _color_t {
  uint8_t b, g, r, a;
} _color_t;

/* A picture: Width x Height pixels, rows top to bottom without padding, placed at (X, Y) of the
 * frame. A host may keep words of its own behind the record. */
typedef struct pic {
  int16_t X, Y, Width, Height;
  _color_t *Pixels;
} pic;

/* ---- Audio ---- */

/* A block of Frames x Channels interleaved samples, nominally within -1 to 1, Rate frames a second. */
typedef struct t_ZoAudio {
  uint32_t Private[2];
  uint32_t Frames;
  uint32_t Rate;
  uint16_t Channels;
  float *Samples;
} t_ZoAudio;

/* ---- Data sets ---- */

/* How a host draws one item of a data set. */
typedef struct t_ZoDatasetDisplay {
  _color_t Colour;
  float Scale;
} t_ZoDatasetDisplay;

/* ---- Geometries ---- */

/* Receives one cubic segment: its ends P0 and P1, and the handles as vectors from the end they
 * belong to. Answers 1 to go on; at 0 the host stops the enumeration, which then fails. */
typedef int (*t_ZoSegmentFn)(void *user, const double P0[2], const double P1[2], const double H0[2],
                             const double H1[2]);

/* ---- Media ---- */

/* What is known of an input as a whole; what is not known is 0. A host fills it on the statement
 * "ZoMediaInfo( 0x%X, 0x%X );" with the input's handle and the record's address, and answers 1. */
typedef struct t_ZoMediaInfo {
  double Rate;     /* frames a second */
  double Duration; /* seconds */
  int32_t Width;   /* of its frames */
  int32_t Height;
  int32_t HasVideo; /* the rest: 0 or 1 */
  int32_t HasAudio;
  int32_t Interlaced;
  int32_t TopFieldFirst;
} t_ZoMediaInfo;

/* ---- Callbacks that an effect hands over in its declaration ---- */

typedef int (*t_ZoInitFn)(t_ZoHostInfo *);
typedef pic *(*t_ZoRenderVideoFn)(t_ZoHostInfo *);
typedef int (*t_ZoRenderVideoRTFn)(t_ZoHostInfo *); /* 1, or 0 when nothing was rendered */
typedef t_ZoAudio *(*t_ZoRenderAudioFn)(t_ZoHostInfo *);
typedef int (*t_ZoDialogOpenFn)(t_ZoHostInfo *);
typedef int (*t_ZoDialogItemEditFn)(t_ZoHostInfo *, int item);
typedef int (*t_ZoProbeFn)(t_ZoHostInfo *, void *media); /* 1 it has pictures, 2 sound, 3 both */
typedef int (*t_ZoInitByMediaFn)(t_ZoHostInfo *, void *media);
typedef int (*t_ZoDeleteUserDataFn)(t_ZoHostInfo *);
typedef int (*t_ZoTrimFn)(t_ZoHostInfo *, double edges[2]); /* on FrameTime's axis; corrected in place */

/* ---- Services: an array of 84 code pointers, one member a slot ---- */

typedef void (*t_ZoSlot)(void); /* a slot that the library does not call */

typedef struct t_ZoServices {
  t_ZoSlot Slot0, Slot1;
  void (*Message)(t_ZoHostInfo *, const char *text); /* 2; text may be null */
  int (*ErrorCountReport)(t_ZoHostInfo *, int, int, int count);
  pic *(*PicCreate)(int width, int height); /* 4 */
  t_ZoSlot Slot5;
  void (*PicFree)(pic *); /* 6 */
  pic *(*PicDuplicate)(pic *);
  t_ZoSlot Slot8, Slot9, Slot10, Slot11, Slot12, Slot13, Slot14, Slot15;
  t_ZoAudio *(*AudioCreate)(double from, double to, unsigned format0, unsigned format1); /* 16 */
  t_ZoSlot Slot17, Slot18, Slot19, Slot20, Slot21, Slot22, Slot23;
  int (*ScriptExecute)(t_ZoHostInfo *, const char *text); /* 24 */
  long long (*ScriptExecuteHi)(t_ZoHostInfo *, t_ZoHostInfo *, const char *text);
  void *(*ParamGetGeometry)(t_ZoHostInfo *, int field, int item);
  long double (*ParamGetFloat)(t_ZoHostInfo *, int field, int item, double time);
  void (*ParamSetFloat)(t_ZoHostInfo *, int field, int item, double time, double value); /* 28 */
  t_ZoSlot Slot29;
  void (*ParamGetColor)(t_ZoHostInfo *, int field, int item, _color_t *out, double time); /* 30 */
  void (*ParamSetColor)(t_ZoHostInfo *, int field, int item, const _color_t *, double time);
  void *(*InputGetPic)(t_ZoHostInfo *, int field, int item); /* 32; an input handle or null */
  void (*InputSet)(t_ZoHostInfo *, int field, int item, void *clip);
  int (*ParamGetInt)(t_ZoHostInfo *, int field, int item);
  void (*ParamSetInt)(t_ZoHostInfo *, int field, int item, int value); /* 35 */
  t_ZoSlot Slot36, Slot37, Slot38, Slot39;
  void (*DatasetItemAdd)(t_ZoHostInfo *, int field, const char *kind, const char *name,
                         const t_ZoDatasetDisplay *); /* 40 */
  void (*DatasetClear)(t_ZoHostInfo *, int field, int count);
  int (*DataFieldItemCount)(t_ZoHostInfo *, int field); /* 42 */
  t_ZoSlot Slot43, Slot44, Slot45;
  void (*InputsAdd)(t_ZoHostInfo *, int field, int a, int b); /* 46 */
  t_ZoSlot Slot47;
  void (*InputsRemoveSelected)(t_ZoHostInfo *, int field); /* 48 */
  t_ZoSlot Slot49, Slot50;
  void (*DialogRefresh)(t_ZoHostInfo *, int, int); /* 51 */
  void (*DatasetRefresh)(t_ZoHostInfo *, int field, int from, int count);
  t_ZoSlot Slot53, Slot54, Slot55, Slot56;
  void *(*ClipGetDefault)(t_ZoHostInfo *); /* 57 */
  t_ZoSlot Slot58, Slot59, Slot60, Slot61, Slot62, Slot63, Slot64, Slot65;
  /* 66; left, top, right, bottom */
  void (*GeoGetBox)(t_ZoHostInfo *, void *geometry, double box[4], double time);
  int (*GeoGetCurves)(t_ZoHostInfo *, void *geometry, double time, int one, void *user, t_ZoSegmentFn,
                      int zero); /* 67; 1 = success */
  t_ZoSlot Slot68, Slot69;
  int (*IsAborted)(t_ZoHostInfo *);                                    /* 70 */
  pic *(*PicGetSized)(t_ZoHostInfo *, void *input, double time);       /* stays the host's */
  int (*PicResample)(t_ZoHostInfo *, const _color_t *src, int srcStep, /* 72; steps in pixels */
                     int srcWidth, int srcHeight, _color_t *dst, int dstStep, int dstWidth, int dstHeight,
                     int mode);
  t_ZoAudio *(*InputGetAudio)(t_ZoHostInfo *, void *input, double from, double to); /* stays the host's */
  t_ZoSlot Slot74, Slot75, Slot76, Slot77, Slot78, Slot79, Slot80;
  const uint16_t *(*TranslateW)(t_ZoHostInfo *, const char *section, const char *text); /* 81 */
  t_ZoSlot Slot82, Slot83;
} t_ZoServices;

/* ---- The context that every entry and callback receives; the host owns it ---- */

struct t_ZoHostInfo {
  const char *Identity; /* "Halvenor" or "Quorbel", compared without regard to case */
  uint32_t Private0;
  const t_ZoServices *Services;
  uint32_t Private1[2];
  double FrameTime; /* of the frame, on the inputs' time axis */
  double Time;      /* at which parameters are read; an effect spans 0 to 1 */
  double FrameRate; /* frames a second */
  int32_t Width;    /* of the output frame */
  int32_t Height;
  uint32_t Private2[4];
  double PixelAspect;    /* width of a pixel over its height */
  int32_t BitsPerPixel;  /* of the real-time buffers */
  double VideoClipStart; /* on FrameTime's axis */
  void *OutputBuffer;    /* real-time renders: Width x Height pixels, no padding */
  void *InputBuffers[2]; /* real-time renders: same layout */
  double BlockStart;     /* audio renders: the block to render */
  double BlockEnd;
  uint32_t AudioFormat[2]; /* audio renders: handed to AudioCreate unread */
  double ClipStart;        /* audio renders: the clip that the parameters' axis spans */
  double ClipEnd;
};

#if defined(__i386__)
#ifdef __cplusplus
#define ZOL_ASSERT_OFFSET(record, member, offset)                                                            \
  static_assert(offsetof(record, member) == (offset), #record "." #member)
#define ZOL_ASSERT_SIZE(record, size) static_assert(sizeof(record) == (size), #record)
#else
#define ZOL_ASSERT_OFFSET(record, member, offset)                                                            \
  _Static_assert(offsetof(record, member) == (offset), #record "." #member)
#define ZOL_ASSERT_SIZE(record, size) _Static_assert(sizeof(record) == (size), #record)
#endif
ZOL_ASSERT_SIZE(_color_t, 4);
ZOL_ASSERT_SIZE(pic, 12);
ZOL_ASSERT_OFFSET(pic, Pixels, 8);
ZOL_ASSERT_OFFSET(t_ZoAudio, Frames, 8);
ZOL_ASSERT_OFFSET(t_ZoAudio, Rate, 12);
ZOL_ASSERT_OFFSET(t_ZoAudio, Channels, 16);
ZOL_ASSERT_OFFSET(t_ZoAudio, Samples, 20);
ZOL_ASSERT_OFFSET(t_ZoDatasetDisplay, Scale, 4);
ZOL_ASSERT_SIZE(t_ZoMediaInfo, 40);
ZOL_ASSERT_OFFSET(t_ZoMediaInfo, Width, 16);
ZOL_ASSERT_SIZE(t_ZoServices, 84 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, AudioCreate, 16 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, ScriptExecute, 24 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, ParamSetInt, 35 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, DatasetItemAdd, 40 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, InputsRemoveSelected, 48 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, DatasetRefresh, 52 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, ClipGetDefault, 57 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, GeoGetCurves, 67 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, InputGetAudio, 73 * 4);
ZOL_ASSERT_OFFSET(t_ZoServices, TranslateW, 81 * 4);
ZOL_ASSERT_SIZE(t_ZoHostInfo, 140);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, Services, 8);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, FrameTime, 20);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, Width, 44);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, PixelAspect, 68);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, BitsPerPixel, 76);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, VideoClipStart, 80);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, OutputBuffer, 88);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, BlockStart, 100);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, AudioFormat, 116);
ZOL_ASSERT_OFFSET(t_ZoHostInfo, ClipStart, 124);
#undef ZOL_ASSERT_OFFSET
#undef ZOL_ASSERT_SIZE
#endif

/* ---- Exports ---- */

/* The entry: called once by the host that loaded the library; declares every effect; answers 1. */
int ZoDeclare(t_ZoHostInfo *);

/* Format one statement and hand it to the host's ScriptExecuteHi or ScriptExecute, whose answer is
 * returned. A statement of 65,536 bytes or more is not sent, and the answer is 0. */
long long ZoScriptExecuteHi(t_ZoHostInfo *, const char *format, ...);
int ZoScriptExecute(t_ZoHostInfo *, const char *format, ...);

const char *LangSubstring(int language); /* 1 "RU", 2 "DE", else "EN" */

extern const char *COMMON_STR[10]; /* the first six are filled by ZoDeclare */

#ifdef __cplusplus
}
#endif
#endif
