#include "verify/array_damage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>

#include "odbstore/catalog_paths.h"
#include "odbstore/layout.h"
#include "verify/place_names.h"

namespace verify {

namespace {

using odbstore::Catalog;
using odbstore::DamagedPiece;
using odbstore::kNone;
using odbstore::Places;

// Of very many sets in one piece the first are named.
constexpr std::size_t kMostNames = 12;

flatbuffers::uoffset_t at(std::size_t i) { return static_cast<flatbuffers::uoffset_t>(i); }

// Damaged bytes without a gap between them, with the slabs that they are of.
struct Run {
  odbstore::Extent bytes;
  std::vector<std::int64_t> slabs;
  std::vector<std::string> places;
};

class Description {
 public:
  Description(const Catalog& catalog, const std::vector<DamagedPiece>& pieces)
      : catalog_(catalog), columns_(catalog.columns()) {
    for (const DamagedPiece& piece : pieces) add(piece);
  }

  std::vector<std::string> take() {
    nameMeshes();
    nameSets();
    nameLocations();
    for (std::size_t i = 0; i < columns_.steps()->name()->size(); ++i) nameStep(i);
    std::map<std::int64_t, std::string> texts;
    for (const auto& [array, runs] : runs_) {
      for (const Run& run : runs) {
        texts.emplace(run.bytes.begin, fmt::format("bytes {}..{} are damaged: {}", run.bytes.begin, run.bytes.end - 1,
                                                   fmt::join(run.places, "; ")));
      }
    }
    std::vector<std::string> sorted;
    for (auto& [begin, text] : texts) sorted.push_back(std::move(text));
    return sorted;
  }

 private:
  void add(const DamagedPiece& piece) {
    std::vector<Run>& runs = runs_[piece.array];
    const bool isNext = !runs.empty() && runs.back().bytes.end == piece.bytes.begin;
    if (!isNext) runs.push_back({piece.bytes, {}, {}});
    Run& run = runs.back();
    run.bytes.end = piece.bytes.end;
    if (run.slabs.empty() || run.slabs.back() != piece.slab) run.slabs.push_back(piece.slab);
  }

  // Calls `name` for the damaged runs of an array.
  template <class Name>
  void forRuns(std::int32_t array, Name&& name) {
    const auto found = runs_.find(array);
    if (found == runs_.end()) return;
    for (Run& run : found->second) name(run);
  }

  template <class Path>
  void nameWhole(std::int32_t array, Path&& path) {
    forRuns(array, [&](Run& run) { run.places.push_back(describePlace(path())); });
  }

  void nameMeshes() {
    const odbstore::columns::Instances& instances = *columns_.instances();
    for (std::size_t i = 0; i < instances.name()->size(); ++i) {
      const auto nodes = [&](const char* link) {
        return odbstore::instancePath(catalog_, i) + "/" + odbstore::links::kMesh + "/" + odbstore::links::kNodes +
               "/" + link;
      };
      nameWhole(instances.nodeLabels()->Get(at(i)), [&] { return nodes(odbstore::links::kLabels); });
      nameWhole(instances.coordinates()->Get(at(i)), [&] { return nodes(odbstore::links::kCoordinates); });
    }
    const odbstore::columns::Elements& elements = *columns_.elements();
    for (std::size_t i = 0; i < elements.labels()->size(); ++i) {
      const auto path = [&](const char* link) { return odbstore::elementsPath(catalog_, i) + "/" + link; };
      nameWhole(elements.labels()->Get(at(i)), [&] { return path(odbstore::links::kLabels); });
      nameWhole(elements.connectivity()->Get(at(i)), [&] { return path(odbstore::links::kConnectivity); });
    }
  }

  // Sets share an array: those are named of whose labels some are among the damaged bytes.
  void nameSets() {
    const odbstore::columns::Sets& sets = *columns_.sets();
    for (std::size_t i = 0; i < sets.name()->size(); ++i) {
      const Places members = Catalog::placesOf(sets.memberEnd(), i);
      for (std::size_t k = members.first; k < members.end; ++k) {
        const std::int32_t array = sets.memberLabels()->Get(at(k));
        const odbstore::ArrayInfo info = catalog_.array(array);
        const auto size = static_cast<std::int64_t>(base::sizeOf(info.format));
        const std::int64_t first = sets.memberFirst()->Get(at(k));
        const std::int64_t begin = info.place + first * size;
        const std::int64_t end = begin + sets.memberCount()->Get(at(k)) * size;
        forRuns(array, [&](Run& run) {
          const bool isHit =
              info.packing != odbstore::Packing::contiguous || (begin < run.bytes.end && end > run.bytes.begin);
          if (!isHit) return;
          if (run.places.size() < kMostNames) {
            run.places.push_back(describePlace(odbstore::memberPath(catalog_, i, k)));
          } else if (run.places.size() == kMostNames) {
            run.places.emplace_back("more sets");
          }
        });
      }
    }
  }

  void nameLocations() {
    const odbstore::columns::Locations& locations = *columns_.locations();
    for (std::size_t i = 0; i < locations.id()->size(); ++i) {
      const auto path = [&](const char* link) { return odbstore::locationPath(catalog_, i) + "/" + link; };
      nameWhole(locations.nodeLabels()->Get(at(i)), [&] { return path(odbstore::links::kNodeLabels); });
      nameWhole(locations.elementLabels()->Get(at(i)), [&] { return path(odbstore::links::kElementLabels); });
      nameWhole(locations.integrationPoints()->Get(at(i)), [&] { return path(odbstore::links::kIntegrationPoints); });
      nameWhole(locations.rowOf()->Get(at(i)), [&] { return path(odbstore::links::kRowOf); });
    }
  }

  void nameStep(std::size_t step) {
    const Places fields = Catalog::placesOf(columns_.steps()->fieldEnd(), step);
    for (std::size_t field = fields.first; field < fields.end; ++field) {
      const Places blocks = Catalog::placesOf(columns_.fields()->blockEnd(), field);
      for (std::size_t block = blocks.first; block < blocks.end; ++block) nameBlock(step, field, block);
    }
    const Places regions = Catalog::placesOf(columns_.steps()->regionEnd(), step);
    for (std::size_t region = regions.first; region < regions.end; ++region) {
      const Places outputs = Catalog::placesOf(columns_.regions()->outputEnd(), region);
      for (std::size_t output = outputs.first; output < outputs.end; ++output) {
        nameWhole(columns_.outputs()->data()->Get(at(output)),
                  [&] { return odbstore::outputPath(catalog_, step, region, output); });
      }
    }
  }

  void nameBlock(std::size_t step, std::size_t field, std::size_t block) {
    forRuns(columns_.blocks()->data()->Get(at(block)), [&](Run& run) {
      const std::string path = odbstore::blockPath(catalog_, step, field, block) + "/" + odbstore::links::kData;
      run.places.push_back(describePlace(path) + ", " + describeFrames(framesOf(field, block, run.slabs)));
    });
  }

  std::vector<int> framesOf(std::size_t field, std::size_t block, const std::vector<std::int64_t>& slabs) const {
    std::int32_t list = columns_.blocks()->frames()->Get(at(block));
    if (list == kNone) list = columns_.fields()->frames()->Get(at(field));
    std::vector<int> frames;
    for (const std::int64_t slab : slabs) {
      frames.push_back(list == kNone ? static_cast<int>(slab) : catalog_.list(list)[static_cast<std::size_t>(slab)]);
    }
    std::sort(frames.begin(), frames.end());
    return frames;
  }

  const Catalog& catalog_;
  const odbstore::columns::Catalog& columns_;
  std::map<std::int32_t, std::vector<Run>> runs_;  // by array
};

}  // namespace

std::vector<std::string> describeDamage(const Catalog& catalog, const std::vector<DamagedPiece>& pieces) {
  return Description(catalog, pieces).take();
}

}  // namespace verify
