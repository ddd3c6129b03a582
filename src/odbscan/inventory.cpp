#include "odbscan/inventory.h"

#include <algorithm>
#include <unordered_set>

#include "base/file_error.h"

namespace odbscan {

namespace {

// The layout needs eight.
constexpr int kDeepest = 32;

class Walk {
 public:
  void visit(const h5::Group& group, int depth) {
    // Hard links may lead to a group twice, or back to it.
    if (!seen_.insert(group.address()).second) return;
    checkAttributes(group);
    if (depth > kDeepest) group.fail("groups are nested too deeply");
    for (const std::string& link : group.links()) {
      guarded([&] { visitMember(group, link, depth); });
    }
  }

  odbstore::Inspection take() {
    std::sort(inspection_.extents.begin(), inspection_.extents.end(),
              [](const odbstore::DataExtent& a, const odbstore::DataExtent& b) { return a.begin < b.begin; });
    return std::move(inspection_);
  }

  template <class Action>
  void guarded(Action&& action) {
    try {
      action();
    } catch (const base::FileError& error) {
      inspection_.problems.push_back({error.object(), error.reason()});
    }
  }

 private:
  void visitMember(const h5::Group& group, const std::string& link, int depth) {
    switch (group.kindOf(link)) {
      case h5::MemberKind::group:
        return visit(group.group(link), depth + 1);
      case h5::MemberKind::dataset:
        return visit(group.dataset(link));
      default:
        group.fail("the member \"" + link + "\" is neither a group nor a data set");
    }
  }

  void visit(const h5::Dataset& dataset) {
    if (!seen_.insert(dataset.address()).second) return;
    checkAttributes(dataset);
    if (dataset.count() == 0) return;
    const std::int64_t slabs = dataset.dims().empty() ? 1 : static_cast<std::int64_t>(dataset.dims().front());
    if (const std::optional<std::int64_t> start = dataset.offset()) {
      const std::int64_t bytes = dataset.bytes();
      inspection_.extents.push_back({*start, *start + bytes, dataset.path(), 0, bytes / slabs});
      return;
    }
    if (!dataset.isChunked()) return;
    std::int64_t slab = 0;
    for (const h5::Chunk& chunk : dataset.chunks()) {
      inspection_.extents.push_back({chunk.offset, chunk.offset + chunk.bytes, dataset.path(), slab++, chunk.bytes});
    }
  }

  void checkAttributes(const h5::Object& object) {
    for (const std::string& name : object.attributes()) {
      guarded([&] { object.checkAttribute(name); });
    }
  }

  odbstore::Inspection inspection_;
  std::unordered_set<std::uint64_t> seen_;
};

}  // namespace

odbstore::Inspection takeInventory(const h5::Group& root) {
  Walk walk;
  walk.guarded([&] { walk.visit(root, 0); });
  return walk.take();
}

}  // namespace odbscan
