// The rows of one field at one location.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "odbstore/stored_location.h"

namespace odbstore {

class DatabaseFile;
class FrameSlabs;

// The rows of a block in every frame that has them. Frames are those of the step, from 0.
class StoredBlock {
 public:
  // Block `index` of the catalog, which belongs to the field `field` of the step `step` there.
  StoredBlock(std::shared_ptr<const DatabaseFile> file, std::shared_ptr<const StoredLocation> location,
              std::shared_ptr<const FrameSlabs> slabs, std::size_t step, std::size_t field, std::size_t index);

  const std::shared_ptr<const StoredLocation>& location() const { return location_; }
  // The block's own type and component labels, or those of its field.
  int type() const { return type_; }
  const std::vector<std::string>& componentLabels() const { return labels_; }
  bool isDouble() const { return isDouble_; }
  // Those of its location.
  std::int64_t rows() const { return location_->rows(); }
  // Numbers in a row.
  std::int64_t width() const { return width_; }

  bool existsIn(int frame) const;
  // The frames in which it exists, in the order in which their rows are stored.
  std::vector<int> frames() const;
  // Reads the rows of a frame in which the block exists, [rows, width], into `out`. Not thread-safe.
  void read(int frame, float* out) const;
  void read(int frame, double* out) const;

  // The rows as stored, [stored rows, width]: StoredLocation::rowOf() maps each row to one of these.
  std::int64_t storedRows() const { return rows_; }
  void readStored(int frame, float* out) const;
  void readStored(int frame, double* out) const;

  // Whether readRows() is possible: not for packed rows, nor for rows in a foreign number format.
  bool hasDirectRows() const { return isDirect_; }
  // Reads `count` stored rows from `first` on of a frame in which the block exists, [count, width], in the block's
  // precision. Thread-safe.
  void readRows(int frame, std::int64_t first, std::int64_t count, void* out) const;

 private:
  std::string path() const;
  template <class Number>
  void readExpanded(int frame, Number* out) const;
  template <class Number>
  void readWhole(int frame, Number* out) const;
  void readWindow(std::int64_t slab, void* out) const;

  std::shared_ptr<const DatabaseFile> file_;
  std::shared_ptr<const StoredLocation> location_;
  std::shared_ptr<const FrameSlabs> slabs_;
  std::size_t step_;
  std::size_t field_;
  std::size_t index_;
  std::int32_t data_;
  int type_;
  std::vector<std::string> labels_;
  std::int64_t rows_;
  std::int64_t width_;
  bool isDouble_;
  bool isDirect_;
  std::int64_t slabBytes_;
  // Small frames are mostly read one after the other, and a system call for each would take longer than the reading
  // itself, so a window of several slabs is read at once.
  mutable std::vector<std::byte> window_;
  mutable std::int64_t windowFirst_ = 0;
  mutable std::int64_t windowEnd_ = 0;
};

}  // namespace odbstore
