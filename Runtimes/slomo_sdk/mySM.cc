#include "Runtimes/slomo_sdk/mySM.h"

#include <cstdlib>

mySM::mySM(const t_ZoHostInfo *host, pic *(*fetch)(t_ZoHostInfo *, void *, double), void *media, double rate,
           unsigned width, unsigned height, unsigned first, unsigned count)
    : m_pCache(nullptr), m_dRate(rate), m_nMediaWidth(width), m_nMediaHeight(height), m_nFirst(first),
      m_nCount(count), m_Host(*host), m_pHost(&m_Host), m_pFetch(fetch), m_pMedia(media) {
  m_Host.Width = static_cast<int32_t>(width);
  m_Host.Height = static_cast<int32_t>(height);
}

void *mySM::FrameProvider(void *, unsigned frame) {
  for (const SFrameNode *node = m_pCache; node != nullptr; node = node->next)
    if (node->frame == frame)
      return node->picture->Pixels;

  // The node first: a picture that could not be listed would never be released.
  auto *node = static_cast<SFrameNode *>(std::malloc(sizeof(SFrameNode)));
  if (node == nullptr)
    return nullptr;
  pic *picture = m_pFetch(m_pHost, m_pMedia, frame / m_dRate);
  if (picture == nullptr) {
    std::free(node);
    return nullptr;
  }
  *node = {m_pCache, nullptr, frame, picture};
  if (m_pCache != nullptr)
    m_pCache->prev = node;
  m_pCache = node;
  return picture->Pixels;
}
