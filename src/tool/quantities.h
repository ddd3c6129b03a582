// Values of options that have a unit.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tool {

// "90", "90s", "1.5m", "2h", "1d": seconds where no unit is given. Throws UsageError, also for 0 and more than a year.
std::chrono::milliseconds durationFrom(const std::string& text);

// "500M", "1.5G", "200000000": bytes, K, M, G and T being powers of 1000, as disks and `kolvex` count. Throws
// UsageError, also for 0 and more than 10^18.
std::uint64_t bytesFrom(const std::string& text);

// "35 s", "12 min", "3.5 h", for people.
std::string durationText(double seconds);

}  // namespace tool
