#include "importers/calculix/frd/frd_reader.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "importers/calculix/frd/frd_binary.h"
#include "importers/calculix/frd/frd_text.h"
#include "importers/input/diagnostics.h"
#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

// The keys of heading records other than the title.
bool isRunRecord(std::string_view text) {
  constexpr std::array keys = {"USER", "DATE", "TIME", "HOST", "PGM", "VERSION", "COMPILETIME", "DIR", "DBN", "MAT"};
  return std::any_of(keys.begin(), keys.end(), [&](std::string_view key) { return text.starts_with(key); });
}

}  // namespace

FrdReader::FrdReader(const std::string& path) : lines_(path) {
  std::string_view line;
  if (!lines_.reader().next(line)) lines_.fail("the file is empty");
  if (!line.starts_with("    1C")) lines_.fail("not a CalculiX result file (expected \"    1C\" on line 1)");
  while (lines_.reader().next(line)) {
    if (!line.starts_with("    1U") && !line.starts_with("    1C")) {
      pending_ = line;
      hasPending_ = true;
      return;
    }
    takeHeaderLine(line);
  }
}

void FrdReader::takeHeaderLine(std::string_view line) {
  const std::string_view text = trimmed(columns(line, 7, 66));
  if (text.starts_with("PGM")) {
    header_.program = storableText(trimmed(text.substr(3)));
  } else if (text.starts_with("VERSION")) {
    header_.program += " " + storableText(trimmed(text.substr(7)));
  } else if (lines_.lineNumber() == 2 && !isRunRecord(text)) {
    header_.title = storableText(text);
  }
}

std::optional<FrdBlock> FrdReader::next(const ResultFilter& isWanted) {
  try {
    return nextBlock(isWanted);
  } catch (const FrdLines::CutOff&) {
    cutOff_ = true;
  } catch (const ImportError&) {
    // What is wrong with a line without an end is that the rest of it is missing.
    if (lines_.reader().isTerminated()) throw;
    cutOff_ = true;
  }
  return std::nullopt;
}

std::optional<FrdBlock> FrdReader::next(const ResultFilter& isWanted, const LeaveOut& leaveOut) {
  for (;;) {
    try {
      return next(isWanted);
    } catch (const ImportError& error) {
      if (!isInTextResult_ || !leaveOut(results_ - 1, error)) throw;
      skipDamagedResult();
    }
  }
}

std::optional<FrdBlock> FrdReader::nextBlock(const ResultFilter& isWanted) {
  for (;;) {
    std::string line;
    if (hasPending_) {
      line = std::move(pending_);
      hasPending_ = false;
    } else {
      line = lines_.require();
    }
    if (line.starts_with(" 9999")) return std::nullopt;
    if (line.starts_with("    2C")) return readNodes(line);
    if (line.starts_with("    3C")) return readElements(line);
    if (line.starts_with("  100C")) return readResult(line, isWanted);
    if (!line.starts_with("    1")) lines_.fail("this is not the start of a result block");
    takeFrameLine(line);
  }
}

void FrdReader::takeFrameLine(std::string_view line) {
  if (line.starts_with("    1PSTEP")) {
    increment_ = lines_.integerAt(line, 37, 12, "the increment");
    step_ = lines_.integerAt(line, 49, 12, "the step");
    nodalDiameter_.reset();
    mode_ = 0;
    hasFrameLine_ = true;
  } else if (line.starts_with("    1PHID")) {
    const int diameter = lines_.integerAt(line, 25, 12, "the nodal diameter");
    // A model that is no sector of a cycle has -1 here.
    if (diameter >= 0) nodalDiameter_ = diameter;
  } else if (line.starts_with("    1PMODE")) {
    mode_ = lines_.integerAt(line, 25, 12, "the number of the mode");
  }
}

// The last column of a block's header tells how its rows are written. What is not text is binary in a way of its own
// for nodes and for elements.
RowFormat FrdReader::formatOf(std::string_view header) const {
  const std::string_view format = trimmed(columns(header, 73, 8));
  if (format == "1") return RowFormat::text;
  if (format == "2") return RowFormat::floats;
  if (format == "3") return RowFormat::doubles;
  lines_.fail(fmt::format("the format \"{}\" of the block is not known", storableText(format)));
}

std::size_t FrdReader::requireBinaryCount(std::optional<std::size_t> announced) const {
  // A block without an end counts as truncated; if the file continues, the end of the block must be marked.
  if (!announced) lines_.fail("the block is binary, and its count is missing");
  if (!lines_.reader().isTerminated()) throw FrdLines::CutOff{};
  return *announced;
}

FrdNodes FrdReader::readNodes(std::string_view header) {
  FrdNodes nodes;
  nodes.line = lines_.lineNumber();
  const RowFormat format = formatOf(header);
  const std::optional<std::size_t> announced = lines_.countAt(header);
  if (format == RowFormat::text) {
    readTextNodes(lines_, announced, nodes);
  } else {
    readBinaryNodes(lines_, requireBinaryCount(announced), nodes);
  }
  return nodes;
}

FrdElements FrdReader::readElements(std::string_view header) {
  FrdElements elements;
  elements.line = lines_.lineNumber();
  if (formatOf(header) == RowFormat::text) {
    readTextElements(lines_, elements);
  } else {
    readBinaryElements(lines_, requireBinaryCount(lines_.countAt(header)), elements);
  }
  return elements;
}

void FrdReader::readComponents(FrdResult& result, int count) {
  for (int i = 0; i < count; ++i) {
    const std::string_view line = lines_.requireKey(" -5", "a component");
    // A component that is computed from the others is announced, but has no numbers.
    const bool isComputed = integerFrom(columns(line, 34, 5)).value_or(0) == 1;
    if (isComputed) continue;
    result.components.push_back(
        {storableText(trimmed(columns(line, 6, 8))), integerFrom(columns(line, 19, 5)).value_or(1)});
  }
  if (result.components.empty()) lines_.fail(fmt::format("{} has no components", result.name));
}

void FrdReader::readResultHeader(FrdResult& result, std::string_view header) const {
  result.line = lines_.lineNumber();
  const std::string_view value = columns(header, 13, 12);
  if (const std::optional<double> number = numberFrom(value)) {
    result.value = *number;
  } else {
    lines_.fail(fmt::format("the value \"{}\" is not a number", storableText(value)));
  }
  const std::string_view kind = trimmed(columns(header, 58, 1));
  result.kind = kind.empty() ? AnalysisKind::steady
                             : static_cast<AnalysisKind>(lines_.integerAt(header, 58, 1, "the analysis kind"));
  result.frameCounter = lines_.integerAt(header, 59, 5, "the frame counter");
  result.step = step_;
  result.increment = hasFrameLine_ ? increment_ : result.frameCounter;
  // Steady states under loads that are not harmonic have their frequency as the text of the frame.
  result.isPeriodic =
      result.kind == AnalysisKind::time && result.increment == 0 && !trimmed(columns(header, 37, 20)).empty();
  result.nodalDiameter = nodalDiameter_;
  result.mode = mode_;
  result.format = formatOf(header);
}

FrdResult FrdReader::readResult(std::string_view header, const ResultFilter& isWanted) {
  FrdResult result;
  result.ordinal = results_++;
  isInTextResult_ = trimmed(columns(header, 73, 8)) != "2" && trimmed(columns(header, 73, 8)) != "3";
  lines_.startBlock();
  readResultHeader(result, header);
  const std::optional<std::size_t> announced = lines_.countAt(header);
  const std::string_view line = lines_.requireKey(" -4", "a field name");
  result.name = utf8Text(trimmed(columns(line, 6, 8)));
  if (result.name.empty()) lines_.fail("the field has no name");
  readComponents(result, lines_.integerAt(line, 14, 5, "the number of components"));
  const bool isRead = !isWanted || isWanted(result);
  if (result.format == RowFormat::text) {
    (isRead ? readTextRows : skipTextRows)(lines_, announced, result);
  } else {
    (isRead ? readBinaryRows : skipBinaryRows)(lines_, requireBinaryCount(announced), result);
  }
  isInTextResult_ = false;
  return result;
}

void FrdReader::skipDamagedResult() {
  isInTextResult_ = false;
  std::string_view line;
  while (!lines_.isAtEndOfBlock() && lines_.reader().next(line)) {
    if (line.starts_with(kEndOfRows)) return;
    if (!isBlockStart(line)) continue;
    pending_ = line;
    hasPending_ = true;
    return;
  }
}

}  // namespace importers::calculix
