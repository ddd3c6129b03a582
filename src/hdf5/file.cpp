#include "hdf5/file.h"

#include <fmt/format.h>

#include "base/file_error.h"

namespace h5 {

namespace {

std::string explained(const std::string& reason) {
  const std::string why = lastHdf5Error();
  return why.empty() ? reason : fmt::format("{} ({})", reason, why);
}

// What a call of HDF5 for a file as a whole has returned, unless that says that it failed.
template <class Result>
Result checked(const std::string& file, Result result, const char* reason = "HDF5 cannot be prepared for it") {
  if (result < 0) throw base::FileError(file, "", explained(reason));
  return result;
}

Handle fileAccess(const std::string& file) {
  Handle access(checked(file, H5Pcreate(H5P_FILE_ACCESS)), H5Pclose);
  // Objects that outlive the file's handle keep the file open until they go too.
  checked(file, H5Pset_fclose_degree(access.get(), H5F_CLOSE_WEAK));
  return access;
}

Handle fileAccessForWriting(const std::string& file) {
  Handle access = fileAccess(file);
  checked(file, H5Pset_libver_bounds(access.get(), H5F_LIBVER_V110, H5F_LIBVER_V110));
  // Numbers go to the file when they are written. What waited in a buffer would be written when its data set is closed,
  // and if that failed, on a full disk, nobody would know.
  checked(file, H5Pset_sieve_buf_size(access.get(), 0));
  checked(file, H5Pset_cache(access.get(), 0, 0, 0, 0.0));
  return access;
}

// Nothing where HDF5 does not read the file through one descriptor.
std::optional<int> descriptorOf(const Handle& file) {
  const Handle access(H5Fget_access_plist(file.get()), H5Pclose);
  if (!access || H5Pget_driver(access.get()) != H5FD_SEC2) return std::nullopt;
  void* descriptor = nullptr;
  if (H5Fget_vfd_handle(file.get(), access.get(), &descriptor) < 0) return std::nullopt;
  return *static_cast<const int*>(descriptor);
}

Group rootOf(const std::shared_ptr<const FileContext>& file) {
  Handle id(H5Gopen2(file->id.get(), "/", H5P_DEFAULT), H5Gclose);
  if (!id) throw base::FileError(file->name, "/", explained("cannot be opened"));
  return Group(std::move(id), "/", file);
}

}  // namespace

Group openFile(const std::string& path, const std::string& name, std::int64_t bytes,
               const std::function<Profile(const Group& root)>& profileOf) {
  startHdf5();
  auto file = std::make_shared<FileContext>();
  file->name = name;
  file->bytes = bytes;
  file->profile = Profile::free;
  // Alive until the failure is explained: closing it would be the last call, which went well.
  const Handle access = fileAccess(name);
  if (H5Fis_hdf5(path.c_str()) == 0) {
    throw base::FileError(name, "", "is not a database: it is not an HDF5 file");
  }
  file->id = Handle(H5Fopen(path.c_str(), H5F_ACC_RDONLY, access.get()), H5Fclose);
  if (!file->id) throw base::FileError(name, "", explained("cannot be opened as a database"));
  file->descriptor = descriptorOf(file->id);
  file->profile = profileOf(rootOf(file));
  return rootOf(file);
}

unsigned superblockOf(const Group& root) {
  H5F_info2_t info{};
  root.checked(H5Fget_info2(root.id(), &info), "cannot be read");
  return info.super.version;
}

Group createFile(const std::string& path, const std::string& name) {
  startHdf5();
  auto file = std::make_shared<FileContext>();
  file->name = name;
  file->profile = Profile::free;  // what we are writing ourselves is not checked while it is incomplete
  const Handle access = fileAccessForWriting(name);  // alive until the failure is explained
  const Handle creation(checked(name, H5Pcreate(H5P_FILE_CREATE)), H5Pclose);
  checked(name, H5Pset_obj_track_times(creation.get(), false));
  file->id = Handle(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, creation.get(), access.get()), H5Fclose);
  if (!file->id) throw base::FileError(name, "", explained("cannot be created"));
  return rootOf(file);
}

void flushFile(const Group& root) { root.checked(H5Fflush(root.id(), H5F_SCOPE_GLOBAL), "the file cannot be written"); }

std::int64_t sizeOfFile(const Group& root) {
  hsize_t bytes = 0;
  constexpr const char* kReason = "the size of the file cannot be found out";
  const Handle file(root.checked(H5Iget_file_id(root.id()), kReason), H5Fclose);
  root.checked(H5Fget_filesize(file.get(), &bytes), kReason);
  return static_cast<std::int64_t>(bytes);
}

}  // namespace h5
