#include "export/vtu_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

#include "base/file_error.h"
#include "export/xml_text.h"

namespace vtk_export {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 18U;  // bytes that are packed at once
constexpr std::size_t kOffsetDigits = 20;
constexpr int kLevel = 5;  // of zlib: that of ParaView

const char* nameOf(Number number) {
  switch (number) {
    case Number::float32:
      return "Float32";
    case Number::float64:
      return "Float64";
    case Number::int32:
      return "Int32";
    case Number::int64:
      return "Int64";
    case Number::uint8:
      return "UInt8";
  }
  return "";
}

// Texts are the codes of their bytes, with a zero at the end.
std::string codesOf(const std::string& text) {
  std::string codes;
  for (const char c : text) codes += fmt::format("{} ", static_cast<unsigned char>(c));
  return codes + "0";
}

}  // namespace

VtuFile::VtuFile(const std::string& path, const VtuHead& head)
    : output_(path), file_(::open(output_.temporaryPath().c_str(), O_WRONLY | O_CLOEXEC)), isPacked_(head.isPacked) {
  if (!file_) throw base::FileError(path, "", fmt::format("cannot be opened: {}", std::strerror(errno)));
  writeHead(head);
}

void VtuFile::addArray(const DataArray& array, std::string& text) {
  text += fmt::format("        <DataArray type=\"{}\" Name=\"{}\" NumberOfComponents=\"{}\"", nameOf(array.number),
                      xmlText(array.name), array.width);
  for (std::size_t i = 0; i < array.components.size(); ++i)
    text += fmt::format(" ComponentName{}=\"{}\"", i, xmlText(array.components[i]));
  text += " format=\"appended\" offset=\"";
  offsetsAt_.push_back(static_cast<std::int64_t>(text.size()));
  text += std::string(kOffsetDigits, ' ') + "/>\n";
}

void VtuFile::writeHead(const VtuHead& head) {
  const char* const order = std::endian::native == std::endian::little ? "LittleEndian" : "BigEndian";
  std::string text = fmt::format(
      "<?xml version=\"1.0\"?>\n<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"{}\" "
      "header_type=\"UInt64\"{}>\n  <UnstructuredGrid>\n    <FieldData>\n",
      order, head.isPacked ? " compressor=\"vtkZLibDataCompressor\"" : "");
  for (const auto& [name, value] : head.numbers) {
    text += fmt::format(
        "      <DataArray type=\"Float64\" Name=\"{}\" NumberOfTuples=\"1\" format=\"ascii\">{}</DataArray>\n",
        xmlText(name), value);
  }
  for (const auto& [name, value] : head.texts) {
    text += fmt::format("      <Array type=\"String\" Name=\"{}\" NumberOfTuples=\"1\" format=\"ascii\">{}</Array>\n",
                        xmlText(name), codesOf(value));
  }
  text += fmt::format("    </FieldData>\n    <Piece NumberOfPoints=\"{}\" NumberOfCells=\"{}\">\n      <PointData>\n",
                      head.points, head.cells);
  for (const DataArray& array : head.pointData) addArray(array, text);
  text += "      </PointData>\n      <CellData>\n";
  for (const DataArray& array : head.cellData) addArray(array, text);
  text += "      </CellData>\n      <Points>\n";
  addArray({"Points", Number::float64, 3}, text);
  text += "      </Points>\n      <Cells>\n";
  addArray({"connectivity", Number::int64}, text);
  addArray({"offsets", Number::int64}, text);
  addArray({"types", Number::uint8}, text);
  text += "      </Cells>\n    </Piece>\n  </UnstructuredGrid>\n  <AppendedData encoding=\"raw\">\n_";
  writeText(text);
  data_ = end_;
}

void VtuFile::write(std::span<const std::byte> bytes) {
  if (!base::writeAt(file_.get(), end_, bytes))
    throw base::FileError(output_.finalPath(), "", fmt::format("cannot be written: {}", std::strerror(errno)));
  end_ += static_cast<std::int64_t>(bytes.size());
}

void VtuFile::append(std::span<const std::byte> bytes) {
  const std::string offset = fmt::format("{}\"", end_ - data_);
  if (!base::writeAt(file_.get(), offsetsAt_.at(next_++), std::as_bytes(std::span(offset))))
    throw base::FileError(output_.finalPath(), "", fmt::format("cannot be written: {}", std::strerror(errno)));
  if (isPacked_) {
    writePacked(bytes);
  } else {
    writeCount(bytes.size());
    write(bytes);
  }
}

void VtuFile::writePacked(std::span<const std::byte> bytes) {
  std::vector<std::uint64_t> counts = {(bytes.size() + kBlock - 1) / kBlock, kBlock, bytes.size() % kBlock};
  std::vector<std::byte> packed;
  for (std::size_t begin = 0; begin < bytes.size(); begin += kBlock) {
    const std::span<const std::byte> block = bytes.subspan(begin, std::min(kBlock, bytes.size() - begin));
    const std::size_t before = packed.size();
    uLongf length = ::compressBound(block.size());
    packed.resize(before + length);
    const int status = ::compress2(reinterpret_cast<Bytef*>(packed.data() + before), &length,
                                   reinterpret_cast<const Bytef*>(block.data()), block.size(), kLevel);
    if (status != Z_OK) throw std::bad_alloc();  // the only reason that is left
    packed.resize(before + length);
    counts.push_back(length);
  }
  write(std::as_bytes(std::span(counts)));
  write(packed);
}

void VtuFile::publish() {
  writeText("\n  </AppendedData>\n</VTKFile>\n");
  output_.publish();
}

}  // namespace vtk_export
