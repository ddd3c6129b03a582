// Reads a CalculiX result file (.frd), ASCII or binary, one block after the other.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "importers/calculix/frd/frd_blocks.h"
#include "importers/calculix/frd/frd_lines.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// Whether the rows of a result are wanted; called when everything but its rows is known.
using ResultFilter = std::function<bool(const FrdResult&)>;

// Whether a result that cannot be read is left out; asked with its ordinal among the results of the file, from 0.
using LeaveOut = std::function<bool(std::size_t ordinal, const ImportError& error)>;

// Reads the blocks in their order, one in memory at a time.
class FrdReader {
 public:
  // Opens the file and reads its header. Throws ImportError if it is not an .frd file.
  explicit FrdReader(const std::string& path);

  const FrdHeader& header() const { return header_; }
  std::int64_t lineNumber() const { return lines_.lineNumber(); }
  // The position in the file and its size, in bytes.
  std::uint64_t offset() const { return lines_.reader().offset(); }
  std::uint64_t size() const { return lines_.reader().size(); }

  // The next complete block; nothing at the end of the file. A damaged line, rows that are not as many as announced and
  // an unknown format are an ImportError with its line. A file that ends inside a line or a block, or without its last
  // line, is truncated: that block is not returned. A result that `isWanted` rejects has no labels and values.
  std::optional<FrdBlock> next(const ResultFilter& isWanted = {});

  // The same, but skips results that cannot be read if `leaveOut`, called with the ordinal and the error, returns true.
  // After an error in the mesh or in a binary block the rest of the file cannot be found, so it is always thrown.
  std::optional<FrdBlock> next(const ResultFilter& isWanted, const LeaveOut& leaveOut);

  // After next() has returned nothing: whether the file ended before its last line.
  bool isCutOff() const { return cutOff_; }

 private:
  std::optional<FrdBlock> nextBlock(const ResultFilter& isWanted);
  void skipDamagedResult();
  void takeHeaderLine(std::string_view line);
  void takeFrameLine(std::string_view line);
  RowFormat formatOf(std::string_view header) const;
  std::size_t requireBinaryCount(std::optional<std::size_t> announced) const;
  FrdNodes readNodes(std::string_view header);
  FrdElements readElements(std::string_view header);
  FrdResult readResult(std::string_view header, const ResultFilter& isWanted);
  void readResultHeader(FrdResult& result, std::string_view header) const;
  void readComponents(FrdResult& result, int count);

  FrdLines lines_;
  FrdHeader header_;
  std::string pending_;  // a line read ahead
  bool hasPending_ = false;
  bool cutOff_ = false;
  bool hasFrameLine_ = false;
  std::size_t results_ = 0;  // whose headers have been met
  bool isInTextResult_ = false;
  int step_ = 1;
  int increment_ = 0;
  std::optional<int> nodalDiameter_;
  int mode_ = 0;
};

}  // namespace importers::calculix
