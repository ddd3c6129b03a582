#include "tables/json_value.h"

#include <nlohmann/json.hpp>

namespace tables {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view afterDigits(std::string_view text) {
  while (!text.empty() && isDigit(text.front())) text.remove_prefix(1);
  return text;
}

// number = [ minus ] int [ frac ] [ exp ], RFC 8259, section 6.
bool isNumber(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  if (text.empty() || !isDigit(text.front())) return false;
  const bool isZero = text.front() == '0';
  text.remove_prefix(1);
  if (!isZero) text = afterDigits(text);
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    if (text.empty() || !isDigit(text.front())) return false;
    text = afterDigits(text);
  }
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    if (text.empty() || !isDigit(text.front())) return false;
    text = afterDigits(text);
  }
  return text.empty();
}

std::string jsonOfWord(std::string_view word) {
  if (isNumber(word)) return std::string(word);
  return word == "None" ? "null" : jsonOfText(word);
}

// A tuple of numbers and of tuples, "((0, 0), (0.5, 12.25))"; empty where it is not one.
std::string jsonOfTuple(std::string_view text) {
  std::string json;
  int depth = 0;
  while (!text.empty()) {
    const char c = text.front();
    if (c == '(' || c == ')') {
      depth += c == '(' ? 1 : -1;
      if (depth < 0 || (depth == 0 && text.size() > 1)) return {};
      json += c == '(' ? '[' : ']';
      text.remove_prefix(1);
    } else if (c == ',') {
      json += ',';
      text.remove_prefix(text.starts_with(", ") ? 2 : 1);
    } else {
      const std::string_view word = text.substr(0, text.find_first_of("(),"));
      json += jsonOfWord(word);
      text.remove_prefix(word.size());
    }
  }
  return depth == 0 && nlohmann::json::accept(json) ? json : std::string();
}

}  // namespace

std::string jsonOfText(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string jsonOfValue(std::string_view value) {
  if (value.starts_with('(')) {
    std::string tuple = jsonOfTuple(value);
    if (!tuple.empty()) return tuple;
  }
  return jsonOfWord(value);
}

}  // namespace tables
