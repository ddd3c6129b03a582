#include "odbaccess/odb_Odb.h"

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "odbaccess/database_storage.h"
#include "odbaccess/guard.h"
#include "odbaccess/odb_of_reader.h"
#include "odbstore/reader.h"
#include "odbstore/upgrade.h"

namespace odb_detail {

namespace {

// The handles that openOdb handed out, until they are closed.
std::map<const DatabaseStorage*, std::unique_ptr<odb_Odb>>& openDatabases() {
  static std::map<const DatabaseStorage*, std::unique_ptr<odb_Odb>> open;
  return open;
}

// A database that was looked into, or written, and most likely is opened next. It stays open until then: opening is
// what takes longest with a small one, and so it is the same file, whatever others have put in its place.
struct LookedInto {
  std::string path;
  std::shared_ptr<const odbstore::Reader> reader;
};
LookedInto& lookedInto() {
  static LookedInto last;
  return last;
}

std::shared_ptr<const odbstore::Reader> takeReader(const std::string& path) {
  LookedInto last = std::exchange(lookedInto(), {});
  if (last.reader && last.path == path) return std::move(last.reader);
  return guarded([&] { return std::make_shared<const odbstore::Reader>(path); });
}

}  // namespace

}  // namespace odb_detail

odb_Odb odbOfReader(std::shared_ptr<const odbstore::Reader> reader) {
  return odb_Odb(std::make_shared<odb_detail::DatabaseStorage>(std::move(reader)));
}

void odb_initializeAPI() {
  // Made here, so that they outlive the exit handlers that are registered from now on.
  odb_detail::openDatabases();
  odb_detail::lookedInto();
}

void odb_finalizeAPI() {
  odb_detail::openDatabases().clear();
  odb_detail::lookedInto() = {};
}

bool isUpgradeRequiredForOdb(const odb_String& path) {
  odb_detail::lookedInto() = {};
  auto reader = odb_detail::guarded([&] { return odbstore::Reader::openIfNewest(path.cStr()); });
  const bool isOld = !reader;
  odb_detail::lookedInto() = {path.cStr(), std::move(reader)};
  return isOld;
}

void upgradeOdb(const odb_String& path, const odb_String& newPath) {
  odb_detail::lookedInto() = {};
  const std::string upgraded = std::string(newPath.cStr()) + ".odb";
  auto reader = odb_detail::guarded([&] { return odbstore::upgrade(path.cStr(), upgraded); });
  odb_detail::lookedInto() = {upgraded, std::move(reader)};
}

odb_Odb& openOdb(const odb_String& path, bool readOnly, bool) {
  if (!readOnly) {
    odb_Exception(odb_Exception::fileError, atr_String(std::string(path.cStr()) + ": can only be opened for reading"))
        .Propagate();
  }
  auto storage = std::make_shared<odb_detail::DatabaseStorage>(odb_detail::takeReader(path.cStr()));
  const odb_detail::DatabaseStorage* const key = storage.get();
  auto& handle = odb_detail::openDatabases()[key];
  handle = std::make_unique<odb_Odb>(std::move(storage));
  return *handle;
}

odb_detail::DatabaseStorage& odb_Odb::storage() const {
  if (storage_->isClosed()) {
    odb_Exception(odb_Exception::closedError, atr_String("the database is closed")).Propagate();
  }
  return *storage_;
}

odb_String odb_Odb::name() const {
  return odb_String(odb_detail::guarded([&] { return storage().reader().name(); }));
}

odb_Assembly& odb_Odb::rootAssembly() const { return storage().assembly(); }
odb_PartRepository& odb_Odb::parts() const { return storage().parts(); }
odb_StepRepository& odb_Odb::steps() const { return storage().steps(); }

bool odb_Odb::hasSectorDefinition() const {
  return odb_detail::guarded([&] { return storage().reader().symmetryAxis().has_value(); });
}

odb_SectorDefinition odb_Odb::sectorDefinition() const {
  odb_SequenceSequenceFloat points;
  if (const auto axis = odb_detail::guarded([&] { return storage().reader().symmetryAxis(); })) {
    points.append(odb_SequenceFloat(axis->data(), 3));
    points.append(odb_SequenceFloat(axis->data() + 3, 3));
  }
  return odb_SectorDefinition(points);
}

void odb_Odb::close() {
  storage().close();
  // The last act: when this is the handle that openOdb returned, it is gone afterwards.
  const std::shared_ptr<odb_detail::DatabaseStorage> kept = storage_;
  odb_detail::openDatabases().erase(kept.get());
}
