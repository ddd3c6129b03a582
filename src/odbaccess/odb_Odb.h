// The database and the library's life.
//
//     odb_initializeAPI();
//     odb_String path = "job.odb";
//     if (isUpgradeRequiredForOdb(path)) {
//       upgradeOdb(path, "upgraded");
//       path = "upgraded.odb";
//     }
//     odb_Odb& odb = openOdb(path, true, false);
//     odb.close();
//     odb_finalizeAPI();
#pragma once

#include <memory>
#include <utility>

#include "odbaccess/odb_Assembly.h"
#include "odbaccess/odb_Part.h"
#include "odbaccess/odb_SectorDefinition.h"
#include "odbaccess/odb_StepRepository.h"
#include "odbaccess/odb_String.h"

namespace odb_detail {
class DatabaseStorage;
}

// An open database. Its parts are read when they are first asked for; what is damaged is an odb_Exception
// that names the file and the object in it.
class odb_Odb {
 public:
  explicit odb_Odb(std::shared_ptr<odb_detail::DatabaseStorage> storage) : storage_(std::move(storage)) {}

  // The name that the file gives itself, else the path as opened.
  odb_String name() const;

  // Good while the database is open.
  odb_Assembly& rootAssembly() const;
  odb_PartRepository& parts() const;
  odb_StepRepository& steps() const;

  // Whether the model is one sector of a cyclic one, and its axis; without one the axis has no points.
  bool hasSectorDefinition() const;
  odb_SectorDefinition sectorDefinition() const;

  // Closes the file. The handle that openOdb returned is gone afterwards, other copies throw.
  void close();

 private:
  odb_detail::DatabaseStorage& storage() const;

  std::shared_ptr<odb_detail::DatabaseStorage> storage_;
};

// Called once before, and once after, any other operation of the library.
void odb_initializeAPI();
void odb_finalizeAPI();

// Whether the file is of an older layout that openOdb does not read. Throws odb_Exception for what is no database.
bool isUpgradeRequiredForOdb(const odb_String& path);

// Writes the database at `path` in today's layout to `newPath` + ".odb", replacing a file of that name. When that is
// opened next it is what was written here, even where another file has taken the name since. Throws odb_Exception, also
// where both are one file.
void upgradeOdb(const odb_String& path, const odb_String& newPath);

// Opens a database; the reference is good until it is closed. `readOnly` must be true: this library
// does not write through the interface; `internal` is accepted for the calls that pass it. Throws odb_Exception.
odb_Odb& openOdb(const odb_String& path, bool readOnly, bool internal);
