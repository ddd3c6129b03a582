// What frames have been asked for.
#pragma once

#include "odbaccess/odb_FieldOutput.h"

namespace odb_detail {

struct FrameContent {
  odb_FieldOutputRepository fields;
};

}  // namespace odb_detail
