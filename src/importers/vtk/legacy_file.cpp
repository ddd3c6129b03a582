#include "importers/vtk/legacy_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include "importers/input/text_fields.h"
#include "importers/vtk/text_cursor.h"

namespace importers::vtk {

namespace {

constexpr std::uint64_t kMostRows = std::numeric_limits<std::int32_t>::max();

// Names are written with "%20" for a blank.
std::string decoded(const std::string& text) {
  std::string name;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char byte = 0;
    const bool isCode = text[i] == '%' && i + 2 < text.size() &&
                        std::from_chars(text.data() + i + 1, text.data() + i + 3, byte, 16).ptr == text.data() + i + 3;
    name += isCode ? static_cast<char>(byte) : text[i];
    if (isCode) i += 2;
  }
  return name;
}

class LegacyFile {
 public:
  explicit LegacyFile(const InputFile& file) : file_(file), text_(file) {}

  Grid read() {
    readStart();
    Piece& piece = grid_.pieces.emplace_back();
    piece.line = text_.line();
    for (std::string word = next(); !word.empty(); word = next()) takeSection(word, piece);
    if (!hasPoints_) throw CutOff(text_.place(), "the file ends before its points");
    if (hasCells_ && !hasTypes_) throw CutOff(text_.place(), "the file ends before the types of its cells");
    grid_.form = isBinary_ ? "legacy binary" : "legacy ASCII";
    return std::move(grid_);
  }

 private:
  std::string next() { return upperCased(text_.word()); }

  std::string needed(const char* what) {
    std::string word = text_.word();
    if (word.empty()) text_.failCut(what);
    return word;
  }

  std::uint64_t count(const char* what, std::uint64_t most) {
    const std::string word = needed(what);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error == std::errc() && end == word.data() + word.size() && value <= most) return value;
    // A word that the end of the file has cut.
    if (text_.isAtEnd() && error == std::errc()) text_.failCut(what);
    text_.fail(fmt::format("\"{}\" is not a number of {} up to {}", word.substr(0, 40), what, most));
  }

  void readStart() {
    const std::string first = text_.restOfLine();
    const std::string version = first.substr(std::string_view("# vtk DataFile Version").size());
    version_ = numberFrom(version).value_or(1.0);
    grid_.title = std::string(trimmed(text_.restOfLine()));
    const std::string form = next();
    if (form != "ASCII" && form != "BINARY") {
      if (form.empty()) text_.failCut("its first lines");
      text_.fail("line 3 is neither ASCII nor BINARY");
    }
    isBinary_ = form == "BINARY";
  }

  void takeSection(const std::string& word, Piece& piece) {
    if (word == "DATASET") return takeDataSet();
    if (word == "FIELD") return takeField(piece);
    if (word == "METADATA") return takeMetadata();
    if (word == "POINTS") return takePoints(piece);
    if (word == "CELLS") return takeCells(piece);
    if (word == "CELL_TYPES") return takeTypes(piece);
    if (word == "POINT_DATA" || word == "CELL_DATA") {
      list_ = word == "POINT_DATA" ? &piece.pointData : &piece.cellData;
      rows_ = count("rows", kMostRows);
      const std::uint64_t expected = word == "POINT_DATA" ? piece.points : piece.cells;
      if (rows_ != expected) text_.fail(fmt::format("{} has {} rows, and the grid has {}", word, rows_, expected));
      return;
    }
    takeAttribute(word);
  }

  void takeDataSet() {
    const std::string kind = upperCased(needed("its first lines"));
    if (kind != "UNSTRUCTURED_GRID") {
      throw OtherKind(text_.place(),
                      fmt::format("the data set is {}; only UNSTRUCTURED_GRID is imported", kind.substr(0, 40)));
    }
  }

  NumberType neededType() {
    const std::string word = needed("the head of an array");
    const std::optional<NumberType> type = typeOfLegacy(word);
    if (!type) text_.fail(fmt::format("arrays of the type {} are not read", word.substr(0, 40)));
    return *type;
  }

  void takePoints(Piece& piece) {
    if (hasPoints_) text_.fail("the file has points twice");
    hasPoints_ = true;
    piece.points = count("points", kMostRows);
    const NumberType type = neededType();
    piece.coordinates = array("Points", type, piece.points, 3);
  }

  // Since version 5 two lists, where each cell begins and the points of all; before, one with counts in it.
  void takeCells(Piece& piece) {
    if (hasCells_) text_.fail("the file has cells twice");
    hasCells_ = true;
    const std::uint64_t first = count("cells", kMostRows + 1);
    const std::uint64_t size = count("numbers", kMostNumbers);
    if (version_ < 5) {
      piece.cells = first;
      piece.lists = CellLists::counts;
      piece.connectivity = array("CELLS", NumberType::int32, size, 1);
    } else {
      piece.cells = first == 0 ? 0 : first - 1;
      piece.lists = CellLists::begins;
      piece.offsets = listOfCells("OFFSETS", first);
      piece.connectivity = listOfCells("CONNECTIVITY", size);
    }
    if (piece.cells > kMostRows) text_.fail("the file has too many cells");
  }

  StoredArray listOfCells(const std::string& name, std::uint64_t size) {
    if (upperCased(needed("CELLS")) != name) text_.fail(fmt::format("{} is expected here", name));
    const NumberType type = neededType();
    return array(name, type, size, 1);
  }

  void takeTypes(Piece& piece) {
    if (hasTypes_) text_.fail("the file has CELL_TYPES twice");
    hasTypes_ = true;
    const std::uint64_t cells = count("cells", kMostRows);
    if (cells != piece.cells) text_.fail(fmt::format("there are {} types of {} cells", cells, piece.cells));
    piece.types = array("CELL_TYPES", NumberType::int32, cells, 1);
  }

  // The array whose numbers come now, and passes over them.
  StoredArray array(const std::string& name, NumberType type, std::uint64_t tuples, std::uint64_t components) {
    if (components != 0 && tuples > kMostNumbers / components) text_.fail("an array is too large");
    StoredArray array;
    array.name = name;
    array.type = type;
    array.tuples = tuples;
    array.components = static_cast<std::size_t>(std::max<std::uint64_t>(components, 1));
    array.line = text_.line();
    array.encoding = isBinary_ ? Encoding::raw : Encoding::text;
    array.isBigEndian = true;
    if (components == 0) array.tuples = 0;
    if (isBinary_) {
      text_.restOfLine();
      array.begin = text_.offset();
      if (array.numbers() > file_.size() / sizeOf(type)) text_.failCut(fmt::format("the array \"{}\"", name));
      text_.skipBytes(array.numbers() * sizeOf(type));
    } else {
      array.begin = text_.offset();
      if (array.numbers() > file_.size()) text_.failCut(fmt::format("the array \"{}\"", name));
      text_.skipWords(array.numbers());
    }
    array.end = text_.offset();
    return array;
  }

  // Words of text, and bits, which are no results.
  void skip(const std::string& type, std::uint64_t count) {
    const bool isBits = upperCased(type) == "BIT";
    if (count > file_.size() * 8) text_.failCut("an array");
    if (isBinary_) {
      text_.restOfLine();
      if (isBits) return text_.skipBytes((count + 7) / 8);
      for (std::uint64_t i = 0; i < count; ++i) skipString();
    } else if (isBits) {
      text_.skipWords(count);
    } else {
      text_.restOfLine();
      for (std::uint64_t i = 0; i < count; ++i) text_.restOfLine();
    }
  }

  // The upper two bits of the first byte say in how many bytes the length of a text is written, the highest first.
  void skipString() {
    const std::uint64_t begin = text_.offset();
    std::array<std::byte, 8> stored{};
    const std::size_t got = file_.read(begin, stored);
    const unsigned kind = static_cast<unsigned>(stored[0]) >> 6U;
    const std::size_t bytes = std::size_t{8} >> kind;
    if (got < bytes) text_.failCut("an array of texts");
    std::uint64_t length = static_cast<std::uint64_t>(stored[0]) & 0x3FU;
    for (std::size_t i = 1; i < bytes; ++i) length = length << 8U | static_cast<std::uint64_t>(stored[i]);
    text_.skipBytes(bytes);
    text_.skipBytes(length);
  }

  void keep(StoredArray array, std::int64_t line) {
    array.line = line;
    std::vector<StoredArray>& list = list_ == nullptr ? grid_.fieldData : *list_;
    const auto isSame = [&](const StoredArray& one) { return one.name == array.name; };
    last_ = nullptr;
    if (list_ != nullptr && array.tuples != rows_) {
      grid_.remarks.emplace_back(line, fmt::format("the array \"{}\" has {} rows instead of {}; it is left out",
                                                   array.name, array.tuples, rows_));
    } else if (std::any_of(list.begin(), list.end(), isSame)) {
      grid_.remarks.emplace_back(line, fmt::format("a second array \"{}\" is left out", array.name));
    } else {
      last_ = &list.emplace_back(std::move(array));
    }
  }

  void takeField(Piece& /*piece*/) {
    needed("FIELD");  // its name
    const std::uint64_t arrays = count("arrays", file_.size());
    for (std::uint64_t i = 0; i < arrays; ++i) {
      std::string name = needed("FIELD");
      // What is said of the array before.
      if (upperCased(name) == "METADATA") {
        takeMetadata();
        name = needed("FIELD");
      }
      const std::uint64_t components = count("components", kMostComponents);
      const std::uint64_t tuples = count("rows", kMostNumbers >> 20U);
      const std::string word = needed("FIELD");
      const std::int64_t line = text_.line();
      if (const std::optional<NumberType> type = typeOfLegacy(word)) {
        keep(array(decoded(name), *type, tuples, components), line);
      } else if (upperCased(word) == "BIT" || upperCased(word) == "STRING") {
        skip(word, components * tuples);
      } else {
        text_.fail(fmt::format("arrays of the type {} are not read", word.substr(0, 40)));
      }
    }
  }

  // Up to the next empty line.
  void takeMetadata() {
    text_.restOfLine();
    for (std::string line = text_.restOfLine(); !trimmed(line).empty(); line = text_.restOfLine()) {
      if (trimmed(line) == "COMPONENT_NAMES" && last_ != nullptr) takeComponentNames(*last_);
    }
  }

  void takeComponentNames(StoredArray& array) {
    for (std::size_t i = 0; i < array.components && !text_.isAtEnd(); ++i) {
      array.componentNames.push_back(decoded(text_.restOfLine()));
    }
    if (array.componentNames.size() != array.components) array.componentNames.clear();
  }

  void takeAttribute(const std::string& word) {
    if (word == "LOOKUP_TABLE") {
      needed("LOOKUP_TABLE");
      const std::uint64_t size = count("colours", file_.size());
      array("LOOKUP_TABLE", NumberType::uint8, size, 4);
      return;
    }
    if (list_ == nullptr) text_.fail(fmt::format("\"{}\" is not known here", word.substr(0, 40)));
    const std::int64_t line = text_.line();
    const std::string name = decoded(needed("the head of an array"));
    if (word == "COLOR_SCALARS") {
      const std::uint64_t components = count("components", kMostComponents);
      keep(array(name, NumberType::uint8, rows_, components), line);
      return;
    }
    std::uint64_t components = componentsOf(word);
    if (word == "TEXTURE_COORDINATES") components = count("components", kMostComponents);
    if (components == 0) text_.fail(fmt::format("\"{}\" is not known here", word.substr(0, 40)));
    const std::string type = needed("the head of an array");
    if (word == "SCALARS") components = takeScalarsHead();
    if (const std::optional<NumberType> known = typeOfLegacy(type)) {
      keep(array(name, *known, rows_, components), line);
    } else if (upperCased(type) == "BIT") {
      skip(type, rows_ * components);
    } else {
      text_.fail(fmt::format("arrays of the type {} are not read", type.substr(0, 40)));
    }
  }

  static std::uint64_t componentsOf(const std::string& word) {
    if (word == "VECTORS" || word == "NORMALS") return 3;
    if (word == "TENSORS") return 9;
    if (word == "TENSORS6") return 6;
    const bool isOne = word == "SCALARS" || word == "GLOBAL_IDS" || word == "PEDIGREE_IDS" || word == "EDGE_FLAGS" ||
                       word == "TEXTURE_COORDINATES";
    return isOne ? 1 : 0;
  }

  // The number of components is not always there; a table of colours is named on the next line.
  std::uint64_t takeScalarsHead() {
    const std::string rest = text_.restOfLine();
    std::uint64_t components = 1;
    if (!trimmed(rest).empty()) {
      const std::optional<int> number = integerFrom(rest);
      if (!number || *number < 1 || *number > static_cast<int>(kMostComponents)) {
        text_.fail(fmt::format("\"{}\" is not a number of components", rest.substr(0, 40)));
      }
      components = static_cast<std::uint64_t>(*number);
    }
    if (upperCased(needed("SCALARS")) != "LOOKUP_TABLE") text_.fail("LOOKUP_TABLE is expected here");
    needed("SCALARS");
    return components;
  }

  const InputFile& file_;
  TextCursor text_;
  double version_ = 1.0;
  bool isBinary_ = false;
  bool hasPoints_ = false;
  bool hasCells_ = false;
  bool hasTypes_ = false;
  Grid grid_;
  std::vector<StoredArray>* list_ = nullptr;  // that arrays belong to; null before the first
  StoredArray* last_ = nullptr;               // that METADATA speaks of
  std::uint64_t rows_ = 0;
};

}  // namespace

Grid readLegacyFile(const InputFile& file) { return LegacyFile(file).read(); }

}  // namespace importers::vtk
