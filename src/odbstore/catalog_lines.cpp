#include "odbstore/catalog_lines.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "odbstore/catalog_paths.h"
#include "odbstore/layout.h"

namespace odbstore {

namespace {

class Lines {
 public:
  explicit Lines(const Catalog& catalog) : catalog_(catalog), columns_(catalog.columns()) {}

  std::vector<std::string> take() {
    addModel();
    addSets();
    for (std::size_t i = 0; i < columns_.locations()->id()->size(); ++i) addLocation(i);
    for (std::size_t i = 0; i < columns_.steps()->name()->size(); ++i) addStep(i);
    std::sort(lines_.begin(), lines_.end());
    return std::move(lines_);
  }

 private:
  void add(const std::string& object, const std::string& text) { lines_.push_back(object + ": " + text); }

  std::string quoted(std::int32_t text) const {
    return text == kNone ? "-" : fmt::format("\"{}\"", catalog_.text(text));
  }
  std::string quotedList(std::int32_t list) const {
    return list == kNone ? "-" : fmt::format("{}", catalog_.texts(list));
  }
  std::string numberList(std::int32_t list) const {
    const std::span<const std::int32_t> numbers = catalog_.list(list);
    return list == kNone ? "-" : fmt::format("[{}]", fmt::join(numbers.begin(), numbers.end(), ", "));
  }

  // Numbers of an array, from `first` on.
  std::string part(std::int32_t array, std::int64_t first, std::int64_t count) const {
    if (array == kNone) return "-";
    const ArrayInfo info = catalog_.array(array);
    const std::string format = fmt::format("format {}", static_cast<int>(info.format));
    if (count == 0) return format + " x 0";
    const auto size = static_cast<std::int64_t>(base::sizeOf(info.format));
    if (info.packing == Packing::contiguous) {
      return fmt::format("{} x {} at {}", format, count, info.place + first * size);
    }
    std::string text = fmt::format("{} x {} from {} packed {}", format, count, first, static_cast<int>(info.packing));
    for (std::int64_t slab = 0; slab < info.slabs; ++slab) {
      const Extent extent = catalog_.slab(info, slab);
      text += fmt::format(" {}..{}", extent.begin, extent.end);
    }
    return text;
  }
  std::string whole(std::int32_t array) const {
    return array == kNone ? "-" : part(array, 0, catalog_.array(array).numbers());
  }

  void addModel() {
    add("/", fmt::format("layout {} name {} title {} producer {} assembly {} axis [{}]", columns_.layout(),
                         quoted(columns_.name()), quoted(columns_.title()), quoted(columns_.producer()),
                         quoted(columns_.assemblyName()),
                         fmt::join(columns_.symmetryAxis()->data(),
                                   columns_.symmetryAxis()->data() + columns_.symmetryAxis()->size(), ", ")));
    for (std::size_t i = 0; i < columns_.parts()->name()->size(); ++i) add(partPath(catalog_, i), "part");
    const columns::Instances& instances = *columns_.instances();
    for (std::size_t i = 0; i < instances.name()->size(); ++i) {
      add(instancePath(catalog_, i),
          fmt::format("part {} nodes {} coordinates {}", quoted(instances.part()->Get(at(i))),
                      whole(instances.nodeLabels()->Get(at(i))), whole(instances.coordinates()->Get(at(i)))));
    }
    const columns::Elements& elements = *columns_.elements();
    for (std::size_t i = 0; i < elements.labels()->size(); ++i) {
      add(elementsPath(catalog_, i), fmt::format("labels {} connectivity {}", whole(elements.labels()->Get(at(i))),
                                                 whole(elements.connectivity()->Get(at(i)))));
    }
  }

  void addSets() {
    const columns::Sets& sets = *columns_.sets();
    for (std::size_t i = 0; i < sets.name()->size(); ++i) {
      add(setPath(catalog_, i), "set");
      const Places members = Catalog::placesOf(sets.memberEnd(), i);
      for (std::size_t k = members.first; k < members.end; ++k) {
        add(memberPath(catalog_, i, k),
            part(sets.memberLabels()->Get(at(k)), sets.memberFirst()->Get(at(k)), sets.memberCount()->Get(at(k))));
      }
    }
  }

  void addLocation(std::size_t i) {
    const columns::Locations& all = *columns_.locations();
    add(locationPath(catalog_, i),
        fmt::format(
            "instance {} position {} type {} point {} {} rows {} of {} nodes {} elements {} points {} index {}",
            quoted(all.instance()->Get(at(i))), all.position()->Get(at(i)), quoted(all.elementType()->Get(at(i))),
            all.sectionPoint()->Get(at(i)), quoted(all.sectionPointDescription()->Get(at(i))), all.rows()->Get(at(i)),
            all.storedRows()->Get(at(i)), whole(all.nodeLabels()->Get(at(i))), whole(all.elementLabels()->Get(at(i))),
            whole(all.integrationPoints()->Get(at(i))), whole(all.rowOf()->Get(at(i)))));
  }

  void addStep(std::size_t i) {
    const columns::Steps& steps = *columns_.steps();
    const double* const moments = steps.moments()->data() + 15 * i;
    const std::string path = stepPath(catalog_, i);
    add(path, fmt::format("number {} description {} mass {} given {} [{}]", i, quoted(steps.description()->Get(at(i))),
                          steps.mass()->Get(at(i)), steps.given()->Get(at(i)), fmt::join(moments, moments + 15, ", ")));
    const Places frames = Catalog::placesOf(steps.frameEnd(), i);
    for (std::size_t k = frames.first; k < frames.end; ++k) {
      add(path, fmt::format("frame {} increment {} value {} {}", k - frames.first,
                            columns_.frames()->incrementNumber()->Get(at(k)), columns_.frames()->value()->Get(at(k)),
                            quoted(columns_.frames()->description()->Get(at(k)))));
    }
    const Places fields = Catalog::placesOf(steps.fieldEnd(), i);
    for (std::size_t k = fields.first; k < fields.end; ++k) addField(i, k);
    const Places regions = Catalog::placesOf(steps.regionEnd(), i);
    for (std::size_t k = regions.first; k < regions.end; ++k) addRegion(i, k);
  }

  std::string form(std::int32_t reference) const {
    const columns::Forms& forms = *columns_.forms();
    const auto i = static_cast<flatbuffers::uoffset_t>(reference);
    return fmt::format("{} type {} labels {} invariants {} shear {}", quoted(forms.description()->Get(i)),
                       forms.type()->Get(i), quotedList(forms.componentLabels()->Get(i)),
                       numberList(forms.validInvariants()->Get(i)), forms.engineeringShear()->Get(i));
  }

  void addField(std::size_t step, std::size_t field) {
    const columns::Fields& fields = *columns_.fields();
    const std::string path = fieldPath(catalog_, step, field);
    add(path,
        fmt::format("frames {} {}", numberList(fields.frames()->Get(at(field))), form(fields.form()->Get(at(field)))));
    const Places changes = Catalog::placesOf(fields.changeEnd(), field);
    for (std::size_t i = changes.first; i < changes.end; ++i) {
      add(path, fmt::format("in frame {} {}", fields.changeFrame()->Get(at(i)), form(fields.changeForm()->Get(at(i)))));
    }
    const columns::Blocks& blocks = *columns_.blocks();
    const Places places = Catalog::placesOf(fields.blockEnd(), field);
    for (std::size_t i = places.first; i < places.end; ++i) {
      const auto location = static_cast<std::size_t>(blocks.location()->Get(at(i)));
      const std::string type = blocks.hasType()->Get(at(i)) != 0 ? std::to_string(blocks.type()->Get(at(i))) : "-";
      add(blockPath(catalog_, step, field, i),
          fmt::format("location {} type {} labels {} frames {} rows {} of {} data {}",
                      quoted(columns_.locations()->id()->Get(at(location))), type,
                      quotedList(blocks.componentLabels()->Get(at(i))), numberList(blocks.frames()->Get(at(i))),
                      blocks.rows()->Get(at(i)), blocks.width()->Get(at(i)), whole(blocks.data()->Get(at(i)))));
    }
  }

  void addRegion(std::size_t step, std::size_t region) {
    const columns::HistoryRegions& regions = *columns_.regions();
    const auto i = at(region);
    add(regionPath(catalog_, step, region),
        fmt::format("{} node {} element {} point {} section point {} {} set {}", quoted(regions.description()->Get(i)),
                    regions.node()->Get(i), regions.element()->Get(i), regions.integrationPoint()->Get(i),
                    regions.sectionPoint()->Get(i), quoted(regions.sectionPointDescription()->Get(i)),
                    quoted(regions.set()->Get(i))));
    const columns::HistoryOutputs& outputs = *columns_.outputs();
    const Places places = Catalog::placesOf(regions.outputEnd(), region);
    for (std::size_t k = places.first; k < places.end; ++k) {
      const std::int64_t samples = outputs.samples()->Get(at(k));
      const std::int64_t width = outputs.width()->Get(at(k));
      add(outputPath(catalog_, step, region, k),
          fmt::format("{} samples of {} {}", samples, width,
                      part(outputs.data()->Get(at(k)), outputs.first()->Get(at(k)), samples * width)));
    }
  }

  const Catalog& catalog_;
  const columns::Catalog& columns_;
  std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> linesOf(const Catalog& catalog) { return Lines(catalog).take(); }

}  // namespace odbstore
