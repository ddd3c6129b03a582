#include "hdf5/noting_driver.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>

#include "base/descriptor.h"

namespace h5 {

namespace {

// HDF5's data for an open file, followed by ours.
struct DriverFile {
  H5FD_t shared;
  haddr_t end;  // as HDF5 has set it
  NotedFile* file;
};

DriverFile* ours(H5FD_t* file) { return reinterpret_cast<DriverFile*>(file); }
const DriverFile* ours(const H5FD_t* file) { return reinterpret_cast<const DriverFile*>(file); }

H5FD_t* openFile(const char*, unsigned flags, hid_t access, haddr_t) {
  const auto* const information = static_cast<NotedFile* const*>(H5Pget_driver_info(access));
  if (information == nullptr || (*information)->isOpen || (flags & H5F_ACC_RDWR) != 0) return nullptr;
  // HDF5 wants memory that it could have made itself.
  auto* const opened = static_cast<DriverFile*>(std::calloc(1, sizeof(DriverFile)));
  if (opened == nullptr) return nullptr;
  opened->file = *information;
  opened->file->isOpen = true;
  return &opened->shared;
}

herr_t closeFile(H5FD_t* file) {
  ours(file)->file->isOpen = false;
  std::free(file);
  return 0;
}

herr_t queryFeatures(const H5FD_t*, unsigned long* features) {
  *features = H5FD_FEAT_ACCUMULATE_METADATA;
  return 0;
}

haddr_t endOfAddresses(const H5FD_t* file, H5FD_mem_t) { return ours(file)->end; }

herr_t setEndOfAddresses(H5FD_t* file, H5FD_mem_t, haddr_t end) {
  ours(file)->end = end;
  return 0;
}

haddr_t endOfFile(const H5FD_t* file, H5FD_mem_t) { return static_cast<haddr_t>(ours(file)->file->bytes); }

herr_t readBytes(H5FD_t* file, H5FD_mem_t kind, hid_t, haddr_t address, std::size_t size, void* out) {
  NotedFile& noted = *ours(file)->file;
  const auto end = static_cast<haddr_t>(noted.bytes);
  if (address > end || size > end - address) return -1;
  if (kind == H5FD_MEM_DRAW && noted.isNoting) {
    noted.lastRead = {static_cast<std::int64_t>(address), static_cast<std::int64_t>(size)};
    return 0;
  }
  const std::span bytes(static_cast<std::byte*>(out), size);
  return base::readAt(noted.descriptor, static_cast<std::int64_t>(address), bytes) == size ? 0 : -1;
}

herr_t refuseWriting(H5FD_t*, H5FD_mem_t, hid_t, haddr_t, std::size_t, const void*) { return -1; }

hid_t registerDriver() {
  H5FD_class_t driver;
  std::memset(&driver, 0, sizeof(driver));
  driver.name = "noting";
  driver.maxaddr = (haddr_t{1} << 63U) - 1;
  driver.fc_degree = H5F_CLOSE_WEAK;
  driver.fapl_size = sizeof(NotedFile*);
  driver.open = openFile;
  driver.close = closeFile;
  driver.query = queryFeatures;
  driver.get_eoa = endOfAddresses;
  driver.set_eoa = setEndOfAddresses;
  driver.get_eof = endOfFile;
  driver.read = readBytes;
  driver.write = refuseWriting;
  const H5FD_mem_t kinds[] = H5FD_FLMAP_DICHOTOMY;
  static_assert(sizeof(kinds) == sizeof(driver.fl_map));
  std::memcpy(driver.fl_map, kinds, sizeof(kinds));
  return H5FDregister(&driver);
}

}  // namespace

Handle notingAccess(NotedFile& file) {
  static const hid_t driver = registerDriver();
  Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
  NotedFile* const information = &file;
  // Objects that outlive the file's handle keep the file open until they go too.
  if (driver < 0 || !access || H5Pset_driver(access.get(), driver, &information) < 0 ||
      H5Pset_fclose_degree(access.get(), H5F_CLOSE_WEAK) < 0) {
    return {};
  }
  return access;
}

}  // namespace h5
