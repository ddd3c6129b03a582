#include "reduce/side_by_side.h"

#include <atomic>
#include <system_error>
#include <thread>
#include <utility>

namespace {

// Selecting among fewer takes less time than starting a thread.
constexpr std::size_t kWorthAThread = 100'000;

}  // namespace

void SideBySide::add(std::size_t values, std::function<void()> job) {
  jobs_.push_back(std::move(job));
  values_ += values;
}

void SideBySide::run() const {
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t i = next++; i < jobs_.size(); i = next++) jobs_[i]();
  };
  std::thread second;
  if (jobs_.size() > 1 && values_ >= kWorthAThread && std::thread::hardware_concurrency() > 1) {
    try {
      second = std::thread(work);
    } catch (const std::system_error&) {
      // There are no more threads to be had.
    }
  }
  work();
  if (second.joinable()) second.join();
}
