#include "importers/vtk/vtk_importer.h"

#include <array>
#include <filesystem>

#include "importers/vtk/run_frames.h"
#include "importers/vtk/vtk_file.h"
#include "importers/vtk/vtk_source.h"

namespace importers::vtk {

namespace {

// In the order in which they are looked for: a collection in time before what it names.
constexpr std::array<std::string_view, 5> kEndings = {".pvd", ".vtm", ".pvtu", ".vtu", ".vtk"};

class VtkImporter : public Importer {
 public:
  // The name of the job with the first ending under which there is a file.
  std::string resultFile(const std::string& named) const override {
    std::error_code ignored;
    for (const std::string_view ending : kEndings) {
      std::string file = named + std::string(ending);
      if (std::filesystem::exists(file, ignored)) return file;
    }
    return named;
  }

  bool recognises(std::string_view start, const std::string& /*path*/) const override {
    return isXmlStart(start) || isLegacyStart(start);
  }

  std::string beginning() const override { return "<VTKFile or \"# vtk DataFile Version\""; }

  void addOptions(tool::Command& command) override {
    command.group("VTK")
        .flag("--series", isSeries_, "import all files of the numbered series that JOB is one of")
        .option(
            "--sets-from", "ARRAY", [this](const std::string& name) { idArrays_.push_back(name); },
            "make an element set of each value of this cell array of whole numbers")
        .repeated();
  }

  std::vector<std::string> inputs(const OpenRequest& request) const override {
    return filesOf(request.results, isSeries_);
  }

  std::unique_ptr<Source> open(const OpenRequest& request, const WarningSink& warn) override {
    return openVtk({request.results, request.isStrict, isSeries_, idArrays_, request.shapes}, warn);
  }

 private:
  bool isSeries_ = false;
  std::vector<std::string> idArrays_;
};

}  // namespace

std::unique_ptr<Importer> makeImporter() { return std::make_unique<VtkImporter>(); }

}  // namespace importers::vtk
