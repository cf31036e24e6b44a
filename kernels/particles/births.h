// Births of particles: on ticks of the clip's own time and by chance that follows from the seed alone, so
// that any frame can be made by itself and rates of frames do not matter.
#pragma once

#include "kernels/noise/hash.h"

#include <cstdint>

namespace zol {

inline constexpr int kTicksASecond = 32;
inline constexpr int kTicksThatCount = 60 * kTicksASecond; ///< nothing lives longer
inline constexpr double kMostParticles = 262144;           ///< alive at once, on the average

/// How many particles a tick bears at `rate` a second, thinned or not. On the average rate / 32.
inline int birthsOf(uint32_t seed, int64_t tick, double rate) {
  return static_cast<int>(rate / kTicksASecond + hash(seed, static_cast<uint32_t>(tick), 0, 0) * 0x1p-32);
}

/// What is special about particle `number` of a tick.
class ParticleChance {
public:
  ParticleChance(uint32_t seed, int64_t tick, int number)
      : row_(hashRow(seed, static_cast<uint32_t>(tick), static_cast<uint32_t>(number))) {}

  enum Matter : uint32_t { kMoment = 1, kKept, kLife, kSpeed, kSize, kDirection, kPlaces };

  /// 0 to below 1, for each matter, and each from kPlaces on, of its own.
  [[nodiscard]] double share(uint32_t matter) const { return mixBits(row_ + matter) * 0x1p-32; }

  /// 1 - variation to 1 + variation.
  [[nodiscard]] double factor(Matter matter, double variation) const {
    return 1 + variation * (2 * share(matter) - 1);
  }

private:
  uint32_t row_;
};

/// How long ago a particle was born, in seconds, and how long it lives.
struct Lifetime {
  [[nodiscard]] bool isNow() const { return age >= 0 && age < life; }

  double age, life;
};

/// Of the births of a tick, which follow one another.
inline Lifetime lifetimeOf(const ParticleChance &chance, int64_t tick, int number, int births, double now,
                           double life, double variation) {
  const double moment = (number + chance.share(ParticleChance::kMoment)) / births;
  return {now - (static_cast<double>(tick) + moment) / kTicksASecond,
          life * chance.factor(ParticleChance::kLife, variation)};
}

/// Whether a particle is among those that are left where births at `rate` would be too many: of each tick the
/// same share, and always the same ones.
inline bool isKept(const ParticleChance &chance, double rate, double life) {
  return rate * life <= kMostParticles ||
         chance.share(ParticleChance::kKept) * (rate * life) < kMostParticles;
}

} // namespace zol
