#include "verify/damage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>

namespace verify {

namespace {

using odbstore::DataExtent;

struct Bytes {
  std::int64_t begin;
  std::int64_t end;
};

// The bytes of blocks side by side together; the last ends with the file.
std::vector<Bytes> runsOf(const std::vector<std::int64_t>& blocks, std::int64_t blockSize, std::int64_t fileBytes) {
  std::vector<Bytes> runs;
  for (const std::int64_t block : blocks) {
    const std::int64_t begin = block * blockSize;
    const std::int64_t end = std::min(begin + blockSize, fileBytes);
    if (!runs.empty() && runs.back().end == begin) {
      runs.back().end = end;
    } else {
      runs.push_back({begin, end});
    }
  }
  return runs;
}

// The data sets whose bytes are among those of a run, with the slabs that are hit, in file order.
class Hits {
 public:
  Hits(const Bytes& run, const std::vector<DataExtent>& extents, const Bytes& sums) {
    std::int64_t covered = run.begin;
    const auto cover = [&](std::int64_t begin, std::int64_t end) {
      hasGap_ = hasGap_ || begin > covered;
      covered = std::max(covered, end);
    };
    bool sumsAreDue = sums.begin < run.end && sums.end > run.begin;
    for (const DataExtent& extent : extents) {
      if (extent.begin >= run.end) break;
      if (extent.end <= run.begin) continue;
      if (sumsAreDue && sums.begin <= extent.begin) cover(sums.begin, sums.end);
      cover(extent.begin, extent.end);
      if (extent.path != "/checksums") add(extent, run);
    }
    if (sumsAreDue) cover(sums.begin, sums.end);
    hasGap_ = hasGap_ || covered < run.end;
  }

  bool hasGap() const { return hasGap_; }
  const std::vector<std::string>& paths() const { return paths_; }
  const std::vector<std::int64_t>& slabs(const std::string& path) const { return slabs_.at(path); }

 private:
  void add(const DataExtent& extent, const Bytes& run) {
    const auto [entry, isNew] = slabs_.try_emplace(extent.path);
    if (isNew) paths_.push_back(extent.path);
    const std::int64_t size = std::max<std::int64_t>(extent.slabBytes, 1);
    const std::int64_t first = (std::max(run.begin, extent.begin) - extent.begin) / size;
    const std::int64_t last = (std::min(run.end, extent.end) - extent.begin - 1) / size;
    for (std::int64_t slab = first; slab <= last; ++slab) entry->second.push_back(extent.firstSlab + slab);
  }

  bool hasGap_ = false;
  std::vector<std::string> paths_;
  std::map<std::string, std::vector<std::int64_t>> slabs_;
};

std::string describeHit(const std::string& path, const std::vector<std::int64_t>& slabs, const FramesOf& framesOf) {
  const std::string place = describePlace(path);
  const std::optional<BlockPlace> block = blockOfRows(path);
  if (!block) return place;
  const std::vector<int> all = framesOf(*block);
  std::vector<int> frames;
  for (const std::int64_t slab : slabs) {
    if (slab < static_cast<std::int64_t>(all.size())) frames.push_back(all[static_cast<std::size_t>(slab)]);
  }
  if (frames.empty()) return place;
  std::sort(frames.begin(), frames.end());
  return place + ", " + describeFrames(frames);
}

}  // namespace

std::vector<std::string> describeDamage(const std::vector<std::int64_t>& blocks, const odbstore::ChecksumPlace& place,
                                        std::int64_t fileBytes, const std::vector<DataExtent>& extents,
                                        const FramesOf& framesOf) {
  constexpr std::size_t kMost = 12;
  const Bytes sums{place.offset, place.offset + (place.blocks + 1) * 4};
  std::vector<std::string> texts;
  for (const Bytes& run : runsOf(blocks, place.blockSize, fileBytes)) {
    const Hits hits(run, extents, sums);
    std::vector<std::string> hit;
    for (const std::string& path : hits.paths()) {
      if (hit.size() == kMost) {
        hit.push_back(fmt::format("{} more data sets", hits.paths().size() - kMost));
        break;
      }
      hit.push_back(describeHit(path, hits.slabs(path), framesOf));
    }
    if (hits.hasGap()) hit.emplace_back("the structure of the file");
    texts.push_back(fmt::format("bytes {}..{} are damaged: {}", run.begin, run.end - 1, fmt::join(hit, "; ")));
  }
  return texts;
}

}  // namespace verify
