// What one start serves at most.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zol::studio {

constexpr char kDropPath[] = "/api/drop";

constexpr uint64_t kLargestBody = uint64_t{1} << 20; ///< bytes of a request
constexpr uint64_t kLargestDrop = uint64_t{4} << 30; ///< bytes of a file that is dropped on the page
constexpr uint64_t kAllDrops = uint64_t{16} << 30;
constexpr size_t kMostListed = 500;   ///< files of the folder
constexpr int kMostConnections = 128; ///< the next wait to be accepted
constexpr int kLongestSide = 8192;    ///< of a picture that is shown
constexpr size_t kMostStages = 32;
constexpr size_t kMostClients = 12;              ///< whose inputs are kept open
constexpr size_t kMostOpened = 3;                ///< sets of inputs that are kept open for each
constexpr double kLongestSound = 600;            ///< seconds
constexpr size_t kMostSamples = size_t{1} << 26; ///< of a sound that is sent
constexpr size_t kMostJobs = 2;                  ///< at once
constexpr size_t kKeptJobs = 32;                 ///< told of afterwards

} // namespace zol::studio
