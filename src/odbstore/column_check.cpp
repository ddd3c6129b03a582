// The first half of catalog_check.h: columns and references.
#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "odbstore/catalog_check.h"
#include "odbstore/layout.h"
#include "odbstore/store_error.h"

namespace odbstore {

namespace {

template <class Number>
using Column = flatbuffers::Vector<Number>;

// Deflate never packs more than this many bytes into one.
constexpr std::int64_t kLargestCompression = 1032;
// What HDF5 appends to a chunk.
constexpr std::int64_t kFletcherBytes = 4;
constexpr std::size_t kNumbersOfAxis = 6;

// Checks that the columns fit each other.
class ColumnCheck {
 public:
  ColumnCheck(const columns::Catalog& columns, const std::string& file, std::int64_t arraysEnd)
      : columns_(columns), file_(file), arraysEnd_(arraysEnd) {}

  CheckedColumns run() {
    checkAlignment();
    checkTexts();
    checkLists();
    checkArrays();
    checkModel();
    checkSets();
    checkLocations();
    checkSteps();
    checkFields();
    checkHistories();
    checkUses();
    checkExtents();
    return std::move(checked_);
  }

 private:
  [[noreturn]] void fail(const std::string& what) const { throw StoreError(file_, "/catalog", "is damaged: " + what); }

  // FlatBuffers does not check that eight-byte numbers are aligned, which loops over them rely on. Empty columns may be
  // anywhere.
  template <class... Columns>
  void requireAligned(const Columns*... columns) const {
    constexpr std::uintptr_t kAlignment = 8;
    const auto isAligned = [](const auto* column) {
      return column->size() == 0 || reinterpret_cast<std::uintptr_t>(column->Data()) % kAlignment == 0;
    };
    if (!(isAligned(columns) && ...)) fail("a column is not aligned");
  }

  void checkAlignment() const {
    const columns::Arrays& arrays = *columns_.arrays();
    requireAligned(arrays.slabs(), arrays.slabNumbers(), arrays.place(), arrays.chunkOffset(), arrays.chunkBytes());
    requireAligned(columns_.sets()->memberFirst(), columns_.sets()->memberCount());
    requireAligned(columns_.locations()->rows(), columns_.locations()->storedRows());
    requireAligned(columns_.steps()->mass(), columns_.steps()->moments(), columns_.frames()->value());
    requireAligned(columns_.blocks()->rows(), columns_.blocks()->width());
    requireAligned(columns_.outputs()->first(), columns_.outputs()->samples(), columns_.outputs()->width());
  }

  template <class... Columns>
  void requireLength(const char* table, std::size_t length, const Columns*... columns) const {
    if (((columns->size() != length) || ...)) fail(fmt::format("columns of {} differ in length", table));
  }

  void requireEnds(const char* table, const Column<std::uint32_t>* ends, std::size_t length, std::size_t whole) const {
    bool isGood = ends->size() == length;
    std::uint32_t before = 0;
    for (const std::uint32_t end : *ends) {
      isGood = isGood && end >= before;
      before = end;
    }
    if (!isGood || before != whole) fail(fmt::format("the ends of {} do not fit", table));
  }

  void requireReferences(const char* table, const Column<std::int32_t>* column, std::size_t targets,
                         bool mayBeNone = false) const {
    const std::int32_t least = mayBeNone ? kNone : 0;
    for (const std::int32_t reference : *column) {
      if (reference < least || (reference >= 0 && static_cast<std::size_t>(reference) >= targets)) {
        fail(fmt::format("{} refer to objects that do not exist", table));
      }
    }
  }
  void requireTexts(const char* table, const Column<std::int32_t>* column, bool mayBeNone = false) const {
    requireReferences(table, column, columns_.texts()->end()->size(), mayBeNone);
  }
  void requireArrays(const char* table, const Column<std::int32_t>* column, bool mayBeNone = false) const {
    requireReferences(table, column, columns_.arrays()->format()->size(), mayBeNone);
  }
  void requireLists(const char* table, const Column<std::int32_t>* column, bool mayBeNone = false) const {
    requireReferences(table, column, columns_.lists()->end()->size(), mayBeNone);
  }
  // Lists of references to texts.
  void requireTextLists(const char* table, const Column<std::int32_t>* column, bool mayBeNone = false) const {
    requireLists(table, column, mayBeNone);
    const auto texts = static_cast<std::int64_t>(columns_.texts()->end()->size());
    for (const std::int32_t list : *column) {
      if (list == kNone) continue;
      const Places places = Catalog::placesOf(columns_.lists()->end(), static_cast<std::size_t>(list));
      spend(places.size());
      for (std::size_t i = places.first; i < places.end; ++i) {
        const std::int32_t text = columns_.lists()->number()->Get(static_cast<flatbuffers::uoffset_t>(i));
        if (text < 0 || text >= texts) fail(fmt::format("{} refer to objects that do not exist", table));
      }
    }
  }
  void requireCodes(const char* table, const Column<std::uint8_t>* column, std::uint8_t codes) const {
    for (const std::uint8_t code : *column) {
      if (code >= codes) fail(fmt::format("{} have an unknown code", table));
    }
  }
  void requireCounts(const char* table, const Column<std::int64_t>* column) const {
    for (const std::int64_t count : *column) {
      if (count < 0) fail(fmt::format("{} have a negative count", table));
    }
  }

  // Many objects may share one list; a small catalog must not cause much work.
  void spend(std::size_t work) const {
    constexpr std::size_t kMost = std::size_t{64} << 20U;
    work_ += work;
    if (work_ > kMost) fail("its lists are used too often");
  }

  void checkTexts() const {
    requireEnds("texts", columns_.texts()->end(), columns_.texts()->end()->size(), columns_.texts()->bytes()->size());
    const auto texts = static_cast<std::int64_t>(columns_.texts()->end()->size());
    for (const std::int32_t text : {columns_.name(), columns_.title(), columns_.producer(), columns_.assemblyName()}) {
      if (text < kNone || text >= texts) fail("names refer to objects that do not exist");
    }
  }

  void checkLists() const {
    requireEnds("lists", columns_.lists()->end(), columns_.lists()->end()->size(), columns_.lists()->number()->size());
  }

  void checkArrays() {
    const columns::Arrays& arrays = *columns_.arrays();
    const std::size_t count = arrays.format()->size();
    requireLength("arrays", count, arrays.packing(), arrays.slabs(), arrays.slabNumbers(), arrays.place());
    requireLength("chunks", arrays.chunkOffset()->size(), arrays.chunkBytes());
    requireCounts("arrays", arrays.slabs());
    requireCounts("arrays", arrays.slabNumbers());
    requireCounts("arrays", arrays.place());
    requireCounts("chunks", arrays.chunkBytes());
    requireCodes("arrays", arrays.packing(), kPackings);
    std::size_t sums = 0;
    for (flatbuffers::uoffset_t i = 0; i < count; ++i) {
      if (!base::isNumberFormat(arrays.format()->Get(i))) fail("arrays have an unknown code");
      checked_.firstSums.push_back(sums);
      sums += checkArray({static_cast<base::NumberFormat>(arrays.format()->Get(i)),
                          static_cast<Packing>(arrays.packing()->Get(i)), arrays.slabs()->Get(i),
                          arrays.slabNumbers()->Get(i), arrays.place()->Get(i)});
    }
    checked_.firstSums.push_back(sums);
    if (arrays.sums()->size() == 0) {
      checked_.firstSums.clear();
    } else if (arrays.sums()->size() != sums) {
      fail("it does not have one checksum for each piece of its arrays");
    }
  }

  // How many checksums it has.
  std::size_t checkArray(const ArrayInfo& array) {
    const auto size = static_cast<std::int64_t>(base::sizeOf(array.format));
    const std::int64_t most = std::numeric_limits<std::int64_t>::max() / size;
    if (array.slabs != 0 && array.slabNumbers > most / array.slabs) fail("an array is too large");
    if (array.numbers() == 0) return 0;
    if (array.packing == Packing::contiguous) {
      const std::int64_t bytes = array.numbers() * size;
      addExtent(array.place, bytes);
      return static_cast<std::size_t>(array.slabs * piecesOf(array.slabBytes()));
    }
    const Column<std::int64_t>& offsets = *columns_.arrays()->chunkOffset();
    const auto chunks = static_cast<std::int64_t>(offsets.size());
    if (array.place > chunks || array.slabs > chunks - array.place) fail("an array has chunks that do not exist");
    std::int64_t sums = 0;
    for (std::int64_t i = array.place; i < array.place + array.slabs; ++i) {
      const std::int64_t bytes = columns_.arrays()->chunkBytes()->Get(static_cast<flatbuffers::uoffset_t>(i));
      addExtent(offsets.Get(static_cast<flatbuffers::uoffset_t>(i)), bytes);
      if (!isPossible(array, bytes)) fail("a chunk cannot hold its slab");
      sums += piecesOf(bytes);
    }
    return static_cast<std::size_t>(sums);
  }

  static bool isPossible(const ArrayInfo& array, std::int64_t storedBytes) {
    switch (array.packing) {
      case Packing::unpacked:
        return storedBytes == array.slabBytes();
      case Packing::fletcher32:
        return storedBytes == array.slabBytes() + kFletcherBytes;
      default:
        return array.slabBytes() / kLargestCompression <= storedBytes;
    }
  }

  void addExtent(std::int64_t offset, std::int64_t bytes) {
    if (offset < 0 || offset > arraysEnd_ || bytes > arraysEnd_ - offset) fail("an array reaches beyond the file");
    checked_.extents.push_back({offset, offset + bytes});
  }

  void checkExtents() {
    std::vector<Extent>& extents = checked_.extents;
    std::sort(extents.begin(), extents.end(), [](const Extent& a, const Extent& b) { return a.begin < b.begin; });
    for (std::size_t i = 1; i < extents.size(); ++i) {
      if (extents[i].begin < extents[i - 1].end) {
        fail(fmt::format("two arrays overlap at byte {}", extents[i].begin));
      }
    }
  }

  // Whether numbers `first` to `first + count - 1` are in the array.
  void requirePart(const char* table, std::int32_t array, std::int64_t first, std::int64_t count) const {
    const columns::Arrays& arrays = *columns_.arrays();
    const auto i = static_cast<flatbuffers::uoffset_t>(array);
    const std::int64_t numbers = arrays.slabs()->Get(i) * arrays.slabNumbers()->Get(i);
    if (first < 0 || count < 0 || first > numbers || count > numbers - first) {
      fail(fmt::format("{} reach beyond their array", table));
    }
  }

  // Every array belongs to one object, or in parts to sets or histories, so there is never more to read than the file
  // holds.
  void checkUses() {
    for (const auto* column :
         {columns_.instances()->nodeLabels(), columns_.instances()->coordinates(), columns_.elements()->labels(),
          columns_.elements()->connectivity(), columns_.locations()->nodeLabels(),
          columns_.locations()->elementLabels(), columns_.locations()->integrationPoints(),
          columns_.locations()->rowOf(), columns_.blocks()->data()}) {
      for (const std::int32_t array : *column) {
        if (array != kNone) useWhole(array);
      }
    }
    const columns::Sets& sets = *columns_.sets();
    std::vector<Part> parts;
    for (flatbuffers::uoffset_t i = 0; i < sets.memberLabels()->size(); ++i) {
      parts.push_back({sets.memberLabels()->Get(i), sets.memberFirst()->Get(i), sets.memberCount()->Get(i)});
    }
    useParts(std::move(parts));
    const columns::HistoryOutputs& outputs = *columns_.outputs();
    parts.clear();
    for (flatbuffers::uoffset_t i = 0; i < outputs.data()->size(); ++i) {
      parts.push_back(
          {outputs.data()->Get(i), outputs.first()->Get(i), outputs.samples()->Get(i) * outputs.width()->Get(i)});
    }
    useParts(std::move(parts));
  }

  // Numbers `first` to `first + count - 1` of an array.
  struct Part {
    std::int32_t array;
    std::int64_t first;
    std::int64_t count;

    auto operator<=>(const Part&) const = default;
  };

  void useWhole(std::int32_t array) {
    isUsed_.resize(columns_.arrays()->format()->size());
    if (isUsed_[static_cast<std::size_t>(array)]) fail("an array belongs to two objects");
    isUsed_[static_cast<std::size_t>(array)] = true;
  }

  void useParts(std::vector<Part> parts) {
    // This is the order of DatabaseWriter; other files may have another.
    if (!std::is_sorted(parts.begin(), parts.end())) std::sort(parts.begin(), parts.end());
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if (i == 0 || parts[i].array != parts[i - 1].array) {
        useWhole(parts[i].array);
      } else if (parts[i].first < parts[i - 1].first + parts[i - 1].count) {
        fail("parts of an array overlap");
      }
    }
  }

  void checkModel() const {
    const std::size_t axis = columns_.symmetryAxis()->size();
    if (axis != 0 && axis != kNumbersOfAxis) fail("the axis does not have two points");
    requireTexts("parts", columns_.parts()->name());
    const columns::Instances& instances = *columns_.instances();
    requireLength("instances", instances.name()->size(), instances.part(), instances.nodeLabels(),
                  instances.coordinates());
    requireTexts("instances", instances.name());
    requireTexts("instances", instances.part());
    requireArrays("instances", instances.nodeLabels(), true);
    requireArrays("instances", instances.coordinates(), true);
    for (flatbuffers::uoffset_t i = 0; i < instances.name()->size(); ++i) {
      if ((instances.nodeLabels()->Get(i) == kNone) != (instances.coordinates()->Get(i) == kNone)) {
        fail("a mesh has only labels or only coordinates");
      }
    }
    const columns::Elements& elements = *columns_.elements();
    requireLength("elements", elements.instance()->size(), elements.type(), elements.labels(), elements.connectivity());
    requireReferences("elements", elements.instance(), instances.name()->size());
    requireTexts("elements", elements.type());
    requireArrays("elements", elements.labels());
    requireArrays("elements", elements.connectivity());
  }

  void checkSets() const {
    const columns::Sets& sets = *columns_.sets();
    const std::size_t count = sets.name()->size();
    requireLength("sets", count, sets.ownerKind(), sets.owner(), sets.kind());
    requireTexts("sets", sets.name());
    requireCodes("sets", sets.ownerKind(), 3);
    requireCodes("sets", sets.kind(), 2);
    for (flatbuffers::uoffset_t i = 0; i < count; ++i) {
      const auto kind = static_cast<OwnerKind>(sets.ownerKind()->Get(i));
      const std::int32_t owner = sets.owner()->Get(i);
      const std::size_t owners =
          kind == OwnerKind::part ? columns_.parts()->name()->size() : columns_.instances()->name()->size();
      const bool isGood =
          kind == OwnerKind::assembly ? owner == kNone : owner >= 0 && static_cast<std::size_t>(owner) < owners;
      if (!isGood) fail("sets refer to objects that do not exist");
    }
    const std::size_t members = sets.memberLabels()->size();
    requireEnds("sets", sets.memberEnd(), count, members);
    requireLength("members of sets", members, sets.memberInstance(), sets.memberFirst(), sets.memberCount());
    requireTexts("members of sets", sets.memberInstance(), true);
    requireArrays("members of sets", sets.memberLabels());
    for (flatbuffers::uoffset_t i = 0; i < members; ++i) {
      requirePart("sets", sets.memberLabels()->Get(i), sets.memberFirst()->Get(i), sets.memberCount()->Get(i));
    }
    for (flatbuffers::uoffset_t i = 0; i < count; ++i) {
      if (static_cast<OwnerKind>(sets.ownerKind()->Get(i)) == OwnerKind::assembly) continue;
      if (Catalog::placesOf(sets.memberEnd(), i).size() != 1) fail("a set does not have exactly one list of labels");
    }
  }

  void checkLocations() const {
    const columns::Locations& locations = *columns_.locations();
    requireLength("locations", locations.id()->size(), locations.instance(), locations.position(),
                  locations.elementType(), locations.sectionPoint(), locations.sectionPointDescription(),
                  locations.rows(), locations.storedRows(), locations.nodeLabels(), locations.elementLabels(),
                  locations.integrationPoints(), locations.rowOf());
    requireCodes("locations", locations.position(), 5);
    requireCounts("locations", locations.rows());
    requireCounts("locations", locations.storedRows());
    for (const auto* texts :
         {locations.id(), locations.instance(), locations.elementType(), locations.sectionPointDescription()}) {
      requireTexts("locations", texts);
    }
    for (const auto* arrays :
         {locations.nodeLabels(), locations.elementLabels(), locations.integrationPoints(), locations.rowOf()}) {
      requireArrays("locations", arrays, true);
    }
  }

  void checkSteps() const {
    const columns::Steps& steps = *columns_.steps();
    const std::size_t count = steps.name()->size();
    requireLength("steps", count, steps.description(), steps.mass(), steps.given());
    if (steps.moments()->size() != kMomentsOfStep * count) fail("columns of steps differ in length");
    requireTexts("steps", steps.name());
    requireTexts("steps", steps.description());
    const columns::Frames& frames = *columns_.frames();
    requireLength("frames", frames.value()->size(), frames.incrementNumber(), frames.description());
    requireTexts("frames", frames.description());
    requireEnds("steps", steps.frameEnd(), count, frames.value()->size());
    requireEnds("steps", steps.fieldEnd(), count, columns_.fields()->name()->size());
    requireEnds("steps", steps.regionEnd(), count, columns_.regions()->name()->size());
  }

  void checkFields() const {
    const columns::Forms& forms = *columns_.forms();
    const std::size_t formCount = forms.type()->size();
    requireLength("forms", formCount, forms.description(), forms.componentLabels(), forms.validInvariants(),
                  forms.engineeringShear());
    requireTexts("forms", forms.description());
    requireTextLists("forms", forms.componentLabels());
    requireLists("forms", forms.validInvariants());
    const columns::Fields& fields = *columns_.fields();
    const std::size_t count = fields.name()->size();
    requireLength("fields", count, fields.frames(), fields.form());
    requireTexts("fields", fields.name());
    requireLists("fields", fields.frames(), true);
    requireReferences("fields", fields.form(), formCount);
    requireEnds("fields", fields.changeEnd(), count, fields.changeFrame()->size());
    requireLength("changes of fields", fields.changeFrame()->size(), fields.changeForm());
    requireReferences("fields", fields.changeForm(), formCount);
    const columns::Blocks& blocks = *columns_.blocks();
    requireEnds("fields", fields.blockEnd(), count, blocks.data()->size());
    requireLength("blocks", blocks.data()->size(), blocks.location(), blocks.hasType(), blocks.type(),
                  blocks.componentLabels(), blocks.frames(), blocks.rows(), blocks.width());
    requireReferences("blocks", blocks.location(), columns_.locations()->id()->size());
    requireTextLists("blocks", blocks.componentLabels(), true);
    requireLists("blocks", blocks.frames(), true);
    requireArrays("blocks", blocks.data());
    requireCounts("blocks", blocks.rows());
    requireCounts("blocks", blocks.width());
  }

  void checkHistories() const {
    const columns::HistoryRegions& regions = *columns_.regions();
    const std::size_t count = regions.name()->size();
    requireLength("history regions", count, regions.description(), regions.node(), regions.element(),
                  regions.integrationPoint(), regions.sectionPoint(), regions.sectionPointDescription(), regions.set());
    for (const auto* texts :
         {regions.name(), regions.description(), regions.sectionPointDescription(), regions.set()}) {
      requireTexts("history regions", texts);
    }
    const columns::HistoryOutputs& outputs = *columns_.outputs();
    const std::size_t outputCount = outputs.name()->size();
    requireEnds("history regions", regions.outputEnd(), count, outputCount);
    requireLength("histories", outputCount, outputs.data(), outputs.first(), outputs.samples(), outputs.width());
    requireTexts("histories", outputs.name());
    requireArrays("histories", outputs.data());
    requireCounts("histories", outputs.samples());
    requireCounts("histories", outputs.width());
    for (flatbuffers::uoffset_t i = 0; i < outputCount; ++i) {
      const std::int64_t samples = outputs.samples()->Get(i);
      const std::int64_t width = outputs.width()->Get(i);
      if (samples != 0 && width > std::numeric_limits<std::int64_t>::max() / samples) fail("a history is too large");
      requirePart("histories", outputs.data()->Get(i), outputs.first()->Get(i), samples * width);
    }
  }

  const columns::Catalog& columns_;
  const std::string& file_;
  std::int64_t arraysEnd_;
  CheckedColumns checked_;
  std::vector<bool> isUsed_;  // of each array, whether an object has it
  mutable std::size_t work_ = 0;
};

}  // namespace

CheckedColumns checkColumns(const columns::Catalog& columns, const std::string& file, std::int64_t arraysEnd) {
  return ColumnCheck(columns, file, arraysEnd).run();
}

}  // namespace odbstore
