#include "odbstore/stored_field.h"

#include "odbstore/database_file.h"
#include "odbstore/frame_slabs.h"

namespace odbstore {

StoredField::StoredField(std::shared_ptr<const DatabaseFile> file, std::shared_ptr<const FrameSlabs> frames,
                         std::vector<StoredBlock> itsBlocks, std::size_t index)
    : blocks(std::move(itsBlocks)), file_(std::move(file)), frames_(std::move(frames)), index_(index) {
  const Catalog& catalog = file_->catalog();
  const columns::Fields& fields = *catalog.columns().fields();
  const auto i = static_cast<flatbuffers::uoffset_t>(index);
  name = catalog.text(fields.name()->Get(i));
  info = infoOf(fields.form()->Get(i));
}

FieldInfo StoredField::infoOf(std::int32_t form) const {
  const Catalog& catalog = file_->catalog();
  const columns::Forms& forms = *catalog.columns().forms();
  const auto i = static_cast<flatbuffers::uoffset_t>(form);
  const std::span<const std::int32_t> invariants = catalog.list(forms.validInvariants()->Get(i));
  return {std::string(catalog.text(forms.description()->Get(i))),
          forms.type()->Get(i),
          catalog.texts(forms.componentLabels()->Get(i)),
          {invariants.begin(), invariants.end()},
          forms.engineeringShear()->Get(i) != 0};
}

std::shared_ptr<const FieldInfo> StoredField::infoIn(int frame) const {
  const std::int32_t form = formInFrame(file_->catalog(), index_, frame);
  if (form != lastForm_) {
    lastInfo_ = std::make_shared<const FieldInfo>(infoOf(form));
    lastForm_ = form;
  }
  return lastInfo_;
}

bool StoredField::existsIn(int frame) const { return frames_->slabOf(frame) >= 0; }

std::vector<int> StoredField::frames() const { return frames_->frames(); }

}  // namespace odbstore
