#include "odbaccess/set_storage.h"

#include <algorithm>

#include "odbaccess/guard.h"

namespace odb_detail {

using odbstore::OwnerKind;

void SetStorage::load() {
  labels_.emplace();
  if (!reader_) return;
  const auto add = [&](const std::string& instance, std::vector<int> labels) {
    if (!std::is_sorted(labels.begin(), labels.end())) std::sort(labels.begin(), labels.end());
    labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
    (*labels_)[instance] = std::move(labels);
  };
  for (odbstore::SetMembers& group : reader_->setMembers(owner_, kind_, name_.cStr())) {
    switch (owner_.kind) {
      case OwnerKind::assembly:
        add(group.instance, std::move(group.labels));
        break;
      case OwnerKind::instance:
        add(owner_.name, std::move(group.labels));
        break;
      case OwnerKind::part:
        for (const odbstore::InstanceInfo& instance : reader_->instances()) {
          if (instance.part == owner_.name) add(instance.name, group.labels);
        }
        break;
    }
  }
}

const std::vector<int>& SetStorage::labelsIn(const std::string& instance) {
  static const std::vector<int> none;
  if (!labels_) guarded([&] { load(); });
  const auto found = labels_->find(instance);
  return found == labels_->end() ? none : found->second;
}

}  // namespace odb_detail
