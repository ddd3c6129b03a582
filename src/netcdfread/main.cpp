// Reads a netCDF file that nobody vouches for, and answers questions about it. It is started by others of kolvex, with
// limits, and ends with them, or when the file makes it crash (base/limited_work.h).
//
//   netcdfread BYTES      of a file of that size

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "base/file_error.h"
#include "base/limited_protocol.h"
#include "base/limited_work.h"
#include "netcdf/description.h"
#include "netcdfread/dataset.h"
#include "process/confinement.h"

namespace {

// The file as memory: it is read without names, and what is cut off meanwhile ends this program alone.
std::span<const std::byte> mappedFile(std::size_t bytes) {
  if (bytes == 0) throw base::FileError("", "", "the file is empty");
  void* const memory = ::mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE, base::kLimitedFile, 0);
  if (memory == MAP_FAILED) throw base::FileError("", "", std::strerror(errno));
  return {static_cast<const std::byte*>(memory), bytes};
}

std::unique_ptr<netcdf::Dataset> openDataset(std::size_t bytes) {
  netcdf::prepareLibrary();
  const std::span<const std::byte> file = mappedFile(bytes);
  confineToOneFile();
  return std::make_unique<netcdf::Dataset>(file);
}

}  // namespace

int main(int argc, char** argv) {
  std::unique_ptr<netcdf::Dataset> dataset;
  // Comes back only where another than a program of ours has started it.
  const int status = base::serveLimitedRequests(argc, argv, [&](std::string_view request) {
    if (!dataset) dataset = openDataset(std::strtoull(argv[argc - 1], nullptr, 10));
    return request.empty() ? packed(dataset->describe()) : dataset->read(netcdf::unpackedPart(request));
  });
  std::fputs("this program is started by others of kolvex, to read a file where it can do no harm\n", stderr);
  return status;
}
