#include "verify/verify_file.h"

#include <fcntl.h>
#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>

#include "base/limited_program.h"
#include "odbstore/catalog_check.h"
#include "odbstore/catalog_lines.h"
#include "odbstore/catalog_trailer.h"
#include "odbstore/checksums.h"
#include "odbstore/database_file.h"
#include "odbstore/frame_slabs.h"
#include "odbstore/inspection.h"
#include "odbstore/layout.h"
#include "odbstore/preflight.h"
#include "odbstore/scan_program.h"
#include "odbstore/sum_check.h"
#include "verify/array_damage.h"
#include "verify/content_reading.h"
#include "verify/damage.h"
#include "verify/findings.h"

namespace verify {

namespace {

using odbstore::Catalog;
using odbstore::DatabaseFile;
using odbstore::Inspection;

constexpr const char* kCatalogPath = "/catalog";

class Verification {
 public:
  Verification(const std::string& path, Findings& findings) : path_(path), findings_(findings) {}

  void run() {
    odbstore::OpenedFile opened = odbstore::openForReading(path_, path_);
    bytes_ = opened.start.bytes;
    file_ = std::move(opened.file);
    findings_.guarded([&] { inspect(); });
    if (inspection_ && inspection_->layout == 1) {
      return findings_.concludeWith(State::oldLayout,
                                    "has layout 1, which has no checksums: it can be read, but not verified");
    }
    findings_.guarded([&] { takeOwnCatalog(); });
    findings_.guarded([&] { compareWithCatalog(); });
    findings_.guarded([&] { compareWithChecksums(); });
    findings_.guarded([&] { checkContentOfFile(); });
    if (!hasSums_) {
      findings_.concludeWith(State::withoutChecksums, "has no checksums: damaged numbers cannot be detected");
    }
  }

 private:
  // What the program that reads the HDF5 structure has to say.
  void inspect() {
    const std::string answer =
        base::runLimited(path_, {odbstore::scanProgramPath(), {"inspect"}, file_.get()}, limitsOfInspection());
    inspection_ = odbstore::unpackedInspection(answer);
    for (const odbstore::Problem& problem : inspection_->problems) findings_.add(problem.object, problem.reason);
    if (inspection_->layout < 2) return;
    scanned_ = fileOf(Catalog(inspection_->catalog, path_, bytes_), false);
  }

  // It tells of each chunk, and of each problem.
  base::ProgramLimits limitsOfInspection() const {
    base::ProgramLimits limits = base::limitsFor(bytes_);
    limits.answer *= 4;
    return limits;
  }

  std::shared_ptr<const DatabaseFile> fileOf(Catalog catalog, bool isCatalogued) const {
    base::Descriptor again(::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
    if (!again) throw base::FileError(path_, "", std::strerror(errno));
    return std::make_shared<const DatabaseFile>(path_, std::move(again), bytes_, std::move(catalog), isCatalogued);
  }

  // The file's own catalog, whatever has become of the file since it was made.
  void takeOwnCatalog() {
    odbstore::Trailer trailer;
    std::optional<std::vector<std::byte>> bytes = odbstore::readCatalog(file_.get(), bytes_, trailer);
    if (!bytes) return complainOfLostCatalog();
    hasSums_ = true;
    const std::int64_t begin = bytes_ - trailer.length;
    own_ = fileOf(Catalog(std::move(*bytes), path_, begin), true);
    if (odbstore::sumStructure(file_.get(), own_->catalog().extents(), begin) == trailer.structureSum) return;
    findings_.add("",
                  "the structure of the file is damaged, or was changed after its catalog was made (if that was "
                  "meant, delete /catalog)");
  }

  void complainOfLostCatalog() {
    if (!inspection_) return;
    const bool isThere = std::any_of(inspection_->extents.begin(), inspection_->extents.end(),
                                     [](const odbstore::DataExtent& extent) { return extent.path == kCatalogPath; });
    if (!isThere) return;
    findings_.add(kCatalogPath,
                  "is damaged, or was made for another state of the file (if the file was changed on "
                  "purpose, delete it)");
  }

  void compareWithCatalog() {
    if (!own_) return;
    std::vector<odbstore::DamagedPiece> damaged;
    odbstore::compareSums(*own_, [&](const odbstore::DamagedPiece& piece) { damaged.push_back(piece); });
    for (const std::string& text : describeDamage(own_->catalog(), damaged)) findings_.add("", text);
    if (!scanned_) return;
    const std::vector<std::string> told = odbstore::linesOf(own_->catalog());
    const std::vector<std::string> found = odbstore::linesOf(scanned_->catalog());
    std::vector<std::string> differing;
    std::set_symmetric_difference(told.begin(), told.end(), found.begin(), found.end(), std::back_inserter(differing));
    if (differing.empty()) return;
    const std::string& first = differing.front();
    findings_.add(kCatalogPath,
                  fmt::format("does not agree with the file's structure about {}", first.substr(0, first.find(": "))));
  }

  // The sums of layout 2.
  void compareWithChecksums() {
    if (!scanned_) return;
    const Catalog& catalog = scanned_->catalog();
    const std::optional<odbstore::ChecksumPlace> place = odbstore::findChecksums(catalog.columns(), bytes_, path_);
    if (!place) return;
    hasSums_ = true;
    const odbstore::ChecksumReport report = odbstore::compareChecksums(*scanned_, *place);
    if (report.tableIsDamaged) {
      return findings_.add("/checksums", "is damaged, so nothing can be compared with it");
    }
    const auto frames = [this](const BlockPlace& block) { return framesOf(block); };
    for (const std::string& text : describeDamage(report.damagedBlocks, *place, bytes_, inspection_->extents, frames)) {
      findings_.add("", text);
    }
  }

  // The frames of a block in the order of its slabs, as far as they can be told.
  std::vector<int> framesOf(const BlockPlace& place) const {
    const Catalog& catalog = scanned_->catalog();
    const odbstore::columns::Catalog& columns = catalog.columns();
    for (flatbuffers::uoffset_t step = 0; step < columns.steps()->name()->size(); ++step) {
      if (catalog.text(columns.steps()->name()->Get(step)) != place.step) continue;
      const odbstore::Places fields = Catalog::placesOf(columns.steps()->fieldEnd(), step);
      for (std::size_t field = fields.first; field < fields.end; ++field) {
        const auto i = static_cast<flatbuffers::uoffset_t>(field);
        if (catalog.text(columns.fields()->name()->Get(i)) != place.field) continue;
        const odbstore::Places blocks = Catalog::placesOf(columns.fields()->blockEnd(), field);
        const auto block = static_cast<flatbuffers::uoffset_t>(blocks.first + static_cast<std::size_t>(place.block));
        if (block >= blocks.end) return {};
        std::int32_t list = columns.blocks()->frames()->Get(block);
        if (list == odbstore::kNone) list = columns.fields()->frames()->Get(i);
        if (list != odbstore::kNone) return odbstore::FrameSlabs(catalog.list(list)).frames();
        return odbstore::FrameSlabs(static_cast<int>(Catalog::placesOf(columns.steps()->frameEnd(), step).size()))
            .frames();
      }
    }
    return {};
  }

  void checkContentOfFile() {
    const std::shared_ptr<const DatabaseFile>& file = own_ ? own_ : scanned_;
    if (!file) return;
    bool fits = true;
    odbstore::checkContent(file->catalog(), [&](const std::string& object, const std::string& reason) {
      fits = false;
      findings_.add(object, reason);
    });
    if (fits) readContent(file, findings_);
  }

  const std::string& path_;
  Findings& findings_;
  base::Descriptor file_;
  std::int64_t bytes_ = 0;
  std::optional<Inspection> inspection_;
  std::shared_ptr<const DatabaseFile> scanned_;
  std::shared_ptr<const DatabaseFile> own_;
  bool hasSums_ = false;
};

}  // namespace

Verdict verifyFile(const std::string& path) {
  Verdict verdict{path, State::sound, {}};
  Findings findings(verdict);
  try {
    findings.guarded([&] {
      try {
        Verification(path, findings).run();
      } catch (const base::NoFileError& error) {
        findings.concludeWith(State::noFile, error.reason());
      }
    });
  } catch (const std::bad_alloc&) {
    findings.add("", "there is not enough memory to check it");
  }
  findings.close();
  return verdict;
}

}  // namespace verify
