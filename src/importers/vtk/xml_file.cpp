#include "importers/vtk/xml_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>

#include "importers/input/text_fields.h"
#include "importers/vtk/xml_reader.h"

namespace importers::vtk {

namespace {

// What VTKFile says of itself.
constexpr std::string_view kGridType = "UnstructuredGrid";
constexpr std::string_view kPiecesType = "PUnstructuredGrid";
constexpr std::string_view kTimeType = "Collection";
constexpr std::string_view kBlocksType = "vtkMultiBlockDataSet";

// Where arrays stand that the file holds behind all tags.
struct Appended {
  bool isThere = false;
  Encoding encoding = Encoding::raw;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

class XmlFile : public XmlHandler {
 public:
  explicit XmlFile(const InputFile& file) : file_(file) {}

  bool start(const XmlElement& element) override {
    if (path_.empty()) {
      takeRoot(element);
    } else if (element.name == "AppendedData") {
      return takeAppended(element);
    } else if (element.name == "Piece" && type_ == kGridType) {
      takePiece(element);
    } else if (element.name == "Piece" && type_ == kPiecesType) {
      name(element, required(element, "Source"), {});
    } else if (element.name == "DataSet") {
      takeDataSet(element);
    } else if (isBlock(element.name)) {
      blocks_.push_back(blockName(element));
    } else if (element.name == "DataArray") {
      takeArray(element);
    }
    path_.push_back(element.name);
    return true;
  }

  void end(const std::string& name, std::uint64_t contentEnd) override {
    path_.pop_back();
    if (open_ != nullptr && name == "DataArray") open_->end = std::max(open_->begin, contentEnd);
    if (name == "DataArray") open_ = nullptr;
    if (name == "AppendedData") appended_.end = std::max(appended_.begin, contentEnd);
    if (isBlock(name)) blocks_.pop_back();
  }

  VtkFile finish() {
    for (Piece& piece : grid_.pieces) finishPiece(piece);
    placeAppended(grid_.fieldData);
    if (type_ == kGridType) {
      if (grid_.pieces.empty()) fail(0, "the file holds no grid");
      grid_.form = form();
      return std::move(grid_);
    }
    collection_.fieldData = std::move(grid_.fieldData);
    return std::move(collection_);
  }

 private:
  [[noreturn]] void fail(std::int64_t line, const std::string& reason) const {
    throw ImportError(file_.path(), line, reason);
  }

  bool isBlock(const std::string& name) const { return type_ == kBlocksType && (name == "Block" || name == "Piece"); }

  const std::string& required(const XmlElement& element, std::string_view name) const {
    const std::string* const value = element.attribute(name);
    if (value == nullptr) fail(element.line, fmt::format("<{}> has no {}", element.name, name));
    return *value;
  }

  std::uint64_t wholeNumber(const XmlElement& element, std::string_view name, const std::string& text,
                            std::uint64_t most) const {
    const std::string_view digits = trimmed(text);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc() && end == digits.data() + digits.size() && value <= most) return value;
    fail(element.line,
         fmt::format("{} of <{}> is \"{}\", not a number up to {}", name, element.name, text.substr(0, 40), most));
  }

  std::uint64_t wholeNumber(const XmlElement& element, std::string_view name, std::uint64_t otherwise,
                            std::uint64_t most) const {
    const std::string* const text = element.attribute(name);
    return text == nullptr ? otherwise : wholeNumber(element, name, *text, most);
  }

  void takeRoot(const XmlElement& element) {
    if (element.name != "VTKFile")
      fail(element.line, fmt::format("the first tag is <{}>, not <VTKFile>", element.name));
    type_ = required(element, "type");
    constexpr std::array known = {kGridType, kPiecesType, kTimeType, kBlocksType};
    if (std::find(known.begin(), known.end(), type_) == known.end()) {
      throw OtherKind(
          file_.path(), element.line,
          fmt::format("files of the type {} are not imported: only unstructured grids, multi-block data sets "
                      "and collections of them",
                      type_));
    }
    const std::string* const order = element.attribute("byte_order");
    isBigEndian_ = order != nullptr && *order == "BigEndian";
    if (order != nullptr && *order != "BigEndian" && *order != "LittleEndian") {
      fail(element.line, fmt::format("the byte order {} is not known", *order));
    }
    const std::string* const header = element.attribute("header_type");
    headerBytes_ = header != nullptr && *header == "UInt64" ? 8 : 4;
    if (header != nullptr && *header != "UInt64" && *header != "UInt32") {
      fail(element.line, fmt::format("the header type {} is not known", *header));
    }
    if (const std::string* const packer = element.attribute("compressor"); packer != nullptr && !packer->empty()) {
      if (*packer != "vtkZLibDataCompressor") {
        fail(element.line,
             fmt::format("arrays packed by {} are not read: only those by vtkZLibDataCompressor, and unpacked ones",
                         *packer));
      }
      isPacked_ = true;
    }
    collection_.form = type_ == kTimeType ? "collection in time" : type_ == kPiecesType ? "pieces" : "multi-block";
  }

  void takePiece(const XmlElement& element) {
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    Piece& piece = grid_.pieces.emplace_back();
    piece.line = element.line;
    piece.points = wholeNumber(element, "NumberOfPoints", required(element, "NumberOfPoints"), most);
    piece.cells = wholeNumber(element, "NumberOfCells", required(element, "NumberOfCells"), most);
  }

  // An element without a file is a place that nothing stands in.
  void takeDataSet(const XmlElement& element) {
    const std::string* const named = element.attribute("file");
    if (named == nullptr || named->empty()) return;
    std::vector<std::string> blocks = blocks_;
    if (type_ == kBlocksType) {
      blocks.push_back(blockName(element));
    } else if (const std::string* const text = element.attribute("name"); text != nullptr && !text->empty()) {
      blocks.push_back(*text);
    } else if (const std::string* const part = element.attribute("part"); part != nullptr && !part->empty()) {
      blocks.push_back("part_" + *part);
    }
    name(element, *named, std::move(blocks));
    if (type_ != kTimeType) return;
    const std::string& time = required(element, "timestep");
    collection_.files.back().time = numberFrom(time);
    if (!std::isfinite(collection_.files.back().time.value_or(NAN)))
      fail(element.line, fmt::format("\"{}\" is not a time", time.substr(0, 40)));
  }

  void name(const XmlElement& element, const std::string& named, std::vector<std::string> blocks) {
    const std::filesystem::path path = std::filesystem::path(file_.path()).parent_path() / named;
    collection_.files.push_back({path.string(), std::move(blocks), {}, element.line});
  }

  std::string blockName(const XmlElement& element) const {
    const std::string* const text = element.attribute("name");
    if (text != nullptr && !text->empty()) return *text;
    const std::string* const index = element.attribute("index");
    return "block_" + (index == nullptr ? std::string("0") : *index);
  }

  // The list that an array belongs to, and how many tuples those in it have; nothing where it is of no use.
  StoredArray* place(const XmlElement& element, const StoredArray& array) {
    const std::string& parent = path_.back();
    if (parent == "FieldData") return &grid_.fieldData.emplace_back(array);
    if (grid_.pieces.empty()) return nullptr;
    Piece& piece = grid_.pieces.back();
    if (parent == "Points") return &(piece.coordinates = array);
    if (parent == "Cells") {
      if (array.name == "connectivity") return &(piece.connectivity = array);
      if (array.name == "offsets") return &(piece.offsets = array);
      return array.name == "types" ? &(piece.types = array) : nullptr;
    }
    if (parent != "PointData" && parent != "CellData") return nullptr;
    std::vector<StoredArray>& list = parent == "PointData" ? piece.pointData : piece.cellData;
    const bool isThere = std::any_of(list.begin(), list.end(), [&](const auto& one) { return one.name == array.name; });
    if (isThere) {
      grid_.remarks.emplace_back(element.line,
                                 fmt::format("a second array \"{}\" in {} is left out", array.name, parent));
      return nullptr;
    }
    return &list.emplace_back(array);
  }

  void takeArray(const XmlElement& element) {
    // Writers of several steps of time list each array once for each.
    if (const std::string* const step = element.attribute("TimeStep"); step != nullptr && trimmed(*step) != "0") {
      if (!hasMoreSteps_)
        grid_.remarks.emplace_back(element.line, "of the steps of time in this file the first is imported alone");
      hasMoreSteps_ = true;
      return;
    }
    const std::string* const word = element.attribute("type");
    const std::optional<NumberType> type = word == nullptr ? std::nullopt : typeOfXml(*word);
    if (!type) return;  // text, bits
    StoredArray array;
    array.type = *type;
    array.line = element.line;
    const std::string* const text = element.attribute("Name");
    array.name = text == nullptr ? std::string() : *text;
    const std::string& parent = path_.back();
    const std::uint64_t components = wholeNumber(element, "NumberOfComponents", 1, kMostComponents);
    array.components = static_cast<std::size_t>(std::max<std::uint64_t>(components, 1));
    array.tuples =
        parent == "FieldData" ? wholeNumber(element, "NumberOfTuples", 1, kMostNumbers / array.components) : 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(array.components, 16); ++i) {
      const std::string* const component = element.attribute(fmt::format("ComponentName{}", i));
      if (component == nullptr) break;
      array.componentNames.push_back(*component);
    }
    if (array.componentNames.size() != array.components) array.componentNames.clear();
    takeFormat(element, array);
    open_ = place(element, array);
  }

  void takeFormat(const XmlElement& element, StoredArray& array) {
    const std::string* const format = element.attribute("format");
    array.begin = array.end = element.contentBegin;
    array.isBigEndian = isBigEndian_;
    if (format == nullptr || *format == "ascii") {
      array.encoding = Encoding::text;
      return;
    }
    array.headerBytes = headerBytes_;
    array.isPacked = isPacked_;
    array.encoding = *format == "appended" ? Encoding::raw : Encoding::base64;
    if (*format != "appended" && *format != "binary") {
      fail(element.line, fmt::format("the format {} of the array \"{}\" is not known", *format, array.name));
    }
    if (*format == "appended") {
      array.begin = wholeNumber(element, "offset", required(element, "offset"), kMostNumbers);
      hasAppended_ = true;
    } else {
      hasBase64_ = true;
    }
  }

  // The numbers begin behind an underscore. Raw ones are no text, and the last that is read.
  bool takeAppended(const XmlElement& element) {
    const std::string* const encoding = element.attribute("encoding");
    appended_.isThere = true;
    appended_.encoding = encoding != nullptr && *encoding == "base64" ? Encoding::base64 : Encoding::raw;
    if (encoding != nullptr && *encoding != "base64" && *encoding != "raw") {
      fail(element.line, fmt::format("the encoding {} of appended data is not known", *encoding));
    }
    std::array<char, 4096> text{};
    const std::size_t size = file_.read(element.contentBegin, std::as_writable_bytes(std::span(text)));
    const std::size_t mark = std::string_view(text.data(), size).find_first_not_of(" \t\r\n");
    if (mark == std::string_view::npos) throw CutOff(file_.path(), element.line, "the file ends before its arrays");
    if (text[mark] != '_') fail(element.line, "appended data do not begin with an underscore");
    appended_.begin = element.contentBegin + mark + 1;
    appended_.end = file_.size();
    path_.push_back(element.name);
    return appended_.encoding != Encoding::raw;
  }

  void placeAppended(StoredArray& array) const {
    if (array.encoding != Encoding::raw) return;
    if (!appended_.isThere) throw CutOff(file_.path(), array.line, "the file ends before its appended data");
    array.encoding = appended_.encoding;
    const std::uint64_t length = appended_.end - appended_.begin;
    if (array.begin > length) {
      throw CutOff(file_.path(), array.line,
                   fmt::format("the file ends before the array \"{}\", which begins at {} of its appended data",
                               array.name, array.begin));
    }
    array.begin += appended_.begin;
    array.end = appended_.end;
  }

  void placeAppended(std::vector<StoredArray>& arrays) const {
    for (StoredArray& array : arrays) placeAppended(array);
  }

  void finishPiece(Piece& piece) const {
    piece.coordinates.tuples = piece.points;
    piece.coordinates.name = "Points";
    piece.offsets.tuples = piece.types.tuples = piece.cells;
    if (piece.points > 0 && piece.coordinates.line == 0) fail(piece.line, "the piece has no coordinates");
    if (piece.coordinates.line > 0 && piece.coordinates.components != 3) {
      fail(piece.coordinates.line, fmt::format("points have {} coordinates, not 3", piece.coordinates.components));
    }
    for (const StoredArray* const array : {&piece.offsets, &piece.types, &piece.connectivity}) {
      if (piece.cells > 0 && array->line == 0) fail(piece.line, "the piece has no connectivity, offsets or types");
      if (array->line > 0 && array->components != 1) fail(array->line, "lists of cells have one component");
    }
    for (StoredArray* const array : {&piece.coordinates, &piece.offsets, &piece.types, &piece.connectivity}) {
      if (array->line > 0) placeAppended(*array);
    }
    for (StoredArray& array : piece.pointData) array.tuples = piece.points;
    for (StoredArray& array : piece.cellData) array.tuples = piece.cells;
    placeAppended(piece.pointData);
    placeAppended(piece.cellData);
  }

  std::string form() const {
    std::string text = hasAppended_ ? appended_.encoding == Encoding::raw ? "appended raw" : "appended base64"
                       : hasBase64_ ? "base64"
                                    : "ASCII";
    if (isPacked_) text += ", packed";
    return text;
  }

  const InputFile& file_;
  std::vector<std::string> path_;  // names of the tags that are open
  std::vector<std::string> blocks_;
  std::string type_;
  bool isBigEndian_ = false;
  bool isPacked_ = false;
  std::size_t headerBytes_ = 4;
  bool hasBase64_ = false;
  bool hasMoreSteps_ = false;
  bool hasAppended_ = false;
  Appended appended_;
  StoredArray* open_ = nullptr;
  Grid grid_;
  Collection collection_;
};

// Reads the first tag alone.
class FirstTag : public XmlHandler {
 public:
  bool start(const XmlElement& element) override {
    const std::string* const type = element.attribute("type");
    isGrid = type != nullptr && *type == kGridType;
    return false;
  }
  void end(const std::string& /*name*/, std::uint64_t /*contentEnd*/) override {}

  bool isGrid = false;
};

}  // namespace

bool isGridOfXml(const InputFile& file) {
  FirstTag tag;
  readXml(file, tag);
  return tag.isGrid;
}

VtkFile readXmlFile(const InputFile& file) {
  XmlFile handler(file);
  readXml(file, handler);
  return handler.finish();
}

}  // namespace importers::vtk
