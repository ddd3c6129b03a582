#include "hdf5/file.h"

#include <fmt/core.h>

#include "base/file_error.h"

namespace h5 {

namespace {

// What a call of HDF5 for a file as a whole has returned, unless that says that it failed.
template <class Result>
Result checked(const std::string& file, Result result, const char* reason = "HDF5 cannot be prepared for it") {
  if (result < 0) throw base::FileError(file, "", explained(reason));
  return result;
}

Handle accessForWriting(const std::string& file, std::int64_t structureBytes) {
  Handle access(checked(file, H5Pcreate(H5P_FILE_ACCESS)), H5Pclose);
  // Objects that outlive the file's handle keep the file open until they go too.
  checked(file, H5Pset_fclose_degree(access.get(), H5F_CLOSE_WEAK));
  checked(file, H5Pset_libver_bounds(access.get(), H5F_LIBVER_V110, H5F_LIBVER_V110));
  // Without a buffer numbers go to the file at once. A buffer would be written when its data set is closed, and a
  // failure then, on a full disk, would go unnoticed.
  checked(file, H5Pset_sieve_buf_size(access.get(), 0));
  checked(file, H5Pset_cache(access.get(), 0, 0, 0, 0.0));
  checked(file, H5Pset_meta_block_size(access.get(), static_cast<hsize_t>(structureBytes)));
  checked(file, H5Pset_small_data_block_size(access.get(), 0));
  return access;
}

Group rootOf(const std::shared_ptr<const FileContext>& file) {
  Handle id(H5Gopen2(file->id.get(), "/", H5P_DEFAULT), H5Gclose);
  if (!id) throw base::FileError(file->name, "/", explained("cannot be opened"));
  return Group(std::move(id), "/", file);
}

}  // namespace

Group openFile(int descriptor, std::int64_t bytes, const std::function<Profile(const Group& root)>& profileOf) {
  startHdf5();
  auto file = std::make_shared<FileContext>();
  file->bytes = bytes;
  file->profile = Profile::free;
  file->noted = std::make_unique<NotedFile>(NotedFile{descriptor, bytes, false, false, std::nullopt});
  // Alive until the failure is explained: closing it would be the last call, which went well.
  const Handle access = notingAccess(*file->noted);
  checked(file->name, access.get());
  file->id = Handle(H5Fopen("database", H5F_ACC_RDONLY, access.get()), H5Fclose);
  if (!file->id) throw base::FileError("", "", explained("cannot be opened as a database"));
  file->profile = profileOf(rootOf(file));
  return rootOf(file);
}

unsigned superblockOf(const Group& root) {
  H5F_info2_t info{};
  root.checked(H5Fget_info2(root.id(), &info), "cannot be read");
  return info.super.version;
}

Group createFile(const std::string& path, const std::string& name, std::int64_t structureBytes) {
  startHdf5();
  auto file = std::make_shared<FileContext>();
  file->name = name;
  file->profile = Profile::own;
  const Handle access = accessForWriting(name, structureBytes);  // alive until the failure is explained
  const Handle creation(checked(name, H5Pcreate(H5P_FILE_CREATE)), H5Pclose);
  checked(name, H5Pset_obj_track_times(creation.get(), false));
  file->id = Handle(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, creation.get(), access.get()), H5Fclose);
  if (!file->id) throw base::FileError(name, "", explained("cannot be created"));
  return rootOf(file);
}

void flushFile(const Group& root) { root.checked(H5Fflush(root.id(), H5F_SCOPE_GLOBAL), "the file cannot be written"); }

std::int64_t endOfFile(const Object& member) {
  haddr_t end = 0;
  constexpr const char* kReason = "the size of the file cannot be determined";
  const Handle file(member.checked(H5Iget_file_id(member.id()), kReason), H5Fclose);
  member.checked(H5Fget_eoa(file.get(), &end), kReason);
  return static_cast<std::int64_t>(end);
}

}  // namespace h5
