// An HDF5 driver that reads one open file, writes nothing, and can find out where chunks are without reading them.
#pragma once

#include <cstdint>
#include <optional>

#include "hdf5/handle.h"

namespace h5 {

// The file that HDF5 reads through the driver, and what the driver has seen of it.
struct NotedFile {
  struct Read {
    std::int64_t offset = 0;
    std::int64_t bytes = 0;
  };

  int descriptor = -1;
  std::int64_t bytes = 0;
  bool isOpen = false;
  // While it is set, numbers that HDF5 requests are not read; their position is recorded instead.
  bool isNoting = false;
  std::optional<Read> lastRead;
};

// The properties with which H5Fopen opens `file` under any name, for reading. Whatever else a file makes HDF5 open
// while it is open, by links or otherwise, is refused. `file` must outlive what is opened. Invalid where HDF5 fails.
Handle notingAccess(NotedFile& file);

}  // namespace h5
