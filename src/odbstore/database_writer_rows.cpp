// The second half of the writer: the file itself.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <type_traits>

#include "hdf5/file.h"
#include "odbstore/catalog_check.h"
#include "odbstore/catalog_trailer.h"
#include "odbstore/crc32c.h"
#include "odbstore/database_writer_impl.h"
#include "odbstore/layout.h"
#include "odbstore/store_error.h"

namespace odbstore {

DatabaseWriter::Impl::Impl(std::unique_ptr<base::OutputFile> own, WriterOptions options)
    : own_(std::move(own)), path_(own_->temporaryPath()), name_(own_->finalPath()), options_(options) {}

DatabaseWriter::Impl::Impl(std::string temporaryPath, std::string name, WriterOptions options)
    : path_(std::move(temporaryPath)), name_(std::move(name)), options_(options) {}

void DatabaseWriter::Impl::begin() {
  requireDeclaring();
  root_ = h5::createFile(path_, name_, structureBytesOf(model_));
  file_ = base::Descriptor(::open(path_.c_str(), O_RDWR | O_CLOEXEC));
  if (!file_) fail("", fmt::format("cannot be opened: {}", std::strerror(errno)));
  arrays_.emplace(file_.get(), name_);
  places_ = writeStructure(*root_, model_, options_, *arrays_);
  for (const DeclaredBlock& block : model_.blocks) blockFrames_.push_back(model_.framesOf(block));
  h5::flushFile(*root_);
  takeRoom();
  writeModel();
}

// A full disk shows here at once. Written later, where the file has holes, a row could come to nothing without an error
// anywhere: HDF5 closes such a file as if nothing were wrong with it.
void DatabaseWriter::Impl::takeRoom() {
  int status = 0;
  do {
    status = ::fallocate(file_.get(), 0, 0, h5::endOfFile(*root_));
  } while (status != 0 && errno == EINTR);
  // Not every file system can do that; then every write that comes short is seen.
  if (status != 0 && errno != EOPNOTSUPP && errno != ENOSYS) {
    fail("", fmt::format("there is no room for it: {}", std::strerror(errno)));
  }
}

template <class Number>
void DatabaseWriter::Impl::writeWhole(std::size_t array, const std::vector<Number>& numbers, const ObjectName& object) {
  if (array != kNoArray) arrays_->write(array, 0, std::as_bytes(std::span(numbers)), object);
}

void DatabaseWriter::Impl::writeModel() {
  for (auto& [name, instance] : model_.instances) {
    const ModelArrays::Mesh& mesh = places_.meshes.at(name);
    const ObjectName path = [&name = name] { return ownerPath({OwnerKind::instance, name}) + "/" + links::kMesh; };
    writeWhole(mesh.nodes, instance.nodes, path);
    writeWhole(mesh.coordinates, instance.coordinates, path);
    for (auto& [type, elements] : instance.elements) {
      writeWhole(mesh.elements.at(type).first, elements.labels, path);
      writeWhole(mesh.elements.at(type).second, elements.connectivity, path);
      // Written, and not needed again.
      elements = {};
    }
    instance.nodes = {};
    instance.coordinates = {};
  }
  writeSets();
  writeLocations();
}

void DatabaseWriter::Impl::writeSets() {
  for (const auto& [key, sets] : model_.sets) {
    const ModelArrays::Sets& places = places_.sets.at(key);
    const ObjectName path = [&key = key] {
      return ownerPath({std::get<0>(key), std::get<1>(key)}) + "/" + setsLink(std::get<2>(key));
    };
    std::vector<int> packed;
    for (const auto& [name, members] : sets) {
      for (const SetMembers& member : members) {
        if (isPacked(name, members)) {
          packed.insert(packed.end(), member.labels.begin(), member.labels.end());
        } else {
          writeWhole(places.single.at({name, member.instance}), member.labels, path);
        }
      }
    }
    writeWhole(places.packed, packed, path);
  }
}

void DatabaseWriter::Impl::writeLocations() {
  for (std::size_t i = 0; i < model_.locations.size(); ++i) {
    DeclaredLocation& location = model_.locations[i];
    const ModelArrays::Location& places = places_.locations[i];
    const ObjectName path = [i] { return locationPath(i); };
    writeWhole(places.nodes, location.labels.nodes, path);
    writeWhole(places.elements, location.labels.elements, path);
    writeWhole(places.points, location.labels.integrationPoints, path);
    writeWhole(places.rowOf, location.rowOf, path);
    location.labels = {};
    if (location.isIndexed) location.rowOf = {};
  }
}

std::string DatabaseWriter::Impl::blockData(const DeclaredBlock& block) const {
  return pathOf(model_, block) + "/" + links::kData;
}

template <class Number>
void DatabaseWriter::Impl::writeRows(Block id, int frame, std::span<const Number> rows) {
  const DeclaredBlock& block = model_.blocks.at(static_cast<std::size_t>(id.index));
  const DeclaredLocation& location = model_.locations[static_cast<std::size_t>(block.location)];
  const ObjectName path = [&] { return blockData(block); };
  if (!arrays_) fail(path(), "rows can be written when begin() has been called");
  if (block.form.isDouble != std::is_same_v<Number, double>) fail(path(), "rows come in the other precision");
  const std::int64_t numbers = location.delivered * block.form.width;
  if (static_cast<std::int64_t>(rows.size()) != numbers) {
    fail(path(),
         fmt::format("{} numbers do not fill {} rows of {}", rows.size(), location.delivered, block.form.width));
  }
  const std::vector<int>& frames = blockFrames_[static_cast<std::size_t>(id.index)];
  const auto slab = std::lower_bound(frames.begin(), frames.end(), frame);
  if (slab == frames.end() || *slab != frame) fail(path(), fmt::format("does not exist in frame {}", frame));
  const std::size_t array = places_.blocks[static_cast<std::size_t>(id.index)];
  const auto place = static_cast<std::int64_t>(slab - frames.begin());
  if (numbers > 0 && arrays_->isWritten(array, place)) fail(path(), fmt::format("frame {} has come twice", frame));
  std::span<const std::byte> bytes = std::as_bytes(rows);
  if (!location.rowOf.empty()) {
    const std::size_t rowBytes = static_cast<std::size_t>(block.form.width) * sizeof(Number);
    expanded_.resize(location.rowOf.size() * rowBytes);
    for (std::size_t i = 0; i < location.rowOf.size(); ++i) {
      std::memcpy(expanded_.data() + i * rowBytes,
                  bytes.data() + static_cast<std::size_t>(location.rowOf[i]) * rowBytes, rowBytes);
    }
    bytes = expanded_;
  }
  arrays_->write(array, place, bytes, path);
}

template void DatabaseWriter::Impl::writeRows(Block, int, std::span<const float>);
template void DatabaseWriter::Impl::writeRows(Block, int, std::span<const double>);

void DatabaseWriter::Impl::writeSamples(History id, std::span<const float> samples) {
  const DeclaredHistory& history = model_.histories.at(static_cast<std::size_t>(id.index));
  const ObjectName path = [&] { return pathOf(model_, history); };
  if (!arrays_) fail(path(), "samples can be written when begin() has been called");
  if (static_cast<std::int64_t>(samples.size()) != history.samples * history.width) {
    fail(path(), fmt::format("{} numbers are not {} samples of {}", samples.size(), history.samples, history.width));
  }
  const std::size_t array = places_.histories[static_cast<std::size_t>(id.index)];
  if (!samples.empty() && arrays_->isWritten(array, 0)) fail(path(), "has come twice");
  arrays_->write(array, 0, std::as_bytes(samples), path);
}

void DatabaseWriter::Impl::requireComplete() const {
  for (std::size_t i = 0; i < model_.blocks.size(); ++i) {
    const WrittenArray& array = arrays_->at(places_.blocks[i]);
    const auto missing = std::find(array.isWritten.begin(), array.isWritten.end(), 0);
    if (missing == array.isWritten.end()) continue;
    const int frame = blockFrames_[i][static_cast<std::size_t>(missing - array.isWritten.begin())];
    fail(blockData(model_.blocks[i]), fmt::format("the rows of frame {} have not come", frame));
  }
  for (std::size_t i = 0; i < model_.histories.size(); ++i) {
    if (arrays_->at(places_.histories[i]).left > 0) {
      fail(pathOf(model_, model_.histories[i]), "its samples have not come");
    }
  }
}

void DatabaseWriter::Impl::finish() {
  if (!arrays_) begin();
  requireComplete();
  arrays_->close();
  std::vector<std::byte> catalog = makeCatalog();
  const std::int64_t offset = writeCatalog(catalog);
  root_.reset();
  writeTrailer(std::move(catalog), offset);
  if (own_) own_->publish();
}

// Made after all else and a flush, and allocated late, the catalog is what the file ends with.
std::int64_t DatabaseWriter::Impl::writeCatalog(std::span<const std::byte> catalog) {
  h5::flushFile(*root_);
  std::vector<std::byte> bytes(catalog.begin(), catalog.end());
  bytes.resize(catalog.size() + kTrailerBytes);
  const h5::Dataset dataset = root_->createDataset(links::kCatalog, base::NumberFormat::uint8, {bytes.size()});
  dataset.write(bytes.data(), base::NumberFormat::uint8);
  const std::optional<std::int64_t> offset = dataset.offset();
  if (!offset) dataset.fail("has no room in the file");
  h5::flushFile(*root_);
  return *offset;
}

void DatabaseWriter::Impl::writeTrailer(std::vector<std::byte> bytes, std::int64_t offset) {
  Trailer trailer;
  trailer.length = static_cast<std::int64_t>(bytes.size() + kTrailerBytes);
  trailer.catalogSum = crc32c(bytes);
  struct stat status {};
  if (::fstat(file_.get(), &status) != 0)
    fail("", fmt::format("its size cannot be found out: {}", std::strerror(errno)));
  if (offset + trailer.length != status.st_size) fail("/catalog", "is not what the file ends with");
  // Whoever reads it will check it like any other; what this program would refuse is not to get a name.
  const std::size_t catalogBytes = bytes.size();
  const Catalog catalog(std::move(bytes), name_, offset);
  checkContent(catalog, [this](const std::string& object, const std::string& reason) { fail(object, reason); });
  const std::optional<std::uint32_t> sum = sumStructure(file_.get(), catalog.extents(), offset);
  if (!sum) fail("", fmt::format("cannot be read back: {}", std::strerror(errno)));
  trailer.structureSum = *sum;
  if (!base::writeAt(file_.get(), offset + static_cast<std::int64_t>(catalogBytes), packed(trailer))) {
    fail("/catalog", fmt::format("cannot be written ({})", std::strerror(errno)));
  }
}

}  // namespace odbstore
