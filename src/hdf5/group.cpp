#include "hdf5/group.h"

#include <fmt/core.h>

#include <algorithm>

#include "base/file_error.h"

namespace h5 {

namespace {

// This level is stored in the file; the chunks themselves may be packed differently.
constexpr unsigned kGzipLevel = 4;

}  // namespace

Group::Group(Handle id, std::string path, std::shared_ptr<const FileContext> file)
    : Object(std::move(id), std::move(path), std::move(file)) {}

std::string Group::memberPath(const std::string& link) const {
  return path() == "/" ? "/" + link : path() + "/" + link;
}

bool Group::has(const std::string& link) const {
  const htri_t exists = H5Lexists(id(), link.c_str(), H5P_DEFAULT);
  if (exists < 0) failHdf5(fmt::format("the member \"{}\" cannot be looked up", link));
  return exists > 0;
}

std::optional<Handle> Group::findMember(const std::string& link) const {
  const auto fail = [&](const std::string& reason) { throw base::FileError(file()->name, memberPath(link), reason); };
  H5L_info_t info{};
  if (H5Lget_info(id(), link.c_str(), &info, H5P_DEFAULT) < 0) {
    if (has(link)) fail("the link cannot be read");
    return std::nullopt;
  }
  if (info.type != H5L_TYPE_HARD && file()->profile == Profile::strict) {
    fail("links that are not hard are not allowed in this layout");
  }
  if (info.type != H5L_TYPE_HARD && info.type != H5L_TYPE_SOFT) fail("links into other files are not followed");
  const hid_t object = H5Oopen(id(), link.c_str(), H5P_DEFAULT);
  if (object < 0) fail(fmt::format("cannot be opened ({})", lastHdf5Error()));
  return Handle(object, H5Oclose);
}

std::optional<Handle> Group::findMember(const std::string& link, H5I_type_t kind) const {
  std::optional<Handle> handle = findMember(link);
  if (handle && checked(H5Iget_type(handle->get())) != kind) {
    throw base::FileError(file()->name, memberPath(link), kind == H5I_GROUP ? "must be a group" : "must be a data set");
  }
  return handle;
}

Handle Group::present(const std::string& link, std::optional<Handle> member) const {
  if (!member) throw base::FileError(file()->name, memberPath(link), "is missing");
  return std::move(*member);
}

MemberKind Group::kindOf(const std::string& link) const {
  switch (checked(H5Iget_type(present(link, findMember(link)).get()))) {
    case H5I_GROUP:
      return MemberKind::group;
    case H5I_DATASET:
      return MemberKind::dataset;
    default:
      return MemberKind::other;
  }
}

Group Group::group(const std::string& link) const {
  return Group(present(link, findMember(link, H5I_GROUP)), memberPath(link), file());
}

Dataset Group::dataset(const std::string& link) const {
  return Dataset(present(link, findMember(link, H5I_DATASET)), memberPath(link), file());
}

std::optional<Group> Group::findGroup(const std::string& link) const {
  std::optional<Handle> member = findMember(link, H5I_GROUP);
  if (!member) return std::nullopt;
  return Group(std::move(*member), memberPath(link), file());
}

std::optional<Dataset> Group::findDataset(const std::string& link) const {
  std::optional<Handle> member = findMember(link, H5I_DATASET);
  if (!member) return std::nullopt;
  return Dataset(std::move(*member), memberPath(link), file());
}

std::vector<std::string> Group::links(LinkOrder order) const {
  unsigned tracked = 0;
  if (order == LinkOrder::byCreation) {
    const Handle plist(checked(H5Gget_create_plist(id())), H5Pclose);
    checked(H5Pget_link_creation_order(plist.get(), &tracked));
  }
  const bool byCreation = (tracked & H5P_CRT_ORDER_TRACKED) != 0;
  std::vector<std::pair<std::int64_t, std::string>> found;
  const auto collect = [](hid_t, const char* name, const H5L_info_t* info, void* out) -> herr_t {
    auto& list = *static_cast<std::vector<std::pair<std::int64_t, std::string>>*>(out);
    list.emplace_back(info->corder_valid ? info->corder : 0, name);
    return 0;
  };
  // In no order of HDF5's: to sort, HDF5 makes a table, and where the names of a large group are damaged it frees
  // parts of that table that it never filled (seen in 1.10.8).
  checked(H5Literate(id(), H5_INDEX_NAME, H5_ITER_NATIVE, nullptr, collect, &found), "the members cannot be listed");
  if (!byCreation) {
    for (auto& [order, name] : found) order = 0;
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> names;
  for (auto& [order, name] : found) names.push_back(std::move(name));
  return names;
}

Group Group::createGroup(const std::string& link, bool trackOrder) const {
  const Handle plist(checked(H5Pcreate(H5P_GROUP_CREATE)), H5Pclose);
  // The same results make the same bytes, whatever the time.
  checked(H5Pset_obj_track_times(plist.get(), false));
  if (trackOrder) checked(H5Pset_link_creation_order(plist.get(), H5P_CRT_ORDER_TRACKED | H5P_CRT_ORDER_INDEXED));
  Handle handle(H5Gcreate2(id(), link.c_str(), H5P_DEFAULT, plist.get(), H5P_DEFAULT), H5Gclose);
  if (!handle)
    throw base::FileError(file()->name, memberPath(link), fmt::format("cannot be created ({})", lastHdf5Error()));
  return Group(std::move(handle), memberPath(link), file());
}

Dataset Group::createDataset(const std::string& link, base::NumberFormat format, const Dims& dims,
                             const Storage& storage) const {
  return createDataset(link, typeOf(format), dims, storage);
}

Dataset Group::createDataset(const std::string& link, hid_t type, const Dims& dims, const Storage& storage) const {
  const Handle plist(checked(H5Pcreate(H5P_DATASET_CREATE)), H5Pclose);
  checked(H5Pset_obj_track_times(plist.get(), false));
  if (!storage.filters.empty()) {
    Dims chunk = dims;
    for (hsize_t& d : chunk) d = std::max<hsize_t>(d, 1);
    chunk.front() = 1;
    checked(H5Pset_chunk(plist.get(), static_cast<int>(chunk.size()), chunk.data()));
    for (const Filter filter : storage.filters) {
      checked(filter == Filter::gzip ? H5Pset_deflate(plist.get(), kGzipLevel) : H5Pset_fletcher32(plist.get()));
    }
  } else {
    checked(H5Pset_fill_time(plist.get(), H5D_FILL_TIME_NEVER));
    if (storage.reserved) checked(H5Pset_alloc_time(plist.get(), H5D_ALLOC_TIME_EARLY));
  }
  const Handle space(checked(H5Screate_simple(static_cast<int>(dims.size()), dims.data(), nullptr)), H5Sclose);
  Handle handle(H5Dcreate2(id(), link.c_str(), type, space.get(), H5P_DEFAULT, plist.get(), H5P_DEFAULT), H5Dclose);
  if (!handle)
    throw base::FileError(file()->name, memberPath(link), fmt::format("cannot be created ({})", lastHdf5Error()));
  return Dataset(std::move(handle), memberPath(link), file());
}

void Group::createInts(const std::string& link, std::span<const int> values) const {
  createDataset(link, base::NumberFormat::int32, {values.size()}).write(values.data(), base::NumberFormat::int32);
}

void Group::createLongs(const std::string& link, std::span<const std::int64_t> values) const {
  createDataset(link, base::NumberFormat::int64, {values.size()}).write(values.data(), base::NumberFormat::int64);
}

void Group::createFloats(const std::string& link, std::span<const float> values, const Dims& dims) const {
  createDataset(link, base::NumberFormat::float32, dims).write(values.data(), base::NumberFormat::float32);
}

void Group::createDoubles(const std::string& link, std::span<const double> values, const Dims& dims) const {
  createDataset(link, base::NumberFormat::float64, dims).write(values.data(), base::NumberFormat::float64);
}

}  // namespace h5
