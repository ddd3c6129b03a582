// Reads a CalculiX result file (.frd), ASCII, one block after the other.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "importers/line_reader.h"

namespace importers::calculix {

// What the header lines before the first block say.
struct FrdHeader {
  std::string title;
  std::string program;  // name and version
};

struct FrdNodes {
  std::int64_t line = 0;  // of its header
  std::vector<int> labels;
  std::vector<double> coordinates;  // [nodes, 3]
};

// Elements of one type code (elementCode()), nodes in the order of the solver's deck.
struct FrdElementGroup {
  int code = 0;
  int nodesPerElement = 0;
  std::vector<int> labels;
  std::vector<int> connectivity;  // [elements, nodesPerElement]
};

struct FrdElements {
  std::int64_t line = 0;                // of its header
  std::vector<FrdElementGroup> groups;  // by the first appearance of their codes, elements in file order
};

enum class AnalysisKind { steady = 0, time = 1, modal = 2, other = 3, buckling = 4 };

// How a result component behaves, as the file declares it.
enum class ComponentKind { scalar = 1, vector = 2, matrix = 4, complexVector = 12, complexMatrix = 14 };

struct FrdComponent {
  std::string name;
  int kind = 1;  // ComponentKind where it is a known one
};

// One field of one frame.
struct FrdResult {
  std::string name;
  std::vector<FrdComponent> components;  // those that are stored
  int step = 0;
  int increment = 0;
  int frameCounter = 0;
  double value = 0.0;  // total time, frequency, buckling factor
  AnalysisKind kind = AnalysisKind::steady;
  std::optional<int> nodalDiameter;  // of a mode of a cyclic model
  std::int64_t line = 0;             // of its header
  std::vector<int> labels;           // of nodes
  std::vector<float> values;         // [labels, components]
};

using FrdBlock = std::variant<FrdNodes, FrdElements, FrdResult>;

// Reads the blocks in their order, one in memory at a time.
class FrdReader {
 public:
  // Opens the file and reads its header. Throws ImportError for what is no .frd file.
  explicit FrdReader(const std::string& path);

  const FrdHeader& header() const { return header_; }
  std::int64_t lineNumber() const { return lines_.lineNumber(); }

  // The next complete block; nothing at the end of the file. A damaged line, rows that are not as many as announced,
  // and a binary block are an ImportError with its line. A file that ends inside a line or a block, or without its last
  // line, is cut off: that block is not handed out.
  std::optional<FrdBlock> next();

  // After next() has returned nothing: whether the file ended before its last line.
  bool isCutOff() const { return cutOff_; }

 private:
  struct CutOff {};

  std::optional<FrdBlock> nextBlock();
  void takeHeaderLine(std::string_view line);
  void takeFrameLine(std::string_view line);
  std::string_view require();
  std::string_view requireKey(std::string_view key, const char* what);
  int integerAt(std::string_view line, std::size_t column, std::size_t width, const char* what) const;
  std::optional<std::size_t> countAt(std::string_view line) const;
  void requireCount(std::optional<std::size_t> announced, std::size_t found, std::int64_t line, const char* what) const;
  void requireAscii(std::string_view line) const;
  FrdNodes readNodes(std::string_view header);
  FrdElements readElements(std::string_view header);
  FrdResult readResult(std::string_view header);
  void readResultHeader(FrdResult& result, std::string_view header) const;
  void readComponents(FrdResult& result, int count);
  void readRows(FrdResult& result);
  void readNumbers(std::string_view line, std::size_t count, float* out) const;

  LineReader lines_;
  FrdHeader header_;
  std::string pending_;  // a line read ahead
  bool hasPending_ = false;
  bool cutOff_ = false;
  bool hasFrameLine_ = false;
  int step_ = 1;
  int increment_ = 0;
  std::optional<int> nodalDiameter_;
};

}  // namespace importers::calculix
