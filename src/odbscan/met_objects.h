// Objects of a file, each of which may have only one name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "hdf5/dataset.h"
#include "hdf5/group.h"

namespace odbscan {

// With links a small file could contain any number of copies of one object.
class MetObjects {
 public:
  // Returns the object; fails if it was found before under another name.
  template <class Object>
  Object once(Object object) {
    const auto [known, isNew] = met_.emplace(object.address(), object.path());
    if (!isNew) object.fail("is the same object as " + known->second);
    return object;
  }
  template <class Object>
  std::optional<Object> once(std::optional<Object> object) {
    if (!object) return std::nullopt;
    return once(std::move(*object));
  }

 private:
  std::unordered_map<std::uint64_t, std::string> met_;
};

}  // namespace odbscan
