#include "report/page_data.h"

#include <nlohmann/json.hpp>

namespace report {

namespace {

const char* wordOf(ItemType type) {
  switch (type) {
    case ItemType::float32:
      return "f32";
    case ItemType::int32:
      return "i32";
    case ItemType::uint16:
      return "u16";
    default:
      return "u8";
  }
}

}  // namespace

Json PageData::add(const PackedArray& array) {
  Json reference = {
      {"at", text_.size()}, {"length", array.text.size()}, {"type", wordOf(array.type)}, {"items", array.items}};
  if (array.isDelta) reference["stride"] = array.stride;
  text_ += array.text;
  text_ += '\n';
  return reference;
}

std::string scriptText(const Json& json) {
  const std::string plain = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string text;
  for (const char c : plain) {
    if (c == '<') {
      text += "\\u003c";
    } else {
      text += c;
    }
  }
  return text;
}

std::string htmlText(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '<') {
      escaped += "&lt;";
    } else if (c == '&') {
      escaped += "&amp;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

}  // namespace report
