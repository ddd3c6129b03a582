// The rows of one field output at one location of the model, as whole arrays.
//
//     const odb_SequenceFieldBulkData& blocks = field.bulkDataBlocks();
//     for (int b = 0; b < blocks.size(); ++b) {
//       const odb_FieldBulkData& block = blocks.constGet(b);
//       const float* rows = block.data();  // null where the block is in double precision
//       for (int i = 0; rows != nullptr && i < block.valueCount(); ++i) use(rows + i * block.width());
//     }
#pragma once

#include <functional>
#include <memory>

#include "odbaccess/odb_FieldBulkTile.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_String.h"

// A block, shared with the field output that handed it out. Its numbers and labels are read from the
// file when they are first asked for; pointers are good while a copy of the block lives. What cannot
// be read is an odb_Exception.
class odb_FieldBulkData {
 public:
  explicit odb_FieldBulkData(std::shared_ptr<const odb_detail::BlockStorage> storage) : storage_(std::move(storage)) {}

  // The data-type code, see odb_DataTypeEnum; it can differ from block to block of a field.
  int type() const;
  // odb_PrecisionEnum: 0 when data() holds the rows, else dataDouble() does.
  int precision() const;
  // The instance that the rows lie in.
  odb_String instanceName() const;
  // Number of rows.
  int valueCount() const;
  // Number of columns of data() or dataDouble().
  int width() const;

  // The rows, [valueCount, width], row by row; null in the other precision. A node-based block hands out
  // the columns as they are stored. An element-based tensor block has component 11, 22, 33, 12, 13, 23 in
  // column 0 to 5, up to the last one it stores, 0 in a column that it does not store.
  float* data() const;
  double* dataDouble() const;

  // The names of the stored components: the block's own, else the field's.
  odb_Sequence<odb_String> componentLabels() const;

  // Number of different elements that the rows belong to; 0 for rows of nodes.
  int numberOfElements() const;
  // One label per row, or null: of the element, of the node, and the number of the integration point.
  int* elementLabels() const;
  int* nodeLabels() const;
  int* integrationPoints() const;

  // The equivalent (Mises) stress of every row of a tensor block; null otherwise.
  float* mises() const;

  // Hands out all rows in order, a tile after the other, so that a reduction which needs each row once never has a
  // large block in memory. Nothing that data() would keep is kept. What `take` throws passes through.
  void forEachTile(const std::function<void(const odb_FieldBulkTile&)>& take) const;

  // Rows that many places of the model share (the tensor at a node, of all elements around it) are often stored once.
  // As forEachTile(), with every stored row once, in the order of first use: what does not depend on how often a row
  // occurs is the same, and mostly much sooner done. first() counts stored rows, of which there are storedCount(). Of
  // each row the stored row that it is; null where row i is stored row i.
  void forEachStoredTile(const std::function<void(const odb_FieldBulkTile&)>& take) const;
  int storedCount() const;
  const int* rowOf() const;

 private:
  std::shared_ptr<const odb_detail::BlockStorage> storage_;
};

using odb_SequenceFieldBulkData = odb_Sequence<odb_FieldBulkData>;
