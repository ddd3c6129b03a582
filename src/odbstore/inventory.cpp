// What the reader says of a file as a whole: its objects one by one, and what nobody reads but programs for pictures.

#include <algorithm>
#include <unordered_set>

#include "odbstore/checksums.h"
#include "odbstore/names.h"
#include "odbstore/reader_internal.h"

namespace odbstore {

namespace {

// The layout needs eight.
constexpr int kDeepest = 32;

class Walk {
 public:
  void visit(const h5::Group& group, int depth) {
    // Hard links may lead to a group twice, or back to it.
    if (!seen_.insert(group.address()).second) return;
    checkAttributes(group);
    if (depth > kDeepest) group.fail("groups lie too deep inside each other");
    for (const std::string& link : group.links()) {
      guarded([&] { visitMember(group, link, depth); });
    }
  }

  Inventory take() {
    std::sort(inventory_.extents.begin(), inventory_.extents.end(),
              [](const DataExtent& a, const DataExtent& b) { return a.begin < b.begin; });
    return std::move(inventory_);
  }

  template <class Action>
  void guarded(Action&& action) {
    try {
      action();
    } catch (const StoreError& error) {
      inventory_.problems.emplace_back(error.what());
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
    checkAttributes(dataset);
    for (const h5::Stretch& stretch : dataset.stretches()) {
      inventory_.extents.push_back(
          {stretch.offset, stretch.offset + stretch.bytes, dataset.path(), stretch.firstSlab, stretch.slabBytes});
    }
  }

  void checkAttributes(const h5::Object& object) {
    for (const std::string& name : object.attributes()) {
      guarded([&] { object.checkAttribute(name); });
    }
  }

  Inventory inventory_;
  std::unordered_set<std::uint64_t> seen_;
};

void checkLabels(const h5::Dataset& labels) {
  if (labels.dims().size() != 1 || !labels.isInteger()) labels.fail("labels must be integers in one dimension");
}

void checkNodes(const h5::Group& nodes) {
  const h5::Dataset labels = nodes.dataset(links::kLabels);
  checkLabels(labels);
  const h5::Dataset coordinates = nodes.dataset(links::kCoordinates);
  if (!coordinates.isFloat() || coordinates.dims() != h5::Dims{labels.dims()[0], 3}) {
    coordinates.fail("must be three floating-point numbers for each node label");
  }
}

void checkElements(const h5::Group& elements) {
  const h5::Dataset labels = elements.dataset(links::kLabels);
  checkLabels(labels);
  const h5::Dataset connectivity = elements.dataset(links::kConnectivity);
  if (!connectivity.isInteger() || connectivity.dims().size() != 2 || connectivity.dims()[0] != labels.dims()[0]) {
    connectivity.fail("must be the node labels of each element");
  }
}

}  // namespace

void Reader::checkMesh(const std::string& instance) const {
  const h5::Group owner = file_->root().group(links::kAssembly).group(links::kInstances).group(linkFromName(instance));
  const std::optional<h5::Group> mesh = owner.findGroup(links::kMesh);
  if (!mesh) return;
  if (const std::optional<h5::Group> nodes = mesh->findGroup(links::kNodes)) checkNodes(*nodes);
  const std::optional<h5::Group> types = mesh->findGroup(links::kElements);
  for (const std::string& type : memberNames(types)) checkElements(types->group(linkFromName(type)));
}

std::optional<ChecksumPlace> Reader::checksums() const { return findChecksums(file_->root()); }

Inventory Reader::inventory() const {
  Walk walk;
  walk.guarded([&] { walk.visit(file_->root(), 0); });
  return walk.take();
}

}  // namespace odbstore
