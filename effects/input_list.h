// The dialogs of effects with a list of inputs and buttons that add to it and remove from it.
#pragma once

#include "frame/zol.h"

namespace zol {

struct InputList {
  int inputs, add, remove; ///< fields

  [[nodiscard]] int count(t_ZoHostInfo *host) const {
    return host->Services->DataFieldItemCount(host, inputs);
  }
  /// There is one input at least when the dialog opens.
  void open(t_ZoHostInfo *host) const {
    const int before = count(host);
    if (before < 1)
      host->Services->InputsAdd(host, inputs, before, before);
  }
  /// Whether the edited item was one of the buttons, which is done then.
  bool edit(t_ZoHostInfo *host, int item) const {
    if (item == add) {
      host->Services->InputsAdd(host, inputs, 1, 1);
    } else if (item == remove) {
      host->Services->InputsRemoveSelected(host, inputs);
      if (count(host) < 1)
        host->Services->InputsAdd(host, inputs, 0, 0);
    } else {
      return false;
    }
    host->Services->DialogRefresh(host, 0, 0);
    return true;
  }
};

} // namespace zol
