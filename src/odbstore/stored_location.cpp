#include "odbstore/stored_location.h"

#include <fmt/core.h>

#include <algorithm>

#include "odbstore/catalog_paths.h"
#include "odbstore/database_file.h"

namespace odbstore {

namespace {

// The first row whose stored row does not exist or is not the next to be used; nothing if there is no such row.
std::optional<std::size_t> firstWrong(const std::vector<int>& rowOf) {
  int due = 0;
  for (std::size_t i = 0; i < rowOf.size(); ++i) {
    if (rowOf[i] < 0 || rowOf[i] > due) return i;
    if (rowOf[i] == due) ++due;
  }
  return std::nullopt;
}

}  // namespace

StoredLocation::StoredLocation(std::shared_ptr<const DatabaseFile> file, std::size_t index)
    : file_(std::move(file)), index_(index) {}

LocationInfo StoredLocation::info() const {
  const Catalog& catalog = file_->catalog();
  const columns::Locations& all = *catalog.columns().locations();
  return {std::string(catalog.text(all.instance()->Get(at(index_)))), position(),
          std::string(catalog.text(all.elementType()->Get(at(index_)))), all.sectionPoint()->Get(at(index_)),
          std::string(catalog.text(all.sectionPointDescription()->Get(at(index_))))};
}

Position StoredLocation::position() const {
  return static_cast<Position>(file_->catalog().columns().locations()->position()->Get(at(index_)));
}

std::int64_t StoredLocation::rows() const { return file_->catalog().columns().locations()->rows()->Get(at(index_)); }

std::int64_t StoredLocation::storedRows() const {
  return file_->catalog().columns().locations()->storedRows()->Get(at(index_));
}

bool StoredLocation::isIndexed() const {
  return file_->catalog().columns().locations()->rowOf()->Get(at(index_)) != kNone;
}

const std::vector<int>& StoredLocation::labels(std::int32_t array, const char* link,
                                               std::optional<std::vector<int>>& kept) const {
  if (!kept && array == kNone) kept.emplace();
  if (!kept) {
    kept = file_->readInts(array, 0, rows(), [&] { return locationPath(file_->catalog(), index_) + "/" + link; });
  }
  return *kept;
}

const std::vector<int>& StoredLocation::nodeLabels() const {
  return labels(file_->catalog().columns().locations()->nodeLabels()->Get(at(index_)), links::kNodeLabels, nodes_);
}

const std::vector<int>& StoredLocation::elementLabels() const {
  return labels(file_->catalog().columns().locations()->elementLabels()->Get(at(index_)), links::kElementLabels,
                elements_);
}

const std::vector<int>& StoredLocation::integrationPoints() const {
  return labels(file_->catalog().columns().locations()->integrationPoints()->Get(at(index_)), links::kIntegrationPoints,
                points_);
}

const std::vector<int>& StoredLocation::rowOf() const {
  if (rowOf_) return *rowOf_;
  std::optional<std::vector<int>> read;
  labels(file_->catalog().columns().locations()->rowOf()->Get(at(index_)), links::kRowOf, read);
  const std::string path = locationPath(file_->catalog(), index_) + "/" + links::kRowOf;
  if (const std::optional<std::size_t> wrong = firstWrong(*read)) {
    file_->fail(path, fmt::format("row {} is stored row {}, which does not exist or is not the next to be used", *wrong,
                                  (*read)[*wrong]));
  }
  const int used = read->empty() ? 0 : *std::max_element(read->begin(), read->end()) + 1;
  if (isIndexed() && used != storedRows()) {
    file_->fail(path, fmt::format("uses {} of the {} rows that its location stores", used, storedRows()));
  }
  rowOf_ = std::move(read);
  return *rowOf_;
}

}  // namespace odbstore
