// The rows of a field as arrays over the points or cells of the mesh.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "export/row_targets.h"
#include "inspect/mesh/model_mesh.h"
#include "odbstore/stored_field.h"

namespace vtk_export {

struct ArrayInfo {
  std::string name;
  Association association = Association::points;
  // Names of the columns; empty for a scalar. Those of a full tensor stand in the order of VTK: 11, 22, 33, 12, 23, 13.
  std::vector<std::string> components;
  bool isDouble = false;
  // Whether a place has several rows that differ in one of the frames: the array has their mean then, and says so in
  // its name.
  bool isMean = false;

  std::size_t width() const { return components.empty() ? 1 : components.size(); }
};

// One array for each section point, and for points and cells where a field has both. What a block does not have of the
// columns of the others, and a place without rows, is NaN.
class FieldArrays {
 public:
  // The frames are those that will be asked for. With `withEachPoint` the rows of every integration point are an array
  // of their own too, "S_IP point 3". All must live as long.
  FieldArrays(const odbstore::StoredField& field, const inspect::ModelMesh& mesh, const std::vector<int>& frames,
              bool withEachPoint);

  bool existsIn(int frame) const { return field_.existsIn(frame); }
  const std::vector<ArrayInfo>& infos() const { return infos_; }
  // [points or cells, width] in a frame that has the field.
  std::vector<double> values(std::size_t array, int frame);
  // Rows of labels that the mesh does not have, in one frame: they are in no array.
  std::int64_t lostRows() const { return lost_; }

 private:
  // What makes an array of its own.
  struct Group {
    odbstore::Position position = odbstore::Position::nodal;
    int sectionPoint = 0;
    std::string sectionPointDescription;
    std::optional<int> point;
    std::vector<std::size_t> blocks;
    // Of the blocks in the frame that was asked for last.
    std::vector<const odbstore::StoredBlock*> present;
    RowTargets targets;
  };

  void makeGroups(bool withEachPoint);
  std::string nameOf(const Group& group) const;
  ArrayInfo infoOf(const Group& group) const;
  bool differs(std::size_t array, const std::vector<int>& frames);
  // Makes `present` and `targets` those of the frame.
  void turnTo(Group& group, int frame);
  // [stored rows of all blocks, width]
  std::vector<double> rowsOf(const Group& group, const ArrayInfo& info, int frame) const;

  const odbstore::StoredField& field_;
  const inspect::ModelMesh& mesh_;
  std::vector<Group> groups_;
  std::vector<ArrayInfo> infos_;
  std::int64_t lost_ = 0;
};

}  // namespace vtk_export
