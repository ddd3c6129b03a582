#include "odbwriter/block_series.h"

namespace odbstore {

std::size_t BlockSeries::next(int frame, const BlockKey& key) {
  std::size_t& next = nextBlock_[frame];
  while (next < keys_.size() && !(keys_[next] == key)) ++next;
  if (next == keys_.size()) keys_.push_back(key);
  return next++;
}

DatabaseWriter::BlockForm formOf(const BlockKey& key, const FieldInfo& info, bool isChanging, std::vector<int> frames) {
  DatabaseWriter::BlockForm form;
  form.width = static_cast<int>(key.width);
  form.isDouble = key.isDouble;
  if (isChanging || key.type != info.type) form.type = key.type;
  if (isChanging || key.componentLabels != info.componentLabels) form.componentLabels = key.componentLabels;
  form.frames = std::move(frames);
  return form;
}

}  // namespace odbstore
