// Values in a row of bytes, as a program and the one that it has started hand them over.
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace netcdf {

class Packer {
 public:
  template <typename Value>
  void put(Value value) {
    static_assert(std::is_trivially_copyable_v<Value>);
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof(value));
  }
  void putText(std::string_view text) {
    put(std::uint64_t{text.size()});
    bytes_ += text;
  }
  std::string take() { return std::move(bytes_); }

 private:
  std::string bytes_;
};

// Throws std::runtime_error where the bytes end too early.
class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : bytes_(bytes) {}

  template <typename Value>
  Value get() {
    static_assert(std::is_trivially_copyable_v<Value>);
    Value value;
    std::memcpy(&value, cut(sizeof(Value)).data(), sizeof(Value));
    return value;
  }
  std::string_view getText() { return cut(get<std::uint64_t>()); }
  std::size_t left() const { return bytes_.size(); }

 private:
  std::string_view cut(std::uint64_t length) {
    if (length > bytes_.size()) throw std::runtime_error("bytes are missing");
    const std::string_view front = bytes_.substr(0, length);
    bytes_.remove_prefix(length);
    return front;
  }

  std::string_view bytes_;
};

}  // namespace netcdf
