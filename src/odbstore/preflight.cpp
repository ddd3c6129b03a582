#include "odbstore/preflight.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "base/descriptor.h"
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

// Without waiting: opening a pipe would wait for somebody to write into it.
base::Descriptor openFile(const std::string& path) {
  base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file) throw base::NoFileError(path, std::strerror(errno));
  return file;
}

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
  if (size < end) throw StoreError(path, "", fmt::format("is cut off: {} of its {} bytes are there", size, end));
  if (size > end) {
    throw StoreError(path, "", fmt::format("has {} bytes behind its end, which is at {}", size - end, end));
  }
}

}  // namespace

std::size_t readStart(int file, const std::string& path, std::span<char> bytes) {
  const std::optional<std::size_t> got = base::readAt(file, 0, std::as_writable_bytes(bytes));
  if (!got) throw StoreError(path, "", fmt::format("cannot be read ({})", std::strerror(errno)));
  return *got;
}

Preflight checkBeforeOpening(const std::string& path) {
  const base::Descriptor file = openFile(path);
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) throw StoreError(path, "", std::strerror(errno));
  if (S_ISDIR(status.st_mode)) throw base::NoFileError(path, "is a directory, not a database");
  if (!S_ISREG(status.st_mode)) throw base::NoFileError(path, "is not a regular file");
  if (status.st_size == 0) throw StoreError(path, "", "the file is empty");
  std::array<unsigned char, kSuperblockBytes> bytes{};
  const std::span start(reinterpret_cast<char*>(bytes.data()), bytes.size());
  const bool isWhole = readStart(file.get(), path, start) == start.size();
  const bool isHdf5 = isWhole && std::memcmp(bytes.data(), kSignature.data(), kSignature.size()) == 0;
  const bool isChecked = isHdf5 && bytes[kVersion] == kCheckedVersion && bytes[kOffsetSize] == sizeof(std::uint64_t);
  if (isChecked) checkSuperblock(path, bytes, static_cast<std::uint64_t>(status.st_size));
  return {status.st_size, isChecked};
}

}  // namespace odbstore
