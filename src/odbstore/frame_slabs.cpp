#include "odbstore/frame_slabs.h"

#include <algorithm>
#include <numeric>

namespace odbstore {

FrameSlabs::FrameSlabs(std::span<const std::int32_t> frames)
    : count_(static_cast<std::int64_t>(frames.size())), isListed_(true) {
  slabByFrame_.reserve(frames.size());
  for (const int frame : frames) slabByFrame_.emplace_back(frame, static_cast<int>(slabByFrame_.size()));
  if (!std::is_sorted(slabByFrame_.begin(), slabByFrame_.end())) std::sort(slabByFrame_.begin(), slabByFrame_.end());
}

std::int64_t FrameSlabs::slabOf(int frame) const {
  if (!isListed_) return frame < count_ ? frame : -1;
  const auto found = std::lower_bound(slabByFrame_.begin(), slabByFrame_.end(), std::pair(frame, 0));
  return found == slabByFrame_.end() || found->first != frame ? -1 : found->second;
}

std::vector<int> FrameSlabs::frames() const {
  std::vector<int> frames(static_cast<std::size_t>(count_));
  if (!isListed_) std::iota(frames.begin(), frames.end(), 0);
  for (const auto& [frame, slab] : slabByFrame_) frames[static_cast<std::size_t>(slab)] = frame;
  return frames;
}

}  // namespace odbstore
