#include "importers/calculix/dat/dat_reader.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "importers/input/text_fields.h"

namespace importers::calculix {

namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view firstWord(std::string_view text) {
  text = trimmed(text);
  return text.substr(0, std::min(text.find_first_of(kBlanks), text.size()));
}

// Sums over rows, and the motions of knots, begin with a word.
bool isWordOfRow(std::string_view word) {
  constexpr std::array<std::string_view, 4> words = {"TOTAL", "tra", "rot", "exp"};
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Damaged numbers and overflowed ones (stars) do not count as text either.
bool isRow(std::string_view line) {
  const std::string_view word = firstWord(line);
  const std::size_t first = std::min(word.find_first_not_of("+-."), word.size() - 1);
  const bool isNumeric = std::isdigit(static_cast<unsigned char>(word[first])) != 0 || word.front() == '*';
  return isNumeric || numberFrom(word) || isWordOfRow(word);
}

std::string squeezed(std::string_view text) {
  std::string out;
  for (text = trimmed(text); !text.empty(); text = trimmed(text)) {
    const std::string_view word = firstWord(text);
    out += (out.empty() ? "" : " ") + std::string(word);
    text.remove_prefix(word.size());
  }
  return out;
}

std::string lowerCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// "E I G E N": letters with one blank between them.
bool isSpacedWord(std::string_view text) {
  if (text.size() < 3 || text.size() % 2 == 0) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isLetter = std::isalpha(static_cast<unsigned char>(text[i])) != 0;
    if (i % 2 == 0 ? !isLetter : text[i] != ' ') return false;
  }
  return true;
}

std::string joined(std::string_view spaced) {
  std::string word;
  for (std::size_t i = 0; i < spaced.size(); i += 2) word += spaced[i];
  return word;
}

// A title of spaced words, and the number after them; false for any other line.
bool parseSpacedTitle(std::string_view line, DatTable& table) {
  std::string title;
  for (line = trimmed(line); !line.empty(); line = trimmed(line)) {
    const std::string_view part = line.substr(0, std::min(line.find("  "), line.size()));
    if (!isSpacedWord(part)) break;
    title += (title.empty() ? "" : " ") + joined(part);
    line.remove_prefix(part.size());
  }
  if (title.empty()) return false;
  table.title = lowerCased(title);
  table.number = numberFrom(firstWord(line));
  return true;
}

// Takes "and time 0.1E+01" off the end of a title.
std::optional<double> takeTime(std::string_view& text) {
  constexpr std::string_view mark = "time";
  const std::size_t at = text.rfind(mark);
  if (at == std::string_view::npos) return std::nullopt;
  const std::optional<double> time = numberFrom(text.substr(at + mark.size()));
  if (!time) return std::nullopt;
  text = trimmed(text.substr(0, at));
  for (const std::string_view word : {" and", " for"}) {
    if (text.ends_with(word)) text = trimmed(text.substr(0, text.size() - word.size()));
  }
  return time;
}

// "A, master set B" is "A, B"; sets have no blanks in their names here.
std::string setFrom(std::string_view text) {
  std::string set(firstWord(text));
  const std::size_t second = text.rfind(" set ");
  if (second != std::string_view::npos) set += " " + std::string(firstWord(text.substr(second + 5)));
  return set;
}

// Takes "for set NAME" off the end of a title, "forsetNAME", "for surface set NAME" and "for all contact elements" too.
std::string takeSet(std::string_view& text) {
  const std::size_t behind = text.rfind(')');
  for (std::size_t at = behind == std::string_view::npos ? 0 : behind; at < text.size(); ++at) {
    at = text.find("for", at);
    if (at == std::string_view::npos) return {};
    std::string_view rest = trimmed(text.substr(at + 3));
    const std::string_view head = text.substr(0, at);
    if (rest.starts_with("all contact elements")) {
      text = trimmed(head);
      return {};
    }
    for (const std::string_view kind : {"surface ", "slave "}) {
      if (rest.starts_with(kind)) rest = trimmed(rest.substr(kind.size()));
    }
    if (!rest.starts_with("set")) continue;
    text = trimmed(head);
    return setFrom(rest.substr(3));
  }
  return {};
}

}  // namespace

DatTable parseDatTitle(std::string_view line) {
  DatTable table;
  if (parseSpacedTitle(line, table)) return table;
  std::string_view text = trimmed(line);
  table.isOfFaces = text.find("element+face") != std::string_view::npos;
  table.heading = lowerCased(std::string(text));
  table.time = takeTime(text);
  table.set = utf8Text(takeSet(text));
  table.title = lowerCased(squeezed(text.substr(0, text.find('('))));
  return table;
}

// The next line that is not empty.
bool DatReader::nextLine() {
  if (isPending_) {
    isPending_ = false;
    return true;
  }
  while (lines_.next(line_)) {
    if (!lines_.isTerminated() && !trimmed(line_).empty()) {
      cutOff_ = true;
      return false;
    }
    if (!trimmed(line_).empty()) return true;
  }
  return false;
}

// Whether the line read last heads columns, as those between a spaced title and its rows do.
bool DatReader::isHeading() const {
  DatTable spaced;
  return inHeadings_ && !parseSpacedTitle(line_, spaced) && !parseDatTitle(line_).time;
}

std::optional<DatTable> DatReader::next() {
  while (nextLine()) {
    if (isRow(line_) || isHeading()) continue;
    DatTable table = parseDatTitle(line_);
    DatTable spaced;
    inHeadings_ = parseSpacedTitle(line_, spaced);
    table.line = lines_.lineNumber();
    return table;
  }
  return std::nullopt;
}

bool DatReader::findRow() {
  while (nextLine()) {
    if (isRow(line_)) {
      inHeadings_ = false;
      return true;
    }
    if (isHeading()) continue;
    isPending_ = true;
    return false;
  }
  return false;
}

bool DatReader::nextRow(std::string_view& line) {
  if (!findRow()) return false;
  line = line_;
  return true;
}

bool DatReader::nextRow(DatRow& row) {
  row.clear();
  if (!findRow()) return false;
  splitRow(line_, row);
  return true;
}

void splitRow(std::string_view line, DatRow& row) {
  row.clear();
  for (std::string_view rest = trimmed(line); !rest.empty(); rest = trimmed(rest)) {
    row.push_back(firstWord(rest));
    rest.remove_prefix(row.back().size());
  }
}

}  // namespace importers::calculix
