// Pictures and sound of a document, as the page asks for them while its values change.
#pragma once

#include "apps/studio/document.h"
#include "host/render/chain.h"
#include "host/render/settle.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>

namespace zol::studio {

/// Who asks, and which of his requests it is: those with smaller numbers are given up.
struct Asking {
  std::string client;
  uint64_t number = 0;
};

struct Shown {
  std::string rgba; ///< rows of straight alpha
  int width = 0, height = 0;
  host::Timeline timeline; ///< of the whole size
  uint64_t frames = 0;
  bool lasts = false; ///< whether an input tells how long it is
  bool opaque = true;
};

struct Heard {
  std::string wav; ///< 32-bit floats
  double duration = 0;
};

/// Each client has instances of its own for each request, and keeps the inputs of its last ones open. Methods
/// may be called by several threads at once; a client's requests wait for one another.
class Preview {
public:
  explicit Preview(const host::EffectLibrary &library) : library_(library) {}

  /// The frame of that number, as large as it is rendered or to be held by the box. Throws Refusal
  /// for a plan that makes no sense, NothingShown for what does not render, Overtaken.
  Shown picture(const host::RenderPlan &plan, const std::string &source, const Asking &asking,
                std::pair<int, int> box, uint64_t frame);

  /// All of its sound, as far as kLongestSound.
  Heard sound(const host::RenderPlan &plan, const Asking &asking);

  /// Everything that is rendered now is given up.
  void stop() { stopping_ = true; }

private:
  struct Opened;
  struct Client {
    std::string name;
    std::mutex work;
    std::atomic<uint64_t> newest = 0;
    std::list<Opened> opened; ///< the last used first
  };
  class Turn;
  template <class Render> static decltype(auto) rendered(const Turn &turn, Render render);

  std::shared_ptr<Client> clientOf(const std::string &name);
  Opened &open(Client &client, Opened wanted, const host::RenderPlan &plan);

  const host::EffectLibrary &library_;
  std::mutex mutex_;
  std::list<std::shared_ptr<Client>> clients_; ///< the last that asked first
  std::atomic<bool> stopping_ = false;
};

} // namespace zol::studio
