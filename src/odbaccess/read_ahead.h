// Reads a long run of pieces with the help of a thread that reads ahead of the piece in use.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace odb_detail {

// One run at a time. The caller takes the pieces in order, and reads one itself where it would have to wait for the
// thread. The thread starts with the first run that is worth it, where the system lets it, and sleeps between runs.
class ReadAhead {
 public:
  // Fills the buffer with piece `index`; called on either thread. What it throws reaches the caller of run().
  using Read = std::function<void(std::size_t index, std::byte* buffer)>;
  // Gets the pieces in order, on the caller's thread; the bytes are good during the call.
  using Take = std::function<void(std::size_t index, const std::byte* buffer)>;

  explicit ReadAhead(std::size_t pieceBytes) : pieceBytes_(pieceBytes) {}
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;
  ~ReadAhead();

  std::size_t pieceBytes() const { return pieceBytes_; }

  // Reads `pieces` pieces and hands them to `take`. An exception of either ends the run.
  void run(std::size_t pieces, const Read& read, const Take& take);

 private:
  // Enough that neither side waits for the other's short delays, few enough to stay in the cache.
  static constexpr std::size_t kBuffers = 4;

  void runAlone(std::size_t pieces, const Read& read, const Take& take);
  void takeAll(const Take& take);
  void work();
  bool hasThread();
  void begin();
  void awaitEnd();

  // The next piece that nobody has begun to read, if there is one and a buffer for it.
  std::optional<std::size_t> claim();
  void fill(std::size_t index);
  bool isClaimed() const { return next_ >= pieces_; }
  std::byte* bufferOf(std::size_t index) { return buffers_.get() + (index % kBuffers) * pieceBytes_; }

  std::size_t pieceBytes_;
  std::unique_ptr<std::byte[]> buffers_;  // kBuffers of them, made with the first run
  std::thread thread_;

  // The run in hand.
  const Read* read_ = nullptr;
  std::size_t pieces_ = 0;
  std::atomic<std::size_t> next_{0};                            // the first piece that nobody has begun to read
  std::atomic<std::size_t> taken_{0};                           // pieces done with: their buffers are free
  std::array<std::atomic<std::size_t>, kBuffers> filled_ = {};  // the piece in each buffer, counted from 1
  std::exception_ptr failure_;                                  // of the thread; set before hasFailed_
  std::atomic<bool> hasFailed_{false};                          // set before the piece counts as filled

  // Runs handed to the thread and runs that it is through with.
  std::atomic<std::uint32_t> begun_{0};
  std::atomic<std::uint32_t> ended_{0};
  bool isQuitting_ = false;
};

}  // namespace odb_detail
