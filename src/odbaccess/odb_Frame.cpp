#include "odbaccess/odb_Frame.h"

#include <cstddef>
#include <map>
#include <vector>

#include "odbaccess/field_storage.h"
#include "odbaccess/frame_content.h"
#include "odbaccess/guard.h"
#include "odbaccess/step_storage.h"

namespace {

const odbstore::FrameInfo& frameInfo(odb_detail::StepStorage& step, int index) {
  return odb_detail::guarded(
      [&]() -> const odbstore::FrameInfo& { return step.stored()->frames()[static_cast<std::size_t>(index)]; });
}

}  // namespace

int odb_Frame::incrementNumber() const { return frameInfo(*step_, index_).incrementNumber; }
double odb_Frame::frameValue() const { return frameInfo(*step_, index_).value; }
odb_String odb_Frame::description() const { return odb_String(frameInfo(*step_, index_).description); }

odb_FieldOutputRepository& odb_Frame::fieldOutputs() const {
  if (!content_) {
    std::map<odb_String, odb_FieldOutput> fields;
    const auto& stored =
        odb_detail::guarded([&]() -> const std::vector<odbstore::StoredField>& { return step_->stored()->fields(); });
    for (const odbstore::StoredField& field : stored) {
      if (!field.inFrame[static_cast<std::size_t>(index_)]) continue;
      fields.emplace(odb_String(field.name),
                     odb_FieldOutput(std::make_shared<const odb_detail::FieldStorage>(step_, field, index_)));
    }
    content_ = std::make_shared<odb_detail::FrameContent>(
        odb_detail::FrameContent{odb_FieldOutputRepository(std::move(fields))});
  }
  return content_->fields;
}
