#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/file_error.h"
#include "hdf5/group.h"

namespace h5 {

namespace {

std::size_t pointsOf(const Object& owner, hid_t space) {
  if (owner.checked(H5Sget_simple_extent_type(space)) == H5S_NULL) return 0;
  return static_cast<std::size_t>(owner.checked(H5Sget_simple_extent_npoints(space)));
}

// Null-terminated, null-padded and space-padded texts alike.
std::string textFrom(const char* bytes, std::size_t size, H5T_str_t padding) {
  std::string text(bytes, strnlen(bytes, size));
  if (padding == H5T_STR_SPACEPAD) text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

// Reads `count` texts through `read`, which fills a buffer of a given memory type.
template <class Read>
std::vector<std::string> readTexts(const Object& owner, hid_t type, hid_t space, std::size_t count, Read&& read) {
  std::vector<std::string> texts;
  if (count == 0) return texts;
  texts.reserve(count);
  if (owner.checked(H5Tis_variable_str(type)) > 0) {
    std::vector<char*> pointers(count, nullptr);
    const Handle memoryType(owner.checked(H5Tcopy(type)), H5Tclose);
    owner.checked(read(memoryType.get(), pointers.data()), "text cannot be read");
    for (const char* text : pointers) texts.emplace_back(text != nullptr ? text : "");
    H5Dvlen_reclaim(memoryType.get(), space, H5P_DEFAULT, pointers.data());
    return texts;
  }
  const std::size_t size = owner.sizeOf(type);
  std::vector<char> bytes(size * count);
  owner.checked(read(type, bytes.data()), "text cannot be read");
  const H5T_str_t padding = owner.checked(H5Tget_strpad(type));
  for (std::size_t i = 0; i < count; ++i) texts.push_back(textFrom(bytes.data() + i * size, size, padding));
  return texts;
}

Handle textType(const Object& owner, std::size_t longest) {
  constexpr const char* kReason = "text cannot be written";
  Handle type(owner.checked(H5Tcopy(H5T_C_S1), kReason), H5Tclose);
  // HDF5 has no type for texts of no bytes.
  owner.checked(H5Tset_size(type.get(), std::max<std::size_t>(longest, 1)), kReason);
  owner.checked(H5Tset_strpad(type.get(), H5T_STR_NULLPAD), kReason);
  owner.checked(H5Tset_cset(type.get(), H5T_CSET_UTF8), kReason);
  return type;
}

// Texts side by side, each padded with NULs to the longest.
struct PackedTexts {
  PackedTexts(const Object& owner, std::span<const std::string> texts) {
    std::size_t longest = 1;
    for (const std::string& text : texts) longest = std::max(longest, text.size());
    type = textType(owner, longest);
    bytes.assign(longest * std::max<std::size_t>(texts.size(), 1), '\0');
    for (std::size_t i = 0; i < texts.size(); ++i) {
      std::memcpy(bytes.data() + i * longest, texts[i].data(), texts[i].size());
    }
  }

  Handle type;
  std::vector<char> bytes;
};

}  // namespace

void Object::fail(const std::string& reason) const { throw base::FileError(file_->name, path_, reason); }

void Object::failHdf5(const std::string& reason) const { fail(explained(reason)); }

std::uint64_t Object::address() const {
  H5O_info_t info{};
  checked(H5Oget_info2(id(), &info, H5O_INFO_BASIC));
  return info.addr;
}

std::size_t Object::sizeOf(hid_t type) const {
  const std::size_t size = H5Tget_size(type);
  if (size == 0) failHdf5("cannot be described");
  return size;
}

bool Object::hasAttribute(const std::string& name) const {
  const htri_t exists = H5Aexists(id(), name.c_str());
  if (exists < 0) failHdf5(fmt::format("the attribute \"{}\" cannot be looked up", name));
  return exists > 0;
}

Object::Attribute Object::openAttribute(const std::string& name) const {
  Handle id(H5Aopen(this->id(), name.c_str(), H5P_DEFAULT), H5Aclose);
  if (!id) failHdf5(fmt::format("the attribute \"{}\" cannot be opened", name));
  Handle type(checked(H5Aget_type(id.get())), H5Tclose);
  Handle space(checked(H5Aget_space(id.get())), H5Sclose);
  const H5T_class_t kind = checked(H5Tget_class(type.get()));
  if (file_->profile == Profile::strict && kind == H5T_STRING && checked(H5Tis_variable_str(type.get())) > 0) {
    fail(fmt::format("the attribute \"{}\": text of variable length is not allowed in this layout", name));
  }
  // HDF5 holds the values of an attribute that it has opened, so there are no more than memory was enough for.
  const std::size_t count = pointsOf(*this, space.get());
  return {std::move(id), std::move(type), std::move(space), kind, count};
}

std::vector<std::string> Object::attributes() const {
  std::vector<std::string> names;
  const auto collect = [](hid_t, const char* name, const H5A_info_t*, void* out) -> herr_t {
    static_cast<std::vector<std::string>*>(out)->emplace_back(name);
    return 0;
  };
  // Not sorted by HDF5, for the same reason as links.
  checked(H5Aiterate2(id(), H5_INDEX_NAME, H5_ITER_NATIVE, nullptr, collect, &names),
          "the attributes cannot be listed");
  std::sort(names.begin(), names.end());
  return names;
}

void Object::checkAttribute(const std::string& name) const {
  const H5T_class_t kind = openAttribute(name).kind;
  if (kind != H5T_STRING && kind != H5T_INTEGER && kind != H5T_FLOAT && kind != H5T_ENUM) {
    fail(fmt::format("the attribute \"{}\" is neither numbers nor text", name));
  }
}

std::vector<int> Object::intsAttribute(const std::string& name) const {
  if (!hasAttribute(name)) return {};
  const Attribute attribute = openAttribute(name);
  const auto read = [&](hid_t memoryType, void* out) {
    if (attribute.count != 0 && H5Aread(attribute.id.get(), memoryType, out) < 0) {
      failHdf5(fmt::format("the attribute \"{}\" cannot be read", name));
    }
  };
  // Python's truth values are an enumeration over a small integer.
  if (attribute.kind == H5T_ENUM && sizeOf(attribute.type.get()) == 1) {
    std::vector<signed char> bytes(attribute.count);
    read(attribute.type.get(), bytes.data());
    return {bytes.begin(), bytes.end()};
  }
  if (attribute.kind != H5T_INTEGER) fail(fmt::format("the attribute \"{}\" must hold integers", name));
  std::vector<long long> wide(attribute.count);
  read(H5T_NATIVE_LLONG, wide.data());
  std::vector<int> numbers;
  for (const long long number : wide) {
    if (!std::in_range<int>(number)) fail(fmt::format("the attribute \"{}\" is too large", name));
    numbers.push_back(static_cast<int>(number));
  }
  return numbers;
}

std::vector<double> Object::doublesAttribute(const std::string& name) const {
  if (!hasAttribute(name)) return {};
  const Attribute attribute = openAttribute(name);
  if (attribute.kind != H5T_FLOAT && attribute.kind != H5T_INTEGER) {
    fail(fmt::format("the attribute \"{}\" must hold numbers", name));
  }
  std::vector<double> numbers(attribute.count);
  if (!numbers.empty() && H5Aread(attribute.id.get(), H5T_NATIVE_DOUBLE, numbers.data()) < 0) {
    failHdf5(fmt::format("the attribute \"{}\" cannot be read", name));
  }
  return numbers;
}

std::vector<std::string> Object::stringsAttribute(const std::string& name) const {
  if (!hasAttribute(name)) return {};
  const Attribute attribute = openAttribute(name);
  if (attribute.kind != H5T_STRING) fail(fmt::format("the attribute \"{}\" must hold text", name));
  return readTexts(*this, attribute.type.get(), attribute.space.get(), attribute.count,
                   [&](hid_t memoryType, void* out) { return H5Aread(attribute.id.get(), memoryType, out); });
}

namespace {

template <class T>
T onlyOne(const Object& owner, const std::string& name, const std::vector<T>& values) {
  if (values.size() != 1) owner.fail(fmt::format("the attribute \"{}\" must hold one value", name));
  return values.front();
}

}  // namespace

int Object::intAttribute(const std::string& name, int absent) const {
  return hasAttribute(name) ? onlyOne(*this, name, intsAttribute(name)) : absent;
}

double Object::doubleAttribute(const std::string& name, double absent) const {
  return hasAttribute(name) ? onlyOne(*this, name, doublesAttribute(name)) : absent;
}

std::string Object::stringAttribute(const std::string& name, const std::string& absent) const {
  return hasAttribute(name) ? onlyOne(*this, name, stringsAttribute(name)) : absent;
}

Handle Object::createAttribute(const std::string& name, hid_t type, hid_t space) const {
  Handle attribute(H5Acreate2(id(), name.c_str(), type, space, H5P_DEFAULT, H5P_DEFAULT), H5Aclose);
  if (!attribute) failHdf5(fmt::format("the attribute \"{}\" cannot be created", name));
  return attribute;
}

namespace {

void writeAttribute(const Object& owner, const std::string& name, const Handle& attribute, hid_t memoryType,
                    const void* values) {
  if (H5Awrite(attribute.get(), memoryType, values) < 0) {
    owner.failHdf5(fmt::format("the attribute \"{}\" cannot be written", name));
  }
}

Handle lineSpace(const Object& owner, std::size_t count) {
  const hsize_t extent = count;
  return Handle(owner.checked(H5Screate_simple(1, &extent, nullptr)), H5Sclose);
}

}  // namespace

void Object::writeInt(const std::string& name, int value) const {
  const Handle space(checked(H5Screate(H5S_SCALAR)), H5Sclose);
  writeAttribute(*this, name, createAttribute(name, H5T_STD_I32LE, space.get()), H5T_NATIVE_INT, &value);
}

void Object::writeDouble(const std::string& name, double value) const {
  const Handle space(checked(H5Screate(H5S_SCALAR)), H5Sclose);
  writeAttribute(*this, name, createAttribute(name, H5T_IEEE_F64LE, space.get()), H5T_NATIVE_DOUBLE, &value);
}

void Object::writeInts(const std::string& name, std::span<const int> values) const {
  if (values.empty()) return;
  const Handle space = lineSpace(*this, values.size());
  writeAttribute(*this, name, createAttribute(name, H5T_STD_I32LE, space.get()), H5T_NATIVE_INT, values.data());
}

void Object::writeDoubles(const std::string& name, std::span<const double> values) const {
  if (values.empty()) return;
  const Handle space = lineSpace(*this, values.size());
  writeAttribute(*this, name, createAttribute(name, H5T_IEEE_F64LE, space.get()), H5T_NATIVE_DOUBLE, values.data());
}

void Object::writeString(const std::string& name, const std::string& value) const {
  const Handle space(checked(H5Screate(H5S_SCALAR)), H5Sclose);
  const PackedTexts packed(*this, {&value, 1});
  writeAttribute(*this, name, createAttribute(name, packed.type.get(), space.get()), packed.type.get(),
                 packed.bytes.data());
}

void Object::writeStrings(const std::string& name, std::span<const std::string> values) const {
  if (values.empty()) return;
  const Handle space = lineSpace(*this, values.size());
  const PackedTexts packed(*this, values);
  writeAttribute(*this, name, createAttribute(name, packed.type.get(), space.get()), packed.type.get(),
                 packed.bytes.data());
}

std::vector<std::string> Dataset::readStrings() const {
  if (class_ != H5T_STRING) fail("must hold text");
  const Handle type(checked(H5Dget_type(id())), H5Tclose);
  const Handle space(checked(H5Dget_space(id())), H5Sclose);
  return readTexts(*this, type.get(), space.get(), static_cast<std::size_t>(count()), [&](hid_t memoryType, void* out) {
    return H5Dread(id(), memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, out);
  });
}

void Group::createStrings(const std::string& link, std::span<const std::string> values) const {
  const PackedTexts packed(*this, values);
  createDataset(link, packed.type.get(), {values.size()}, {}).write(packed.bytes.data(), packed.type.get());
}

}  // namespace h5
