// Makes the library's general allocator fail at a chosen call.
#pragma once

namespace zol::test {

/// From construction to destruction the nth call of malloc (from 1) made by the objects linked into this
/// program answers null, and every later one succeeds again.
class FailingMalloc {
public:
  explicit FailingMalloc(int nth);
  ~FailingMalloc();
  FailingMalloc(const FailingMalloc &) = delete;
  FailingMalloc &operator=(const FailingMalloc &) = delete;

  /// Whether the failing call has come.
  [[nodiscard]] bool failed() const;
};

} // namespace zol::test
