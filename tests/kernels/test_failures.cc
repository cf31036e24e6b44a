// The exported kernels when the host or memory fails: nothing is given, kept or touched, and the host is
// told.

#include "host/services/session.h"
#include "kernels/exports/alpha_shrink.h"
#include "kernels/exports/blur.h"
#include "kernels/exports/mix.h"
#include "kernels/exports/shape.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/outline.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using host::Service;
using host::Session;
using Messages = std::vector<std::optional<std::string>>;

constexpr int kWidth = 20, kHeight = 10;

struct Attempt {
  const char *name;
  const char *message; ///< where no picture can be had, or none; null where none is asked for
  bool (*succeeds)(t_ZoHostInfo *, pic *);
};

pic *other() {
  static const auto picture = test::randomPicture(kWidth, kHeight, 2, 3, 1);
  return picture->record();
}

/// An outline of more segments than the first block of memory takes.
void *manySegments() {
  static const test::OutlineShape shape(test::ring(10, 5, 9, 4, 200, 2));
  return const_cast<host::Shape *>(static_cast<const host::Shape *>(&shape));
}

const Attempt kAttempts[] = {
    {"AlphaShrink", nullptr, [](auto *host, pic *p) { return AlphaShrink(host, p, 2, 2) == 1; }},
    {"FillBlurImage", "Filler: Memory allocation error",
     [](auto *host, pic *p) { return FillBlurImage(host, p, 3) != nullptr; }},
    {"FillBlurAlpha", "Filler: Memory allocation error",
     [](auto *host, pic *p) { return FillBlurAlpha(host, p, 3) != nullptr; }},
    {"FillBlurAlpha, a copy", "Filler: Memory allocation error",
     [](auto *host, pic *p) { return FillBlurAlpha(host, p, 0.5) != nullptr; }},
    {"mix_pics_union", "Memory allocation error",
     [](auto *host, pic *p) { return mix_pics_union(p, other(), 0.5F, host) != nullptr; }},
    {"mix_pics_intersect", "",
     [](auto *host, pic *p) { return mix_pics_intersect(p, other(), 0.5F, host) != nullptr; }},
    {"FillShape", "FillText: Memory allocation failure",
     [](auto *host, pic *p) {
       char error[64];
       return FillShape(host, error, p, manySegments(), 0, ~0U) == 1;
     }},
    {"PointIsInTheShape", nullptr,
     [](auto *host, pic *) { return PointIsInTheShape(host, manySegments(), 10, 4, 0) == 1; }},
};

class Failures : public testing::TestWithParam<Attempt> {
protected:
  /// Whether an attempt in a fresh session succeeds; what holds where it does not.
  bool succeeds(Session &session) {
    COMMON_STR[3] = "Memory allocation error";
    const auto picture = test::randomPicture(kWidth, kHeight, 1);
    const bool success = GetParam().succeeds(session.info(), picture->record());
    EXPECT_TRUE(session.complaints.empty());
    if (!success) {
      EXPECT_EQ(session.pictures.live(), 0U);
      EXPECT_TRUE(test::samePixels(*picture->record(), *test::randomPicture(kWidth, kHeight, 1)->record()));
    }
    return success;
  }
};

TEST_P(Failures, LeaveNothingBehind) {
  Session good("Halvenor");
  EXPECT_TRUE(succeeds(good));
  EXPECT_TRUE(good.messages.empty());
  EXPECT_EQ(good.faults.calls(Service::PicCreate) > 0, GetParam().message != nullptr);
  int failures = 0;
  for (const Service service : {Service::PicCreate, Service::GeoGetCurves, Service::IsAborted})
    for (int nth = 1; nth <= good.faults.calls(service); ++nth, ++failures) {
      SCOPED_TRACE(testing::Message() << host::serviceName(service) << ' ' << nth);
      Session session("Halvenor");
      session.faults.failAt(service, nth);
      EXPECT_FALSE(succeeds(session));
      EXPECT_EQ(session.faults.calls(service), nth);
      const bool told = service == Service::PicCreate && GetParam().message[0] != 0;
      EXPECT_EQ(session.messages, told ? Messages{GetParam().message} : Messages{});
    }
  EXPECT_GE(failures, 1);
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(testing::Message() << "malloc " << nth);
    Session session("Halvenor");
    const test::FailingMalloc failing(nth);
    const bool success = succeeds(session);
    EXPECT_EQ(success, !failing.failed());
    if (success || !failing.failed())
      break;
  }
}

INSTANTIATE_TEST_SUITE_P(, Failures, testing::ValuesIn(kAttempts), [](const auto &attempt) {
  std::string name = attempt.param.name;
  std::erase_if(name, [](unsigned char c) { return std::isalnum(c) == 0; });
  return name;
});

} // namespace
} // namespace zol
