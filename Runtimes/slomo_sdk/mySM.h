// The engine over a host's media reader, with a cache of the frames it fetched.
#ifndef ZOL_MY_SM_H
#define ZOL_MY_SM_H

#include "Runtimes/slomo_sdk/SlowMotion.h"
#include "frame/zol.h"

struct SFrameNode {
  SFrameNode *next, *prev; // next is older
  unsigned frame;
  pic *picture;
};

class ZOL_SLOW_MOTION_API mySM : public CSlowMotion {
public:
  /// `fetch` answers the media's frame at a time in seconds, or null; it receives a copy of the context
  /// whose frame size is the media's. `rate` is the media's, in frames a second.
  mySM(const t_ZoHostInfo *host, pic *(*fetch)(t_ZoHostInfo *, void *media, double time), void *media,
       double rate, unsigned width, unsigned height, unsigned first, unsigned count);

  void *FrameProvider(void *pSeqID, unsigned frame) override;

  /// Newest first, nodes from malloc; the client releases the pictures through the host and frees the nodes.
  SFrameNode *m_pCache;

  // The media, as the constructor was told.
  double m_dRate;
  unsigned m_nMediaWidth, m_nMediaHeight, m_nFirst, m_nCount;

private:
  t_ZoHostInfo m_Host;
  t_ZoHostInfo *m_pHost;
  pic *(*m_pFetch)(t_ZoHostInfo *, void *media, double time);
  void *m_pMedia;
};

#endif
