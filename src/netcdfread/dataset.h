// The netCDF library: the only place that calls it. Each failure becomes a base::FileError that names the variable and
// has the library's own explanation.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "netcdf/description.h"

namespace netcdf {

// What the library does once, which takes files of its own. Before confinement.
void prepareLibrary();

// A netCDF file in memory, which must live as long and is only read.
class Dataset {
 public:
  explicit Dataset(std::span<const std::byte> bytes);

  Description describe() const;
  // The values of a part, one after the other.
  std::string read(const Part& part) const;

 private:
  int id_ = -1;
};

}  // namespace netcdf
