#include "odbstore/unpack.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace odbstore {

namespace {

constexpr std::size_t kCheckBytes = 4;
constexpr int kLevel = 4;

// J. G. Fletcher's sum of 16-bit words as in HDF5: the higher byte first, an odd last byte as a high one.
std::uint32_t fletcher32(std::span<const std::byte> bytes) {
  constexpr std::size_t kWordsBeforeOverflow = 360;
  const auto at = [&](std::size_t i) { return static_cast<std::uint32_t>(bytes[i]); };
  const auto folded = [](std::uint32_t sum) { return (sum & 0xFFFFU) + (sum >> 16U); };
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  std::size_t word = 0;
  for (const std::size_t words = bytes.size() / 2; word < words;) {
    for (const std::size_t end = std::min(words, word + kWordsBeforeOverflow); word < end; ++word) {
      first += (at(2 * word) << 8U) | at(2 * word + 1);
      second += first;
    }
    first = folded(first);
    second = folded(second);
  }
  if (bytes.size() % 2 != 0) {
    first += at(bytes.size() - 1) << 8U;
    second += first;
    first = folded(first);
    second = folded(second);
  }
  return (folded(second) << 16U) | folded(first);
}

std::array<std::byte, kCheckBytes> sumBytes(std::span<const std::byte> bytes) {
  const std::uint32_t sum = fletcher32(bytes);
  std::array<std::byte, kCheckBytes> out{};
  for (std::size_t i = 0; i < kCheckBytes; ++i) out[i] = static_cast<std::byte>(sum >> (8 * i));
  return out;
}

// Removes the checksum from the end of the bytes; false if they do not match it.
bool takeSum(std::span<const std::byte>& bytes) {
  if (bytes.size() < kCheckBytes) return false;
  const std::span content = bytes.first(bytes.size() - kCheckBytes);
  const std::array<std::byte, kCheckBytes> sum = sumBytes(content);
  if (!std::equal(sum.begin(), sum.end(), bytes.end() - kCheckBytes)) return false;
  bytes = content;
  return true;
}

// zlib counts in unsigned numbers, which a slab may not fit.
uInt countFor(std::size_t left) {
  return static_cast<uInt>(std::min<std::size_t>(left, std::numeric_limits<uInt>::max()));
}

const char* inflateInto(std::span<const std::byte> stored, std::span<std::byte> out) {
  z_stream stream{};
  if (::inflateInit(&stream) != Z_OK) throw std::bad_alloc();
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(stored.data()));
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  std::size_t in = stored.size();
  std::size_t room = out.size();
  int status = Z_OK;
  while (status == Z_OK) {
    stream.avail_in = countFor(in);
    stream.avail_out = countFor(room);
    const uInt inBefore = stream.avail_in;
    const uInt roomBefore = stream.avail_out;
    status = ::inflate(&stream, Z_NO_FLUSH);
    in -= inBefore - stream.avail_in;
    room -= roomBefore - stream.avail_out;
  }
  ::inflateEnd(&stream);
  if (status == Z_MEM_ERROR) throw std::bad_alloc();
  if (status == Z_BUF_ERROR && room == 0) return "there are more packed numbers than the frame has";
  if (status == Z_BUF_ERROR) return "the packed numbers are truncated";
  if (status != Z_STREAM_END) return "the packed numbers are damaged";
  if (room != 0) return "there are fewer packed numbers than the frame has";
  if (in != 0) return "something follows the packed numbers";
  return nullptr;
}

void deflateInto(std::span<const std::byte> bytes, std::vector<std::byte>& out) {
  uLongf size = ::compressBound(bytes.size());
  out.resize(size);
  const int status = ::compress2(reinterpret_cast<Bytef*>(out.data()), &size,
                                 reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), kLevel);
  if (status != Z_OK) throw std::bad_alloc();
  out.resize(size);
}

void appendSum(std::vector<std::byte>& bytes) {
  const std::array<std::byte, kCheckBytes> sum = sumBytes(bytes);
  bytes.insert(bytes.end(), sum.begin(), sum.end());
}

constexpr const char* kWrongSum = "the packed numbers do not match their checksum";

// A slab with its checksum packed together.
const char* unpackSummed(std::span<const std::byte> stored, std::span<std::byte> out) {
  std::vector<std::byte> summed(out.size() + kCheckBytes);
  if (const char* const reason = inflateInto(stored, summed)) return reason;
  std::span<const std::byte> content = summed;
  if (!takeSum(content)) return kWrongSum;
  std::memcpy(out.data(), content.data(), out.size());
  return nullptr;
}

}  // namespace

const char* unpack(std::span<const std::byte> stored, Packing packing, std::span<std::byte> out) {
  if (packing == Packing::fletcher32Gzip) return unpackSummed(stored, out);
  const bool hasSum = packing == Packing::fletcher32 || packing == Packing::gzipFletcher32;
  if (hasSum && !takeSum(stored)) return kWrongSum;
  if (packing == Packing::gzip || packing == Packing::gzipFletcher32) return inflateInto(stored, out);
  if (stored.size() != out.size()) return "the number of values is not that of the frame";
  std::memcpy(out.data(), stored.data(), out.size());
  return nullptr;
}

void pack(std::span<const std::byte> slab, Packing packing, std::vector<std::byte>& out) {
  if (packing == Packing::fletcher32Gzip) {
    std::vector<std::byte> summed(slab.begin(), slab.end());
    appendSum(summed);
    return deflateInto(summed, out);
  }
  if (packing == Packing::gzip || packing == Packing::gzipFletcher32) {
    deflateInto(slab, out);
  } else {
    out.assign(slab.begin(), slab.end());
  }
  if (packing == Packing::fletcher32 || packing == Packing::gzipFletcher32) appendSum(out);
}

}  // namespace odbstore
