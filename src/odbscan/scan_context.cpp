#include "odbscan/scan_context.h"

#include <algorithm>

#include "odbstore/names.h"

namespace odbscan {

namespace {

odbstore::Packing packingOf(const h5::Dataset& dataset) {
  using h5::Filter;
  using odbstore::Packing;
  const std::vector<Filter> filters = dataset.filters();
  if (filters.empty()) return Packing::unpacked;
  if (filters == std::vector{Filter::gzip}) return Packing::gzip;
  if (filters == std::vector{Filter::fletcher32}) return Packing::fletcher32;
  if (filters == std::vector{Filter::gzip, Filter::fletcher32}) return Packing::gzipFletcher32;
  if (filters == std::vector{Filter::fletcher32, Filter::gzip}) return Packing::fletcher32Gzip;
  dataset.fail("has its filters more than once");
}

}  // namespace

std::int32_t ScanContext::addArray(const h5::Dataset& dataset, bool isSlabbed) {
  const std::optional<base::NumberFormat> format = dataset.format();
  if (!format) dataset.fail("holds numbers of an unsupported format");
  const std::optional<std::int64_t> offset = dataset.offset();
  const bool isPacked = dataset.count() > 0 && !offset && dataset.isChunked();
  if (dataset.count() > 0 && !offset && !isPacked) dataset.fail("the position of its numbers is unknown");
  const bool hasSlabs = (isSlabbed || isPacked) && !dataset.dims().empty();
  const std::int64_t slabs = hasSlabs ? static_cast<std::int64_t>(dataset.dims().front()) : 1;
  std::int64_t slabNumbers = 1;
  for (std::size_t i = hasSlabs ? 1 : 0; i < dataset.dims().size(); ++i) {
    slabNumbers *= static_cast<std::int64_t>(dataset.dims()[i]);
  }
  if (!isPacked) return catalog.addArray(*format, slabs, slabNumbers, offset.value_or(0));
  std::vector<odbstore::Extent> chunks;
  for (const h5::Chunk& chunk : dataset.chunks()) chunks.push_back({chunk.offset, chunk.offset + chunk.bytes});
  return catalog.addPackedArray(*format, packingOf(dataset), slabs, slabNumbers, chunks);
}

void ScanContext::addLocation(const std::string& id, const odbstore::LocationEntry& location) {
  catalog.addLocation(id, location);
  locations_.emplace(id, locations_.size());
}

std::optional<std::size_t> ScanContext::findLocation(const std::string& id) const {
  const auto known = locations_.find(id);
  if (known == locations_.end()) return std::nullopt;
  return known->second;
}

std::int32_t ScanContext::addLabels(const h5::Dataset& dataset) {
  if (dataset.dims().size() != 1) dataset.fail("labels must have one dimension");
  if (!dataset.isInteger()) dataset.fail("must hold integers");
  return addArray(dataset, false);
}

std::vector<std::string> memberNames(const std::optional<h5::Group>& group) {
  return group ? memberNames(*group) : std::vector<std::string>();
}

std::vector<std::string> memberNames(const h5::Group& group) {
  std::vector<std::string> names = group.links();
  for (std::string& name : names) name = odbstore::nameFromLink(name);
  std::sort(names.begin(), names.end());
  return names;
}

h5::Group memberOf(ScanContext& context, const h5::Group& group, const std::string& name) {
  return context.once(group.group(odbstore::linkFromName(name)));
}

}  // namespace odbscan
