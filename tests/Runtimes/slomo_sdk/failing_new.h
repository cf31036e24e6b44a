// Makes array new without exceptions fail at a chosen call, and counts it.
#pragma once

namespace zol::test {

/// While it lives, the nth call (from 1) and all later ones answer null.
class FailingNew {
public:
  explicit FailingNew(int nth);
  ~FailingNew();
  FailingNew(const FailingNew &) = delete;
  FailingNew &operator=(const FailingNew &) = delete;
};

} // namespace zol::test
