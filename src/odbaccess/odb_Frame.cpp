#include "odbaccess/odb_Frame.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

#include "odbaccess/field_storage.h"
#include "odbaccess/frame_content.h"
#include "odbaccess/step_storage.h"

int odb_Frame::incrementNumber() const { return step_->stored()->incrementNumber(index_); }
double odb_Frame::frameValue() const { return step_->stored()->frame(index_).value; }
odb_String odb_Frame::description() const { return odb_String(step_->stored()->frame(index_).description); }

odb_FieldOutputRepository& odb_Frame::fieldOutputs() const {
  if (!content_) {
    const std::vector<odbstore::StoredField>& stored = step_->stored()->fields();
    std::map<odb_String, odb_FieldOutput> fields;
    for (std::size_t i = 0; i < stored.size(); ++i) {
      if (!stored[i].existsIn(index_)) continue;
      const std::shared_ptr<const odb_detail::FieldPlan>& plan = step_->plan(i, index_);
      fields.emplace_hint(fields.end(), plan->name(),
                          odb_FieldOutput(std::make_shared<const odb_detail::FieldStorage>(plan, index_)));
    }
    content_ = std::make_shared<odb_detail::FrameContent>(
        odb_detail::FrameContent{odb_FieldOutputRepository(std::move(fields))});
  }
  return content_->fields;
}
