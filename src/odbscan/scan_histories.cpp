#include <fmt/core.h>

#include <algorithm>
#include <iterator>

#include "odbscan/object_info.h"
#include "odbscan/scan_context.h"
#include "odbstore/layout.h"
#include "odbstore/names.h"

namespace odbscan {

namespace {

namespace attributes = odbstore::attributes;
namespace links = odbstore::links;

struct Region {
  std::string name;
  odbstore::HistoryRegionInfo info;
  std::vector<odbstore::OutputEntry> outputs;
};

Region scanRegion(const h5::Group& group, const std::string& name, ScanContext& context) {
  Region region{name, readHistoryRegionInfo(group), {}};
  const std::optional<h5::Group> outputs = context.once(group.findGroup(links::kOutputs));
  for (const std::string& output : memberNames(outputs)) {
    context.guarded([&] {
      const h5::Dataset dataset = context.once(outputs->dataset(odbstore::linkFromName(output)));
      if (dataset.dims().size() != 2) dataset.fail("a history must have the shape [samples, numbers of a sample]");
      if (!dataset.isFloat()) dataset.fail("must hold floating-point numbers");
      region.outputs.push_back({output, context.addArray(dataset, false), 0,
                                static_cast<std::int64_t>(dataset.dims()[0]),
                                static_cast<std::int64_t>(dataset.dims()[1])});
    });
  }
  return region;
}

// The columns of packed histories: those of the regions have one entry for each region, those of the outputs one for
// each output.
class PackedHistories {
 public:
  PackedHistories(const h5::Group& group, ScanContext& context) : group_(group), context_(context) {}

  std::vector<Region> run() {
    readRegions();
    readOutputs();
    return std::move(regions_);
  }

 private:
  template <class Value>
  std::vector<Value> columnOf(std::vector<Value> values, const char* link, std::size_t length) const {
    if (values.size() != length) group_.fail(fmt::format("{} must have {} entries", link, length));
    return values;
  }
  std::vector<std::string> texts(const char* link, std::size_t length) {
    return columnOf(context_.once(group_.dataset(link)).readStrings(), link, length);
  }
  std::vector<int> ints(const char* link, std::size_t length) {
    return columnOf(context_.once(group_.dataset(link)).readInts(), link, length);
  }

  void readRegions() {
    const std::vector<std::string> names = context_.once(group_.dataset(links::kRegions)).readStrings();
    const std::size_t count = names.size();
    const std::vector<std::string> descriptions = texts(attributes::kDescription, count);
    const std::vector<int> nodes = ints(attributes::kNode, count);
    const std::vector<int> elements = ints(attributes::kElement, count);
    const std::vector<int> points = ints(attributes::kIntegrationPoint, count);
    const std::vector<int> sectionPoints = ints(attributes::kSectionPoint, count);
    const std::vector<std::string> pointTexts = texts(attributes::kSectionPointDescription, count);
    const std::vector<std::string> sets = texts(attributes::kSet, count);
    for (std::size_t i = 0; i < count; ++i) {
      regions_.push_back({names[i],
                          {descriptions[i], nodes[i], elements[i], points[i], sectionPoints[i], pointTexts[i], sets[i]},
                          {}});
    }
  }

  void readOutputs() {
    const std::vector<std::string> names = context_.once(group_.dataset(links::kNames)).readStrings();
    const std::vector<int> regions = ints(links::kRegion, names.size());
    const std::vector<int> widths = ints(links::kWidth, names.size());
    const h5::Dataset firstSet = context_.once(group_.dataset(links::kFirst));
    const std::vector<std::int64_t> first = firstSet.readLongs();
    const h5::Dataset samples = context_.once(group_.dataset(links::kSamples));
    if (samples.dims().size() != 1 || !samples.isFloat()) samples.fail("must hold floating-point numbers");
    if (first.size() != names.size() + 1 || first.front() != 0 || first.back() != samples.count() ||
        !std::is_sorted(first.begin(), first.end())) {
      firstSet.fail("must go from 0 to the number of samples, with one number more than there are names");
    }
    const std::int32_t array = context_.addArray(samples, false);
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (regions[i] < 0 || static_cast<std::size_t>(regions[i]) >= regions_.size()) {
        group_.fail(fmt::format("the history \"{}\" belongs to a region that does not exist", names[i]));
      }
      const std::int64_t count = first[i + 1] - first[i];
      if (widths[i] < 0 || (widths[i] == 0 ? count != 0 : count % widths[i] != 0)) {
        group_.fail(fmt::format("the history \"{}\" has an incomplete sample", names[i]));
      }
      // Samples of no numbers take no room, so only their shape could say how many there are.
      const std::int64_t rows = widths[i] == 0 ? 0 : count / widths[i];
      regions_[static_cast<std::size_t>(regions[i])].outputs.push_back({names[i], array, first[i], rows, widths[i]});
    }
  }

  const h5::Group& group_;
  ScanContext& context_;
  std::vector<Region> regions_;
};

void addRegions(std::vector<Region> regions, ScanContext& context) {
  const auto byName = [](const auto& a, const auto& b) { return a.name < b.name; };
  std::stable_sort(regions.begin(), regions.end(), byName);
  for (Region& region : regions) {
    std::stable_sort(region.outputs.begin(), region.outputs.end(), byName);
    context.catalog.addHistoryRegion(region.name, region.info);
    for (const odbstore::OutputEntry& output : region.outputs) context.catalog.addHistoryOutput(output);
  }
}

}  // namespace

void scanHistories(const h5::Group& step, ScanContext& context) {
  std::vector<Region> regions;
  context.guarded([&] {
    const std::optional<h5::Group> history = context.once(step.findGroup(links::kHistory));
    for (const std::string& name : memberNames(history)) {
      context.guarded([&] { regions.push_back(scanRegion(memberOf(context, *history, name), name, context)); });
    }
  });
  if (context.layout() >= 3) {
    context.guarded([&] {
      const std::optional<h5::Group> packed = context.once(step.findGroup(links::kPackedHistory));
      if (!packed) return;
      std::vector<Region> more = PackedHistories(*packed, context).run();
      std::move(more.begin(), more.end(), std::back_inserter(regions));
    });
  }
  addRegions(std::move(regions), context);
}

}  // namespace odbscan
