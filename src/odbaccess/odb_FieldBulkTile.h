// Some rows of a block, one after the other.
//
//     float largest = -std::numeric_limits<float>::max();
//     float smallest = std::numeric_limits<float>::max();
//     block.forEachTile([&](const odb_FieldBulkTile& tile) { tile.takeMises(largest, smallest); });
#pragma once

namespace odb_detail {
class BlockStorage;
}

// Handed out by odb_FieldBulkData::forEachTile(), and good only during that call: the rows of the next tile take the
// place of these.
class odb_FieldBulkTile {
 public:
  odb_FieldBulkTile(const odb_detail::BlockStorage& block, int first, int count, const float* floats,
                    const double* doubles)
      : block_(block), first_(first), count_(count), floats_(floats), doubles_(doubles) {}

  // The place of the first row in the block, and the number of rows.
  int first() const { return first_; }
  int count() const { return count_; }

  // The rows as odb_FieldBulkData::data() has them, [count, width]; null in the other precision.
  const float* data() const { return floats_; }
  const double* dataDouble() const { return doubles_; }

  // Of an element-based tensor block the equivalent (Mises) stress of every row, as odb_FieldBulkData::mises() has it.
  void mises(float* out) const;
  // The same without the values: `max` becomes the largest of it and of them, by `>`, `min` the smallest, by `<`.
  void takeMises(float& max, float& min) const;

 private:
  const odb_detail::BlockStorage& block_;
  int first_;
  int count_;
  const float* floats_;
  const double* doubles_;
};
