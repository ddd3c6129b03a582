#include "odbstore/preflight.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <utility>

#include "odbstore/store_error.h"

namespace odbstore {

namespace {

constexpr std::size_t kSuperblockBytes = 48;
constexpr std::array<unsigned char, 8> kSignature = {0x89, 'H', 'D', 'F', '\r', '\n', 0x1a, '\n'};
constexpr std::size_t kVersion = 8;
constexpr std::size_t kOffsetSize = 9;
constexpr std::size_t kFlags = 11;
constexpr std::size_t kEndOfFile = 28;
constexpr unsigned char kCheckedVersion = 3;
constexpr unsigned char kOpenForWriting = 1;

std::uint64_t littleEndian(const unsigned char* bytes) {
  std::uint64_t number = 0;
  for (int i = 7; i >= 0; --i) number = (number << 8U) | bytes[i];
  return number;
}

void checkSuperblock(const std::string& path, const std::array<unsigned char, kSuperblockBytes>& bytes,
                     std::uint64_t size) {
  if ((bytes[kFlags] & kOpenForWriting) != 0) {
    throw StoreError(path, "", "is still being written, or its writer ended without closing it");
  }
  const std::uint64_t end = littleEndian(bytes.data() + kEndOfFile);
  if (size < end) throw StoreError(path, "", fmt::format("is truncated: {} of its {} bytes are there", size, end));
  if (size > end) {
    throw StoreError(path, "", fmt::format("has {} bytes after its end at {}", size - end, end));
  }
}

// HDF5 looks for its signature at the first byte, at byte 512 and at every double of that (HDF5 File Format,
// version 3.0, section II.A): a file may begin with something else.
bool isHdf5(int file, std::int64_t bytes) {
  for (std::int64_t offset = 0; offset < bytes; offset = offset == 0 ? 512 : 2 * offset) {
    std::array<unsigned char, kSignature.size()> found{};
    const bool isThere = base::readAt(file, offset, std::as_writable_bytes(std::span(found))) == found.size();
    if (isThere && found == kSignature) return true;
  }
  return false;
}

}  // namespace

OpenedFile openForReading(const std::string& path, const std::string& name) {
  // Without waiting: opening a pipe would wait for somebody to write into it.
  base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file) throw base::NoFileError(name, std::strerror(errno));
  const FileStart start = examine(file.get(), name);
  return {std::move(file), start};
}

FileStart examine(int file, const std::string& name) {
  struct stat status {};
  if (::fstat(file, &status) != 0) throw StoreError(name, "", std::strerror(errno));
  if (S_ISDIR(status.st_mode)) throw base::NoFileError(name, "is a directory, not a database");
  if (!S_ISREG(status.st_mode)) throw base::NoFileError(name, "is not a regular file");
  if (status.st_size == 0) throw StoreError(name, "", "the file is empty");
  std::array<unsigned char, kSuperblockBytes> bytes{};
  const std::optional<std::size_t> got = base::readAt(file, 0, std::as_writable_bytes(std::span(bytes)));
  if (!got) throw StoreError(name, "", fmt::format("cannot be read ({})", std::strerror(errno)));
  if (!isHdf5(file, status.st_size)) throw StoreError(name, "", "is not a database: it is not an HDF5 file");
  const bool isAtStart = *got == bytes.size() && std::memcmp(bytes.data(), kSignature.data(), kSignature.size()) == 0;
  const bool isChecked = isAtStart && bytes[kVersion] == kCheckedVersion && bytes[kOffsetSize] == sizeof(std::uint64_t);
  if (isChecked) checkSuperblock(name, bytes, static_cast<std::uint64_t>(status.st_size));
  return {status.st_size, isChecked};
}

}  // namespace odbstore
