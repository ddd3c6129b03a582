// What the page is told: a description in JSON and, beside it, the packed arrays that it refers to.
#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "report/packing.h"

namespace report {

using Json = nlohmann::ordered_json;

// Collects arrays up to a number of bytes.
class PageData {
 public:
  explicit PageData(std::size_t most) : most_(most) {}

  // Takes an array, and returns how the description refers to it. There is no limit here: those who have a choice ask
  // hasRoomFor() first.
  Json add(const PackedArray& array);
  bool hasRoomFor(std::size_t bytes) const { return text_.size() + bytes <= most_; }
  // Counts what stands elsewhere in the page.
  void reserve(std::size_t bytes) { most_ = bytes < most_ ? most_ - bytes : 0; }
  std::size_t room() const { return text_.size() < most_ ? most_ - text_.size() : 0; }

  const std::string& text() const { return text_; }

 private:
  std::size_t most_;
  std::string text_;
};

// The description as it may stand in a <script> element: "<" and whatever is not UTF-8 are escaped or replaced.
std::string scriptText(const Json& json);
// Text for the content of an element.
std::string htmlText(const std::string& text);

}  // namespace report
