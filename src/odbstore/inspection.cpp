#include "odbstore/inspection.h"

#include <cstring>
#include <span>
#include <stdexcept>

namespace odbstore {

namespace {

void putNumber(std::string& out, std::int64_t number) {
  char bytes[sizeof(number)];
  std::memcpy(bytes, &number, sizeof(number));
  out.append(bytes, sizeof(number));
}

void putText(std::string& out, std::string_view text) {
  putNumber(out, static_cast<std::int64_t>(text.size()));
  out.append(text);
}

class Taker {
 public:
  explicit Taker(std::string_view bytes) : bytes_(bytes) {}

  std::int64_t number() {
    std::int64_t number = 0;
    std::memcpy(&number, take(sizeof(number)).data(), sizeof(number));
    return number;
  }
  // How many items follow; each takes at least the bytes of a number.
  std::int64_t count() {
    const std::int64_t count = number();
    if (count < 0 || static_cast<std::size_t>(count) > bytes_.size() / sizeof(count)) fail();
    return count;
  }
  std::string_view text() {
    const std::int64_t size = number();
    if (size < 0) fail();
    return take(static_cast<std::size_t>(size));
  }
  void end() const {
    if (!bytes_.empty()) fail();
  }

 private:
  [[noreturn]] static void fail() { throw std::runtime_error("the inspection is incomplete"); }

  std::string_view take(std::size_t size) {
    if (size > bytes_.size()) fail();
    const std::string_view taken = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return taken;
  }

  std::string_view bytes_;
};

}  // namespace

std::string packed(const Inspection& inspection) {
  std::string out;
  putNumber(out, inspection.layout);
  putText(out, {reinterpret_cast<const char*>(inspection.catalog.data()), inspection.catalog.size()});
  putNumber(out, static_cast<std::int64_t>(inspection.problems.size()));
  for (const Problem& problem : inspection.problems) {
    putText(out, problem.object);
    putText(out, problem.reason);
  }
  putNumber(out, static_cast<std::int64_t>(inspection.extents.size()));
  std::string_view before;
  for (const DataExtent& extent : inspection.extents) {
    // Chunks of one data set mostly follow each other: an empty path repeats that of the previous extent.
    putText(out, extent.path == before ? "" : extent.path);
    for (const std::int64_t number : {extent.begin, extent.end, extent.firstSlab, extent.slabBytes})
      putNumber(out, number);
    before = extent.path;
  }
  return out;
}

Inspection unpackedInspection(std::string_view bytes) {
  Taker taker(bytes);
  Inspection inspection;
  inspection.layout = static_cast<int>(taker.number());
  const std::string_view catalog = taker.text();
  const auto* const first = reinterpret_cast<const std::byte*>(catalog.data());
  inspection.catalog.assign(first, first + catalog.size());
  for (std::int64_t left = taker.count(); left > 0; --left) {
    std::string object(taker.text());
    inspection.problems.push_back({std::move(object), std::string(taker.text())});
  }
  for (std::int64_t left = taker.count(); left > 0; --left) {
    DataExtent extent;
    extent.path = taker.text();
    if (extent.path.empty() && !inspection.extents.empty()) extent.path = inspection.extents.back().path;
    extent.begin = taker.number();
    extent.end = taker.number();
    extent.firstSlab = taker.number();
    extent.slabBytes = taker.number();
    inspection.extents.push_back(std::move(extent));
  }
  taker.end();
  return inspection;
}

}  // namespace odbstore
