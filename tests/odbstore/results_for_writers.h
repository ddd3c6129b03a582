// What tests of writers have in common.
#pragma once

#include <string>

#include "odbstore/schema.h"
#include "odbstore/store_error.h"

namespace odbstore {

inline const FieldInfo kStress{"Stress components", 5, {"11", "22", "33", "12", "13", "23"}, {4, 1}, false};
inline const FieldInfo kTemperature{"Nodal temperature", 2, {}, {}, false};

// The message of the StoreError that `action` ends with.
template <class Action>
std::string failureOf(Action&& action) {
  try {
    action();
  } catch (const StoreError& error) {
    return error.what();
  }
  return "no failure";
}

}  // namespace odbstore
