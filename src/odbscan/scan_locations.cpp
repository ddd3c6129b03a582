#include "odbscan/object_info.h"
#include "odbscan/scan_context.h"
#include "odbstore/layout.h"

namespace odbscan {

namespace {

namespace attributes = odbstore::attributes;
namespace links = odbstore::links;

class LocationScan {
 public:
  LocationScan(const h5::Group& group, ScanContext& context) : group_(group), context_(context) {}

  odbstore::LocationEntry run() {
    entry_.info = readLocationInfo(group_);
    const odbstore::Position position = entry_.info.position;
    takeLabels(links::kNodeLabels, hasNodeLabels(position), entry_.nodeLabels);
    takeLabels(links::kElementLabels, hasElementLabels(position), entry_.elementLabels);
    takeLabels(links::kIntegrationPoints, hasIntegrationPoints(position), entry_.integrationPoints);
    entry_.storedRows = entry_.rows;
    if (context_.layout() >= 3) takeIndex();
    return entry_;
  }

 private:
  void takeLabels(const char* link, bool isWanted, std::int32_t& array) {
    if (!isWanted) return;
    const h5::Dataset labels = context_.once(group_.dataset(link));
    array = context_.addLabels(labels);
    if (hasRows_ && labels.count() != entry_.rows) group_.fail("the label data sets differ in length");
    entry_.rows = labels.count();
    hasRows_ = true;
  }

  void takeIndex() {
    const std::optional<h5::Dataset> rowOf = context_.once(group_.findDataset(links::kRowOf));
    if (!rowOf) return;
    entry_.rowOf = context_.addLabels(*rowOf);
    if (!group_.hasAttribute(attributes::kStoredRows)) group_.fail("has no attribute \"storedRows\"");
    entry_.storedRows = group_.intAttribute(attributes::kStoredRows, 0);
    if (entry_.storedRows < 0) group_.fail("the attribute \"storedRows\" is negative");
  }

  const h5::Group& group_;
  ScanContext& context_;
  odbstore::LocationEntry entry_;
  bool hasRows_ = false;
};

}  // namespace

void scanLocations(const h5::Group& root, ScanContext& context) {
  const std::optional<h5::Group> all = context.once(root.findGroup(links::kLocations));
  for (const std::string& id : memberNames(all)) {
    context.guarded([&] {
      const h5::Group group = memberOf(context, *all, id);
      context.addLocation(id, LocationScan(group, context).run());
    });
  }
}

}  // namespace odbscan
