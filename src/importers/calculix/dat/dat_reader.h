// Reads the tables that a CalculiX run prints (.dat), one after the other.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "importers/input/line_reader.h"

namespace importers::calculix {

// The lines above the rows of a table.
struct DatTable {
  // In lower case up to the first parenthesis, blanks squeezed: "stresses", "total force", "statistics". Titles that
  // are spaced out are joined: "eigenvalue output".
  std::string title;
  std::string set;               // as the solver prints it, or "A, B" for two; empty for none; storable text
  std::optional<double> time;    // total time or frequency
  std::optional<double> number;  // that ends a spaced title: the mode or the frequency
  bool isOfFaces = false;        // of contact: rows are points of faces, not nodes
  std::string heading;           // the whole line, in lower case
  std::int64_t line = 0;
};

// The words of a row. Valid until the next call of the reader.
using DatRow = std::vector<std::string_view>;

class DatReader {
 public:
  // Throws ImportError when the file cannot be opened.
  explicit DatReader(const std::string& path) : lines_(path) {}

  // The next table, after all rows of the one before; nothing at the end of the file.
  std::optional<DatTable> next();
  // The next row of the table returned last; false after its last row. A last line without a line end does not count as
  // a row.
  bool nextRow(DatRow& row);
  // The same as the whole line.
  bool nextRow(std::string_view& line);

  // The position in the file and its size, in bytes.
  std::uint64_t offset() const { return lines_.offset(); }
  std::uint64_t size() const { return lines_.size(); }
  // Of the line read last.
  std::int64_t lineNumber() const { return lines_.lineNumber(); }
  const std::string& path() const { return lines_.path(); }
  // Whether the file ended inside a line.
  bool isCutOff() const { return cutOff_; }

 private:
  bool nextLine();
  bool findRow();
  bool isHeading() const;

  LineReader lines_;
  std::string_view line_;   // read last, not empty
  bool isPending_ = false;  // whether that line has not been returned yet
  bool inHeadings_ = false;
  bool cutOff_ = false;
};

// The words of a line.
void splitRow(std::string_view line, DatRow& row);

// What a line of text means as the head of a table, without its number in the file.
DatTable parseDatTitle(std::string_view line);

}  // namespace importers::calculix
