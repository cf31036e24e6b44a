#include "kernels/compositing/route_channels.h"

#include "plain/route_channels.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

TEST(RouteChannels, GivesThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 1000; ++round) {
    const int count = dice.below(70);
    std::unique_ptr<host::PictureBuffer> pictures[8];
    PixelRoute routes[4];
    RoutedRows rows[4];
    for (int channel = 0; channel < 4; ++channel) {
      for (auto *picture = pictures + 2 * channel; picture < pictures + 2 * channel + 2; ++picture)
        *picture = test::randomPicture(70, 1, dice.word());
      routes[channel] = {static_cast<ChannelSource>(dice.below(7)), dice.below(3) == 0,
                         dice.below(2) * dice.below(4096)};
      const bool reads = routes[channel].source < ChannelSource::none;
      rows[channel] = {reads ? pictures[2 * channel]->record()->Pixels : nullptr,
                       reads && routes[channel].weight > 0 ? pictures[2 * channel + 1]->record()->Pixels
                                                           : nullptr};
    }
    if (round % 5 == 0) // two pictures dissolve
      for (int channel = 0; channel < 4; ++channel) {
        routes[channel] = {static_cast<ChannelSource>(channel), false, 1 + round};
        rows[channel] = {pictures[0]->record()->Pixels, pictures[1]->record()->Pixels};
      }
    test::atEveryLevel([&] {
      const auto out = test::randomPicture(70, 1, 1), before = test::randomPicture(70, 1, 1);
      ZOL_SELECT(routeChannels)(routes, rows, out->record()->Pixels, count);
      for (int i = 0; i < 70; ++i) {
        uint8_t bytes[4];
        for (int channel = 0; channel < 4; ++channel) {
          const auto &[source, inverts, weight] = routes[channel];
          const auto pixel = [&](const _color_t *row) { return row != nullptr ? row[i] : _color_t{}; };
          bytes[channel] = plain::routed(pixel(rows[channel].first), pixel(rows[channel].second),
                                         static_cast<int>(source), weight, inverts);
        }
        _color_t want = bytes[3] == 0 ? _color_t{} : _color_t{bytes[0], bytes[1], bytes[2], bytes[3]};
        if (i >= count)
          want = before->record()->Pixels[i];
        ASSERT_EQ(std::memcmp(out->record()->Pixels + i, &want, sizeof want), 0) << round << ' ' << i;
      }
    });
  }
}

} // namespace
} // namespace zol
