// What there is to say of a configuration.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace inspect {

struct Remark {
  std::size_t line = 0;  // of the configuration, from 1; 0 where it is not about a line
  std::string reason;    // without a full stop
};

using Remarks = std::vector<Remark>;

}  // namespace inspect
