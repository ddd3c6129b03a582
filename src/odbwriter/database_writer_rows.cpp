// The second half of the writer: the file itself.
#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <type_traits>

#include "base/give_back.h"
#include "hdf5/file.h"
#include "odbstore/catalog_check.h"
#include "odbstore/catalog_trailer.h"
#include "odbstore/crc32c.h"
#include "odbstore/layout.h"
#include "odbstore/store_error.h"
#include "odbwriter/database_writer_impl.h"

namespace odbstore {

DatabaseWriter::Impl::Impl(std::unique_ptr<base::OutputFile> own, WriterOptions options)
    : own_(std::move(own)), path_(own_->temporaryPath()), name_(own_->finalPath()), options_(options) {}

DatabaseWriter::Impl::Impl(std::string temporaryPath, std::string name, WriterOptions options)
    : path_(std::move(temporaryPath)), name_(std::move(name)), options_(options) {}

void DatabaseWriter::Impl::open() {
  if (arrays_) return;
  root_ = h5::createFile(path_, name_, structureBytesOf(model_));
  file_ = base::Descriptor(::open(path_.c_str(), O_RDWR | O_CLOEXEC));
  if (!file_) fail("", fmt::format("cannot be opened: {}", std::strerror(errno)));
  arrays_.emplace(file_.get(), name_);
  structure_.emplace(*root_, model_, options_, *arrays_);
}

void DatabaseWriter::Impl::layOut() {
  open();
  layOutMeshes();
  layOutSets();
  for (std::size_t i = 0; i < model_.locations.size(); ++i) layOutLocation(i);
  for (std::size_t i = 0; i < model_.blocks.size(); ++i) layOutBlock(i);
  layOutHistories();
  takeRoom();
}

// A full disk shows here at once. If the file had holes, a row could be lost later without any error: HDF5 closes such
// a file as if nothing were wrong.
void DatabaseWriter::Impl::takeRoom() {
  const std::int64_t end = h5::endOfFile(*root_);
  if (end <= takenEnd_) return;
  int status = 0;
  do {
    status = ::fallocate(file_.get(), 0, takenEnd_, end - takenEnd_);
  } while (status != 0 && errno == EINTR);
  // Not every file system can do that; every short write is an error there.
  if (status != 0 && errno != EOPNOTSUPP && errno != ENOSYS) {
    fail("", fmt::format("there is no room for it: {}", std::strerror(errno)));
  }
  takenEnd_ = end;
}

template <class Number>
void DatabaseWriter::Impl::writeWhole(std::size_t array, const std::vector<Number>& numbers, const ObjectName& object) {
  if (array != kNoArray) arrays_->write(array, 0, std::as_bytes(std::span(numbers)), object);
}

void DatabaseWriter::Impl::layOutMeshes() {
  for (auto& [name, instance] : model_.instances) {
    const auto known = structure_->places().meshes.find(name);
    const bool isNew = known == structure_->places().meshes.end();
    const ModelArrays::Mesh before = isNew ? ModelArrays::Mesh{} : known->second;
    structure_->reserveMesh(name);
    const ModelArrays::Mesh& mesh = structure_->places().meshes.at(name);
    const ObjectName path = [&name = name] { return ownerPath({OwnerKind::instance, name}) + "/" + links::kMesh; };
    if (before.nodes == kNoArray) {
      writeWhole(mesh.nodes, instance.nodes, path);
      writeWhole(mesh.coordinates, instance.coordinates, path);
      base::giveBack(instance.nodes);
      base::giveBack(instance.coordinates);
    }
    for (auto& [type, elements] : instance.elements) {
      if (before.elements.contains(type)) continue;
      writeWhole(mesh.elements.at(type).first, elements.labels, path);
      writeWhole(mesh.elements.at(type).second, elements.connectivity, path);
      elements = {};
    }
  }
}

void DatabaseWriter::Impl::layOutSets() {
  for (const auto& [key, sets] : model_.sets) {
    if (structure_->places().sets.contains(key)) continue;
    structure_->reserveSets(key);
    writeSets(key, sets);
  }
}

void DatabaseWriter::Impl::writeSets(const SetsKey& key, const DeclaredSets& sets) {
  const ModelArrays::Sets& places = structure_->places().sets.at(key);
  const ObjectName path = [&key] {
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

void DatabaseWriter::Impl::layOutLocation(std::size_t index) {
  const std::vector<ModelArrays::Location>& all = structure_->places().locations;
  if (index < all.size() && all[index].hasRoom) return;
  structure_->reserveLocation(index);
  const ModelArrays::Location& places = all[index];
  DeclaredLocation& location = model_.locations[index];
  const ObjectName path = [index] { return locationPath(index); };
  writeWhole(places.nodes, location.labels.nodes, path);
  writeWhole(places.elements, location.labels.elements, path);
  writeWhole(places.points, location.labels.integrationPoints, path);
  writeWhole(places.rowOf, location.rowOf, path);
  location.labels = {};
  if (location.isIndexed) base::giveBack(location.rowOf);
}

void DatabaseWriter::Impl::layOutBlock(std::size_t index) {
  const std::vector<std::size_t>& all = structure_->places().blocks;
  if (index < all.size() && all[index] != kNoArray) return;
  const DeclaredBlock& block = model_.blocks[index];
  layOutLocation(static_cast<std::size_t>(block.location));
  blockFrames_.resize(model_.blocks.size());
  blockFrames_[index] = model_.framesOf(block);
  structure_->reserveBlock(index, blockFrames_[index].size());
}

void DatabaseWriter::Impl::layOutHistories() {
  for (std::size_t i = 0; i < model_.steps.size(); ++i) structure_->reserveHistories(i);
}

std::string DatabaseWriter::Impl::blockData(const DeclaredBlock& block) const {
  return pathOf(model_, block) + "/" + links::kData;
}

template <class Number>
void DatabaseWriter::Impl::writeRows(Block id, int frame, std::span<const Number> rows) {
  const DeclaredBlock& block = model_.blocks.at(static_cast<std::size_t>(id.index));
  const DeclaredLocation& location = model_.locations[static_cast<std::size_t>(block.location)];
  const ObjectName path = [&] { return blockData(block); };
  if (block.form.isDouble != std::is_same_v<Number, double>) fail(path(), "rows have the other precision");
  const std::int64_t numbers = location.delivered * block.form.width;
  if (static_cast<std::int64_t>(rows.size()) != numbers) {
    fail(path(),
         fmt::format("{} numbers do not fill {} rows of {}", rows.size(), location.delivered, block.form.width));
  }
  open();
  layOutBlock(static_cast<std::size_t>(id.index));
  takeRoom();
  const std::vector<int>& frames = blockFrames_[static_cast<std::size_t>(id.index)];
  const auto slab = std::lower_bound(frames.begin(), frames.end(), frame);
  if (slab == frames.end() || *slab != frame) fail(path(), fmt::format("does not exist in frame {}", frame));
  const std::size_t array = structure_->places().blocks[static_cast<std::size_t>(id.index)];
  const auto place = static_cast<std::int64_t>(slab - frames.begin());
  if (numbers > 0 && arrays_->isWritten(array, place)) fail(path(), fmt::format("frame {} was written twice", frame));
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
  const bool hasRoom = structure_ && static_cast<std::size_t>(id.index) < structure_->places().histories.size();
  if (!hasRoom) fail(path(), "samples can only be written after layOut()");
  if (static_cast<std::int64_t>(samples.size()) != history.samples * history.width) {
    fail(path(), fmt::format("{} numbers are not {} samples of {}", samples.size(), history.samples, history.width));
  }
  const std::size_t array = structure_->places().histories[static_cast<std::size_t>(id.index)];
  if (!samples.empty() && arrays_->isWritten(array, 0)) fail(path(), "was written twice");
  arrays_->write(array, 0, std::as_bytes(samples), path);
}

void DatabaseWriter::Impl::requireComplete() const {
  for (std::size_t i = 0; i < model_.blocks.size(); ++i) {
    const WrittenArray& array = arrays_->at(structure_->places().blocks[i]);
    const auto missing = std::find(array.isWritten.begin(), array.isWritten.end(), 0);
    if (missing == array.isWritten.end()) continue;
    const int frame = blockFrames_[i][static_cast<std::size_t>(missing - array.isWritten.begin())];
    fail(blockData(model_.blocks[i]), fmt::format("the rows of frame {} were not written", frame));
  }
  for (std::size_t i = 0; i < model_.histories.size(); ++i) {
    if (arrays_->at(structure_->places().histories[i]).left > 0) {
      fail(pathOf(model_, model_.histories[i]), "its samples were not written");
    }
  }
}

void DatabaseWriter::Impl::finish() {
  layOut();
  requireComplete();
  arrays_->close();
  structure_->finish(blockFrames_);
  std::vector<std::byte> catalog = makeCatalog();
  const std::int64_t offset = writeCatalog(catalog);
  root_.reset();
  writeTrailer(std::move(catalog), offset);
  if (own_) own_->publish();
}

// The catalog is created last, after a flush, and allocated late, so it is at the end of the file.
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
    fail("", fmt::format("its size cannot be determined: {}", std::strerror(errno)));
  if (offset + trailer.length != status.st_size) fail("/catalog", "is not at the end of the file");
  // Readers check it like any other catalog; a file that they would refuse must not be published.
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
