#include "importers/exodus/exodus_importer.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <regex>

#include "base/file_error.h"
#include "importers/exodus/exodus_source.h"

namespace importers::exodus {

namespace {

constexpr std::array kEndings = {".e", ".exo", ".exii", ".ex2", ".exd"};

bool exists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

bool isNamedSo(const std::string& path) {
  static const std::regex series(R"(.*\.(e|exo|ex2)(-s\d+)?(\.\d+\.\d+)?)");
  const bool hasEnding =
      std::any_of(kEndings.begin(), kEndings.end(), [&](const char* ending) { return path.ends_with(ending); });
  return hasEnding || std::regex_match(path, series);
}

class ExodusImporter : public Importer {
 public:
  std::string resultFile(const std::string& named) const override {
    if (exists(named)) return named;
    for (const char* const ending : kEndings) {
      if (exists(named + ending)) return named + ending;
    }
    return named;
  }

  // Classic files say what they are at once. Of HDF5 there are other formats: the file has to be looked into.
  bool recognises(std::string_view start, const std::string& path) const override {
    for (const std::string_view classic : {"CDF\x01", "CDF\x02", "CDF\x05"}) {
      if (start.starts_with(classic)) return true;
    }
    if (!start.starts_with("\x89HDF\r\n\x1a\n") || path.ends_with(".odb")) return false;
    try {
      return isExodus(netcdf::File(path).description());
    } catch (const base::FileError&) {
      return isNamedSo(path);
    }
  }

  std::string beginning() const override { return "a netCDF file with the attribute api_version"; }

  // job.e is of one run with job.e-s002, and job.e.4.0 with job.e.4.1.
  std::string databaseName(const std::string& results) const override {
    static const std::regex several(R"((.*?)\.[^./]*?((?:-s\d+)?)((?:\.\d+\.\d+)?))");
    std::smatch found;
    const bool isOneOfSeveral =
        std::regex_match(results, found, several) && (found[2].length() > 0 || found[3].length() > 0);
    return isOneOfSeveral ? found.str(1) + found.str(2) + found.str(3) + ".odb" : Importer::databaseName(results);
  }

  void addOptions(tool::Command& command) override {
    command.group("Exodus").flag("--integration-points", hasIntegrationPoints_,
                                 "take numbers after names of element variables for integration points");
  }

  std::vector<std::string> inputs(const OpenRequest& request) const override { return {request.results}; }

  std::unique_ptr<Source> open(const OpenRequest& request, const WarningSink& warn) override {
    return openExodus({request.results, request.isStrict, request.withSets, {request.shapes, hasIntegrationPoints_}},
                      warn);
  }

 private:
  bool hasIntegrationPoints_ = false;
};

}  // namespace

std::unique_ptr<Importer> makeImporter() { return std::make_unique<ExodusImporter>(); }

}  // namespace importers::exodus
