// Small binary result files, in the records that the solver writes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frd_text.h"

namespace frd_bytes {

template <class Number>
void append(std::string& bytes, Number number) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof(number));
}

// The same block header with another format in its last column.
inline std::string inFormat(char format, std::string text) {
  text[text.rfind('\n') - 1] = format;
  return text;
}

inline std::string nodesHeader(std::size_t count) { return fmt::format("    2C{:18}{:12}{:37}3\n", "", count, ""); }

inline std::string nodes(const std::vector<frd_text::Node>& nodes) {
  std::string bytes = nodesHeader(nodes.size());
  for (const frd_text::Node& node : nodes) {
    append<std::int32_t>(bytes, node.label);
    for (const double coordinate : node.coordinates) append(bytes, coordinate);
  }
  return bytes;
}

inline std::string elementsHeader(std::size_t count) { return fmt::format("    3C{:18}{:12}{:37}2\n", "", count, ""); }

inline std::string elements(const std::vector<frd_text::Element>& elements) {
  std::string bytes = elementsHeader(elements.size());
  for (const frd_text::Element& element : elements) {
    for (const int number : {element.label, element.code, 0, 1}) append<std::int32_t>(bytes, number);
    for (const int node : element.nodes) append<std::int32_t>(bytes, node);
  }
  return bytes;
}

template <class Number>
std::string rows(const std::vector<frd_text::Row>& rows) {
  std::string bytes;
  for (const frd_text::Row& row : rows) {
    append<std::int32_t>(bytes, row.label);
    for (const double value : row.values) append(bytes, static_cast<Number>(value));
  }
  return bytes;
}

template <class Number>
std::string result(const frd_text::Frame& at, const std::string& name, const std::vector<frd_text::Component>& all,
                   const std::vector<frd_text::Row>& rowsOfAll) {
  const char format = sizeof(Number) == sizeof(double) ? '3' : '2';
  return inFormat(format, frd_text::frame(at, rowsOfAll.size())) + frd_text::components(name, all) +
         rows<Number>(rowsOfAll);
}

// The model of frd_text::twoBars().
inline std::string twoBars() {
  return frd_text::kHeading + nodes({{1, {0, 0, 0}}, {2, {1, 0, 0}}, {3, {2.5, 0, -1}}}) +
         elements({{10, 11, {1, 2}}, {20, 11, {2, 3}}});
}

}  // namespace frd_bytes
