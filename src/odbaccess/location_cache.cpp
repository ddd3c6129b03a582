#include "odbaccess/location_cache.h"

#include <cstddef>

namespace odb_detail {

namespace {

// What fits into the cache beside what is done with it.
constexpr std::size_t kPieceBytes = std::size_t{256} << 10U;

}  // namespace

LocationCache::LocationCache() : readAhead_(std::make_shared<ReadAhead>(kPieceBytes)) {}

std::shared_ptr<LocationStorage> LocationCache::of(const std::shared_ptr<const odbstore::StoredLocation>& stored) {
  std::shared_ptr<LocationStorage>& kept = locations_[stored.get()];
  if (!kept) kept = std::make_shared<LocationStorage>(stored, readAhead_);
  return kept;
}

}  // namespace odb_detail
