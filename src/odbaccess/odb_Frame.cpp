#include "odbaccess/odb_Frame.h"

#include <map>

#include "odbaccess/field_storage.h"
#include "odbaccess/frame_content.h"
#include "odbaccess/step_storage.h"

int odb_Frame::incrementNumber() const { return step_->stored()->frame(index_).incrementNumber; }
double odb_Frame::frameValue() const { return step_->stored()->frame(index_).value; }
odb_String odb_Frame::description() const { return odb_String(step_->stored()->frame(index_).description); }

odb_FieldOutputRepository& odb_Frame::fieldOutputs() const {
  if (!content_) {
    std::map<odb_String, odb_FieldOutput> fields;
    for (const odbstore::StoredField& field : step_->stored()->fields()) {
      if (!field.existsIn(index_)) continue;
      fields.emplace(odb_String(field.name),
                     odb_FieldOutput(std::make_shared<const odb_detail::FieldStorage>(step_, field, index_)));
    }
    content_ = std::make_shared<odb_detail::FrameContent>(
        odb_detail::FrameContent{odb_FieldOutputRepository(std::move(fields))});
  }
  return content_->fields;
}
