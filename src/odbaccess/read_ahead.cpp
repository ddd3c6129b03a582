#include "odbaccess/read_ahead.h"

#include <algorithm>
#include <system_error>

namespace odb_detail {

namespace {

// Shorter runs are over before a sleeping thread is awake.
constexpr std::size_t kShortRun = 8;

// Waits until the counter is no longer `value`. A piece takes a few microseconds, to sleep and to be woken takes
// longer: so the counter is looked at for a while first.
template <class Counter>
void waitWhile(const std::atomic<Counter>& counter, Counter value) {
  constexpr int kLooks = 2000;
  for (int i = 0; i < kLooks; ++i) {
    if (counter.load(std::memory_order_acquire) != value) return;
#if defined(__x86_64__)
    __builtin_ia32_pause();
#endif
  }
  counter.wait(value);
}

}  // namespace

ReadAhead::~ReadAhead() {
  if (!thread_.joinable()) return;
  awaitEnd();
  isQuitting_ = true;
  ++begun_;
  begun_.notify_one();
  thread_.join();
}

void ReadAhead::run(std::size_t pieces, const Read& read, const Take& take) {
  // Not initialised: pages that no piece reaches are never touched.
  if (!buffers_) buffers_ = std::make_unique_for_overwrite<std::byte[]>(kBuffers * pieceBytes_);
  if (pieces < kShortRun || std::thread::hardware_concurrency() < 2 || !hasThread()) {
    return runAlone(pieces, read, take);
  }
  awaitEnd();
  read_ = &read;
  pieces_ = pieces;
  hasFailed_ = false;
  next_ = 0;
  taken_ = 0;
  for (std::atomic<std::size_t>& piece : filled_) piece = 0;
  begin();
  try {
    takeAll(take);
  } catch (...) {
    // The thread finds nothing more to read; whatever it is reading now is not wanted any more.
    next_ = pieces_;
    taken_ += kBuffers;
    taken_.notify_one();
    awaitEnd();
    throw;
  }
  awaitEnd();
}

void ReadAhead::runAlone(std::size_t pieces, const Read& read, const Take& take) {
  for (std::size_t i = 0; i < pieces; ++i) {
    read(i, buffers_.get());
    take(i, buffers_.get());
  }
}

void ReadAhead::takeAll(const Take& take) {
  for (std::size_t i = 0; i < pieces_; ++i) {
    const std::atomic<std::size_t>& filled = filled_[i % kBuffers];
    for (std::size_t piece = filled; piece != i + 1; piece = filled) {
      if (const std::optional<std::size_t> index = claim()) {
        fill(*index);
      } else {
        waitWhile(filled, piece);
      }
    }
    if (hasFailed_) std::rethrow_exception(failure_);
    take(i, bufferOf(i));
    ++taken_;
    taken_.notify_one();
  }
}

bool ReadAhead::hasThread() {
  if (thread_.joinable()) return true;
  try {
    thread_ = std::thread([this] { work(); });
  } catch (const std::system_error&) {
    // No more threads are allowed. It is slower alone, and no reason to fail.
    return false;
  }
  return true;
}

void ReadAhead::begin() {
  ++begun_;
  begun_.notify_one();
}

void ReadAhead::awaitEnd() {
  for (std::uint32_t ended = ended_; ended != begun_; ended = ended_) waitWhile(ended_, ended);
}

void ReadAhead::work() {
  for (std::uint32_t done = 0;; ++done) {
    waitWhile(begun_, done);
    if (isQuitting_) return;
    while (!isClaimed()) {
      const std::size_t taken = taken_;
      const std::optional<std::size_t> index = claim();
      if (!index) {
        if (!isClaimed()) waitWhile(taken_, taken);
        continue;
      }
      try {
        fill(*index);
      } catch (...) {
        failure_ = std::current_exception();
        hasFailed_ = true;
        next_ = pieces_;
        filled_[*index % kBuffers] = *index + 1;
        filled_[*index % kBuffers].notify_one();
      }
    }
    ++ended_;
    ended_.notify_one();
  }
}

std::optional<std::size_t> ReadAhead::claim() {
  std::size_t index = next_;
  do {
    if (index >= pieces_ || index >= taken_ + kBuffers) return std::nullopt;
  } while (!next_.compare_exchange_weak(index, index + 1));
  return index;
}

void ReadAhead::fill(std::size_t index) {
  (*read_)(index, bufferOf(index));
  filled_[index % kBuffers] = index + 1;
  filled_[index % kBuffers].notify_one();
}

}  // namespace odb_detail
