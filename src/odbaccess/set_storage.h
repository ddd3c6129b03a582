// Sets, behind the handles.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "odbaccess/odb_String.h"
#include "odbstore/reader.h"

namespace odb_detail {

using odbstore::SetKind;

class SetStorage {
 public:
  // A set of the model.
  SetStorage(std::shared_ptr<const odbstore::Reader> reader, odbstore::Owner owner, SetKind kind, odb_String name)
      : reader_(std::move(reader)), owner_(std::move(owner)), kind_(kind), name_(std::move(name)) {}
  // A name alone, without members.
  explicit SetStorage(odb_String name) : name_(std::move(name)) {}

  const odb_String& name() const { return name_; }
  SetKind kind() const { return kind_; }

  // The labels that the set has in an instance, ascending, each once.
  const std::vector<int>& labelsIn(const std::string& instance);

 private:
  void load();

  std::shared_ptr<const odbstore::Reader> reader_;
  odbstore::Owner owner_;
  SetKind kind_ = SetKind::element;
  odb_String name_;
  std::optional<std::map<std::string, std::vector<int>>> labels_;  // by instance
};

}  // namespace odb_detail
