// Which slab of a block holds which frame.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace odbstore {

// Made from a list of frames without repetition, in the order of their slabs. A step may have a hundred thousand frames
// and as many blocks as fields, so nothing is kept for a frame that is not listed, and nothing at all if slab i is
// frame i.
class FrameSlabs {
 public:
  // Slab i holds frame i, for all frames of a step.
  explicit FrameSlabs(int frames) : count_(frames) {}
  explicit FrameSlabs(std::span<const std::int32_t> frames);

  // -1 if the frame is not listed.
  std::int64_t slabOf(int frame) const;
  std::int64_t count() const { return count_; }
  // In the order of the slabs.
  std::vector<int> frames() const;

 private:
  std::int64_t count_;
  bool isListed_ = false;
  std::vector<std::pair<int, int>> slabByFrame_;  // ascending; empty if nothing is listed
};

}  // namespace odbstore
