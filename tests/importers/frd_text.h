// Small result files, record by record, in the columns that the solver uses.
#pragma once

#include <fmt/core.h>

#include <string>
#include <vector>

namespace frd_text {

inline std::string number(double value) { return fmt::format("{:12.5E}", value); }

inline std::string numbers(const std::vector<double>& values) {
  std::string text;
  for (const double value : values) text += number(value);
  return text;
}

inline const std::string kHeading =
    "    1C\n"
    "    1Ua title of two words                                              \n"
    "    1UUSER                                                              \n"
    "    1UPGM               CalculiX                                        \n"
    "    1UVERSION           Version 2.20                             \n"
    "    1UMAT    1EL                                                        \n";

inline const std::string kEndOfBlock = " -3\n";
inline const std::string kEnd = " 9999\n";

struct Node {
  int label;
  std::vector<double> coordinates;
};

inline std::string nodes(const std::vector<Node>& nodes) {
  std::string text = fmt::format("    2C{:18}{:12}{:37}1\n", "", nodes.size(), "");
  for (const Node& node : nodes) text += fmt::format(" -1{:10}{}\n", node.label, numbers(node.coordinates));
  return text + kEndOfBlock;
}

struct Element {
  int label;
  int code;
  std::vector<int> nodes;  // in the order of the file
};

inline std::string elements(const std::vector<Element>& elements) {
  std::string text = fmt::format("    3C{:18}{:12}{:37}1\n", "", elements.size(), "");
  for (const Element& element : elements) {
    text += fmt::format(" -1{:10}{:5}    0    1", element.label, element.code);
    for (std::size_t i = 0; i < element.nodes.size(); ++i) {
      text += fmt::format("{}{:10}", i % 10 == 0 ? "\n -2" : "", element.nodes[i]);
    }
    text += "\n";
  }
  return text + kEndOfBlock;
}

// The two records that a result block starts with.
struct Frame {
  int step = 1;
  int increment = 1;
  int counter = 1;
  double value = 1.0;
  int kind = 0;
  std::string more = "";  // records between the two
};

inline std::string frame(const Frame& frame, std::size_t rows) {
  return fmt::format("    1PSTEP{:14}{:12}{:12}{:12}          \n{}", "", 1, frame.increment, frame.step, frame.more) +
         fmt::format("  100C{:>6}{:12.5E}{:12}{:20}{:2}{:5}{:11}1\n", fmt::format("L{:5}", 100 + frame.counter),
                     frame.value, rows, "", frame.kind, frame.counter, "");
}

struct Component {
  std::string name;
  int kind;
  bool isComputed = false;
};

struct Row {
  int label;
  std::vector<double> values;
};

inline std::string rows(const std::vector<Row>& rows) {
  std::string text;
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.values.size(); ++i) {
      if (i % 6 == 0) text += i == 0 ? fmt::format(" -1{:10}", row.label) : "\n -2          ";
      text += number(row.values[i]);
    }
    text += "\n";
  }
  return text;
}

inline std::string components(const std::string& name, const std::vector<Component>& components) {
  std::string text = fmt::format(" -4  {:<8}{:5}    1\n", name, components.size());
  for (const Component& component : components) {
    text += fmt::format(" -5  {:<8}    1{:5}    1    0{}\n", component.name, component.kind,
                        component.isComputed ? "    1ALL" : "");
  }
  return text;
}

inline std::string result(const Frame& at, const std::string& name, const std::vector<Component>& all,
                          const std::vector<Row>& rowsOfAll) {
  return frame(at, rowsOfAll.size()) + components(name, all) + rows(rowsOfAll) + kEndOfBlock;
}

inline const std::vector<Component> kDisplacement = {{"D1", 2}, {"D2", 2}, {"D3", 2}, {"ALL", 2, true}};
inline const std::vector<Component> kStress = {{"SXX", 4}, {"SYY", 4}, {"SZZ", 4}, {"SXY", 4}, {"SYZ", 4}, {"SZX", 4}};
inline const std::vector<Component> kTemperature = {{"T", 1}};

// Two bars of two nodes each, 1-2-3, and what comes before the results.
inline std::string twoBars() {
  return kHeading + nodes({{1, {0, 0, 0}}, {2, {1, 0, 0}}, {3, {2.5, 0, -1}}}) +
         elements({{10, 11, {1, 2}}, {20, 11, {2, 3}}});
}

}  // namespace frd_text
