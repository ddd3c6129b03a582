// The second half of catalog_check.h: what the layout requires.
#include <fmt/core.h>

#include <algorithm>
#include <limits>
#include <tuple>

#include "base/control_characters.h"
#include "odbstore/catalog_check.h"
#include "odbstore/catalog_paths.h"
#include "odbstore/layout.h"
#include "odbstore/names.h"

namespace odbstore {

namespace {

using flatbuffers::uoffset_t;

std::string member(const std::string& path, const char* link) { return path + "/" + link; }

class ContentCheck {
 public:
  ContentCheck(const Catalog& catalog, const Complain& complain)
      : catalog_(catalog), columns_(catalog.columns()), complain_(complain) {}

  void run() {
    try {
      checkAll();
    } catch (const TooMuch&) {
      complain_("/catalog", "would take more work than a file of its size can need");
    }
  }

 private:
  struct TooMuch {};

  void checkAll() {
    checkParts();
    checkInstances();
    checkElements();
    checkSets();
    for (std::size_t i = 0; i < columns_.locations()->id()->size(); ++i) checkLocation(i);
    checkStepNames();
    for (std::size_t i = 0; i < columns_.steps()->name()->size(); ++i) checkStep(i);
  }

  // Names and lists may be shared: a small catalog must neither cause much work nor fill the memory of a program that
  // copies them.
  void spend(std::size_t work) {
    constexpr std::size_t kLeast = std::size_t{64} << 20U;
    work_ += work;
    if (work_ > kLeast + 16 * catalog_.bytes().size()) throw TooMuch();
  }

  std::string_view text(const flatbuffers::Vector<std::int32_t>* column, std::size_t i) {
    return catalog_.text(column->Get(at(i)));
  }

  // Names end up in records, where a line feed would begin another one.
  template <class Path>
  void checkName(std::string_view name, Path&& path) {
    spend(name.size());
    if (base::hasControlCharacter(name)) complain_(path(), "the name has a control character");
  }

  // Names of a table are ascending, so that they can be found.
  template <class Path>
  void requireAscending(std::string_view before, std::string_view name, Path&& path) {
    if (before == name) complain_(path(), "there are two objects of this name");
    if (before > name) complain_(path(), "comes after a later name");
  }

  bool isArrayOfInts(std::int32_t array) { return !base::isFloatingPoint(catalog_.array(array).format); }

  void requireInts(std::int32_t array, const std::string& path) {
    if (!isArrayOfInts(array)) complain_(path, "must hold integers");
    checkProportion(array, path);
  }

  // A few packed bytes can expand to very many. Writers of rows do not pack labels, so genuine rows are in proportion
  // to the file.
  template <class Path>
  void checkProportion(std::int32_t array, const Path& path) {
    constexpr std::int64_t kAlways = std::int64_t{64} << 20U;
    const ArrayInfo info = catalog_.array(array);
    if (info.packing == Packing::contiguous || (info.slabBytes() - kAlways) / 16 <= catalog_.arraysEnd()) return;
    complain_(path, fmt::format("unpacks into {} MiB at a time, more than a file of its size can need",
                                info.slabBytes() >> 20U));
  }

  void checkParts() {
    for (std::size_t i = 0; i < columns_.parts()->name()->size(); ++i) {
      checkName(text(columns_.parts()->name(), i), [&] { return partPath(catalog_, i); });
      if (i == 0) continue;
      requireAscending(text(columns_.parts()->name(), i - 1), text(columns_.parts()->name(), i),
                       [&] { return partPath(catalog_, i); });
    }
  }

  void checkInstances() {
    const columns::Instances& instances = *columns_.instances();
    for (std::size_t i = 0; i < instances.name()->size(); ++i) {
      const std::string path = instancePath(catalog_, i);
      checkName(text(instances.name(), i), [&] { return path; });
      if (i > 0) requireAscending(text(instances.name(), i - 1), text(instances.name(), i), [&] { return path; });
      if (instances.nodeLabels()->Get(at(i)) != kNone) checkNodes(i, member(member(path, links::kMesh), links::kNodes));
    }
  }

  void checkNodes(std::size_t instance, const std::string& path) {
    const std::int32_t labels = columns_.instances()->nodeLabels()->Get(at(instance));
    const std::int32_t coordinates = columns_.instances()->coordinates()->Get(at(instance));
    if (!isArrayOfInts(labels)) complain_(member(path, links::kLabels), "labels must be integers in one dimension");
    const ArrayInfo info = catalog_.array(coordinates);
    // Division avoids the overflow of three times a large number.
    const bool isThreefold = info.numbers() % 3 == 0 && info.numbers() / 3 == catalog_.array(labels).numbers();
    if (!base::isFloatingPoint(info.format) || !isThreefold) {
      complain_(member(path, links::kCoordinates), "must be three floating-point numbers for each node label");
    }
    checkProportion(labels, member(path, links::kLabels));
    checkProportion(coordinates, member(path, links::kCoordinates));
  }

  void checkElements() {
    const columns::Elements& elements = *columns_.elements();
    for (std::size_t i = 0; i < elements.labels()->size(); ++i) {
      const std::string path = elementsPath(catalog_, i);
      const std::int32_t labels = elements.labels()->Get(at(i));
      const std::int32_t connectivity = elements.connectivity()->Get(at(i));
      if (!isArrayOfInts(labels)) complain_(member(path, links::kLabels), "labels must be integers in one dimension");
      const std::int64_t count = catalog_.array(labels).numbers();
      const std::int64_t nodes = catalog_.array(connectivity).numbers();
      if (!isArrayOfInts(connectivity) || (count == 0 ? nodes != 0 : nodes % count != 0)) {
        complain_(member(path, links::kConnectivity), "must be the node labels of each element");
      }
      checkProportion(labels, member(path, links::kLabels));
      checkProportion(connectivity, member(path, links::kConnectivity));
      if (i == 0) continue;
      const std::int32_t before = elements.instance()->Get(at(i - 1));
      const std::int32_t instance = elements.instance()->Get(at(i));
      if (before > instance) complain_(path, "comes after a later instance");
      if (before == instance) {
        requireAscending(text(elements.type(), i - 1), text(elements.type(), i), [&] { return path; });
      }
    }
  }

  void checkSets() {
    const columns::Sets& sets = *columns_.sets();
    const auto key = [&](std::size_t i) {
      return std::tuple(sets.ownerKind()->Get(at(i)), sets.owner()->Get(at(i)), sets.kind()->Get(at(i)));
    };
    std::int32_t checked = kNone;
    for (std::size_t i = 0; i < sets.name()->size(); ++i) {
      checkName(text(sets.name(), i), [&] { return setPath(catalog_, i); });
      if (i > 0 && key(i - 1) > key(i)) complain_(setPath(catalog_, i), "comes after sets of a later owner");
      if (i > 0 && key(i - 1) == key(i)) {
        requireAscending(text(sets.name(), i - 1), text(sets.name(), i), [&] { return setPath(catalog_, i); });
      }
      const Places members = Catalog::placesOf(sets.memberEnd(), i);
      for (std::size_t k = members.first; k < members.end; ++k) {
        const std::int32_t labels = sets.memberLabels()->Get(at(k));
        const bool isPlain = isArrayOfInts(labels) && catalog_.array(labels).packing == Packing::contiguous;
        if (labels != checked && !isPlain) requireInts(labels, memberPath(catalog_, i, k));
        checked = labels;
      }
    }
  }

  void checkLocation(std::size_t i) {
    const columns::Locations& locations = *columns_.locations();
    const std::string path = locationPath(catalog_, i);
    spend(path.size());
    if (i > 0) requireAscending(text(locations.id(), i - 1), text(locations.id(), i), [&] { return path; });
    const auto position = static_cast<Position>(locations.position()->Get(at(i)));
    const std::int64_t rows = locations.rows()->Get(at(i));
    checkLabels(path, links::kNodeLabels, locations.nodeLabels()->Get(at(i)), hasNodeLabels(position), rows);
    checkLabels(path, links::kElementLabels, locations.elementLabels()->Get(at(i)), hasElementLabels(position), rows);
    checkLabels(path, links::kIntegrationPoints, locations.integrationPoints()->Get(at(i)),
                hasIntegrationPoints(position), rows);
    if (rows > std::numeric_limits<int>::max()) complain_(path, "has too many rows");
    checkRowOf(i, path, rows);
  }

  void checkLabels(const std::string& location, const char* link, std::int32_t array, bool isNeeded,
                   std::int64_t rows) {
    if (!isNeeded && array != kNone) complain_(member(location, link), "does not belong to its position");
    if (!isNeeded) return;
    if (array == kNone) return complain_(member(location, link), "is missing");
    requireInts(array, member(location, link));
    if (catalog_.array(array).numbers() != rows) complain_(location, "the label data sets differ in length");
  }

  void checkRowOf(std::size_t i, const std::string& location, std::int64_t rows) {
    const std::int32_t rowOf = columns_.locations()->rowOf()->Get(at(i));
    const std::int64_t stored = columns_.locations()->storedRows()->Get(at(i));
    const std::string path = member(location, links::kRowOf);
    if (rowOf == kNone) {
      if (stored != rows) complain_(path, "is missing");
      return;
    }
    requireInts(rowOf, path);
    const std::int64_t count = catalog_.array(rowOf).numbers();
    if (count != rows) complain_(path, fmt::format("holds {} rows, its location has {}", count, rows));
    if (stored > rows) complain_(location, fmt::format("stores {} rows, more than the {} it has", stored, rows));
  }

  void checkStepNames() {
    std::vector<std::pair<std::string_view, std::size_t>> names;
    for (std::size_t i = 0; i < columns_.steps()->name()->size(); ++i) {
      names.emplace_back(text(columns_.steps()->name(), i), i);
      checkName(names.back().first, [&] { return stepPath(catalog_, i); });
    }
    std::sort(names.begin(), names.end());
    for (std::size_t i = 1; i < names.size(); ++i) {
      if (names[i].first == names[i - 1].first) {
        complain_(stepPath(catalog_, names[i].second), "there are two objects of this name");
      }
    }
  }

  void checkStep(std::size_t step) {
    const Places frames = Catalog::placesOf(columns_.steps()->frameEnd(), step);
    if (frames.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
      return complain_(stepPath(catalog_, step), "has too many frames");
    }
    frames_ = static_cast<int>(frames.size());
    fieldOfFrame_.assign(frames.size(), 0);
    blockOfFrame_.assign(frames.size(), 0);
    const Places fields = Catalog::placesOf(columns_.steps()->fieldEnd(), step);
    for (std::size_t i = fields.first; i < fields.end; ++i) {
      checkField(step, i);
      if (i == fields.first) continue;
      requireAscending(text(columns_.fields()->name(), i - 1), text(columns_.fields()->name(), i),
                       [&] { return fieldPath(catalog_, step, i); });
    }
    const Places regions = Catalog::placesOf(columns_.steps()->regionEnd(), step);
    for (std::size_t i = regions.first; i < regions.end; ++i) {
      checkRegion(step, i);
      if (i == regions.first) continue;
      requireAscending(text(columns_.regions()->name(), i - 1), text(columns_.regions()->name(), i),
                       [&] { return regionPath(catalog_, step, i); });
    }
  }

  // Marks the frames of a list. Each must be a frame of the step, occur once and be accepted by `isAllowed`.
  template <class IsAllowed>
  bool markFrames(std::span<const std::int32_t> list, std::vector<std::size_t>& marks, std::size_t mark,
                  const std::string& path, IsAllowed&& isAllowed) {
    spend(list.size());
    for (const std::int32_t frame : list) {
      if (frame < 0 || frame >= frames_) {
        complain_(path, fmt::format("frame {} is out of range 0..{}", frame, frames_ - 1));
        return false;
      }
      const auto place = static_cast<std::size_t>(frame);
      if (!isAllowed(place)) complain_(path, fmt::format("the field does not exist in frame {}", frame));
      if (marks[place] == mark) complain_(path, fmt::format("frame {} occurs twice", frame));
      marks[place] = mark;
    }
    return true;
  }

  void checkField(std::size_t step, std::size_t field) {
    const columns::Fields& fields = *columns_.fields();
    const std::int32_t list = fields.frames()->Get(at(field));
    const std::size_t mark = field + 1;
    const std::string path = fieldPath(catalog_, step, field);
    checkName(text(fields.name(), field), [&] { return path; });
    if (list != kNone && !markFrames(catalog_.list(list), fieldOfFrame_, mark, member(path, links::kFrames),
                                     [](std::size_t) { return true; })) {
      return;
    }
    const auto hasFrame = [&](std::size_t frame) { return list == kNone || fieldOfFrame_[frame] == mark; };
    checkForms(field, path, hasFrame);
    const Places blocks = Catalog::placesOf(fields.blockEnd(), field);
    for (std::size_t i = blocks.first; i < blocks.end; ++i) checkBlock(step, field, i, hasFrame);
  }

  template <class HasFrame>
  void checkForms(std::size_t field, const std::string& path, HasFrame&& hasFrame) {
    const Places changes = Catalog::placesOf(columns_.fields()->changeEnd(), field);
    std::int32_t before = -1;
    for (std::size_t i = changes.first; i < changes.end; ++i) {
      const std::int32_t frame = columns_.fields()->changeFrame()->Get(at(i));
      const bool isThere = frame > before && frame < frames_ && hasFrame(static_cast<std::size_t>(frame));
      if (!isThere)
        return complain_(member(path, links::kForms),
                         fmt::format("frame {} is not one of the field's, or occurs twice", frame));
      before = frame;
    }
  }

  template <class HasFrame>
  void checkBlock(std::size_t step, std::size_t field, std::size_t block, HasFrame&& hasFrame) {
    const columns::Blocks& blocks = *columns_.blocks();
    const std::string path = blockPath(catalog_, step, field, block);
    const std::string data = member(path, links::kData);
    const std::int32_t ownFrames = blocks.frames()->Get(at(block));
    const std::int32_t fieldFrames = columns_.fields()->frames()->Get(at(field));
    if (ownFrames != kNone && ownFrames != fieldFrames &&
        !markFrames(catalog_.list(ownFrames), blockOfFrame_, block + 1, member(path, links::kFrames), hasFrame)) {
      return;
    }
    const std::int32_t list = ownFrames != kNone ? ownFrames : fieldFrames;
    const std::int64_t frames = list == kNone ? frames_ : static_cast<std::int64_t>(catalog_.list(list).size());
    const ArrayInfo array = catalog_.array(blocks.data()->Get(at(block)));
    const std::int64_t rows = blocks.rows()->Get(at(block));
    const std::int64_t width = blocks.width()->Get(at(block));
    const auto location = static_cast<std::size_t>(blocks.location()->Get(at(block)));
    const std::int64_t stored = columns_.locations()->storedRows()->Get(at(location));
    if (!base::isFloatingPoint(array.format)) complain_(data, "must hold floats or doubles");
    if (array.slabs != frames) complain_(data, fmt::format("holds {} frames, the block has {}", array.slabs, frames));
    if (rows != stored) {
      const bool isIndexed = columns_.locations()->rowOf()->Get(at(location)) != kNone;
      complain_(data, fmt::format("holds {} rows, its location {} {}", rows, isIndexed ? "stores" : "has", stored));
    }
    if (rows != 0 && width > std::numeric_limits<int>::max() / rows) {
      complain_(data, "a frame is too large");
    } else if (array.slabNumbers != rows * width) {
      complain_(data, "its numbers do not fill its rows");
    }
    checkProportion(blocks.data()->Get(at(block)), data);
    checkWidth(field, block, list, path);
  }

  // Types and labels that the block does not define come from the field's form in the block's frames.
  void checkWidth(std::size_t field, std::size_t block, std::int32_t list, const std::string& path) {
    const columns::Blocks& blocks = *columns_.blocks();
    const std::int64_t width = blocks.width()->Get(at(block));
    if (width > std::numeric_limits<int>::max()) return complain_(member(path, links::kData), "a frame is too large");
    const bool hasType = blocks.hasType()->Get(at(block)) != 0;
    const std::int32_t ownLabels = blocks.componentLabels()->Get(at(block));
    const bool hasLabels = ownLabels != kNone && !catalog_.list(ownLabels).empty();
    const std::int32_t form = formOfBlock(catalog_, field, list);
    if ((!hasType || !hasLabels) && !haveOneForm(field, list, form, hasType, hasLabels)) {
      return complain_(path, "the field has another type in some of its frames");
    }
    const std::int32_t type =
        hasType ? blocks.type()->Get(at(block)) : columns_.forms()->type()->Get(at(static_cast<std::size_t>(form)));
    const std::size_t labels =
        catalog_
            .list(hasLabels ? ownLabels : columns_.forms()->componentLabels()->Get(at(static_cast<std::size_t>(form))))
            .size();
    const std::string data = member(path, links::kData);
    if (labels != 0 && static_cast<std::int64_t>(labels) != width) {
      complain_(data, fmt::format("holds {} components, there are {} component labels", width, labels));
    } else if (width < 1 || (labels == 0 && isTensorType(type) &&
                             width > static_cast<std::int64_t>(defaultTensorLabels(type).size()))) {
      complain_(data, fmt::format("{} components do not fit type {}", width, type));
    }
  }

  bool haveOneForm(std::size_t field, std::int32_t list, std::int32_t first, bool hasType, bool hasLabels) {
    const Places changes = Catalog::placesOf(columns_.fields()->changeEnd(), field);
    if (changes.size() == 0) return true;
    const columns::Forms& forms = *columns_.forms();
    const auto isLike = [&](std::int32_t form) {
      return form == first ||
             ((hasType || forms.type()->Get(at(static_cast<std::size_t>(form))) ==
                              forms.type()->Get(at(static_cast<std::size_t>(first)))) &&
              (hasLabels || catalog_.texts(forms.componentLabels()->Get(at(static_cast<std::size_t>(form)))) ==
                                catalog_.texts(forms.componentLabels()->Get(at(static_cast<std::size_t>(first))))));
    };
    spend(list == kNone ? static_cast<std::size_t>(frames_) : catalog_.list(list).size());
    if (list == kNone) {
      for (std::int32_t frame = 0; frame < frames_; ++frame) {
        if (!isLike(formInFrame(catalog_, field, frame))) return false;
      }
      return true;
    }
    const std::span<const std::int32_t> frames = catalog_.list(list);
    return std::all_of(frames.begin(), frames.end(),
                       [&](std::int32_t frame) { return isLike(formInFrame(catalog_, field, frame)); });
  }

  void checkRegion(std::size_t step, std::size_t region) {
    const columns::HistoryOutputs& outputs = *columns_.outputs();
    const Places places = Catalog::placesOf(columns_.regions()->outputEnd(), region);
    const auto path = [&] { return regionPath(catalog_, step, region); };
    checkName(text(columns_.regions()->set(), region), path);
    checkName(text(columns_.regions()->name(), region), path);
    for (std::size_t i = places.first; i < places.end; ++i) {
      checkName(text(outputs.name(), i), [&] { return outputPath(catalog_, step, region, i); });
      if (i > places.first) {
        requireAscending(text(outputs.name(), i - 1), text(outputs.name(), i),
                         [&] { return outputPath(catalog_, step, region, i); });
      }
      if (!base::isFloatingPoint(catalog_.array(outputs.data()->Get(at(i))).format)) {
        complain_(outputPath(catalog_, step, region, i), "must hold floating-point numbers");
      }
      // Samples without numbers take no space in the file but as much work as others.
      if (outputs.width()->Get(at(i)) == 0 &&
          outputs.samples()->Get(at(i)) > std::max(kEmptySamples, catalog_.arraysEnd() / 4)) {
        complain_(outputPath(catalog_, step, region, i),
                  fmt::format("has {} samples without numbers, more than a file of its size can need",
                              outputs.samples()->Get(at(i))));
      }
      if (catalog_.array(outputs.data()->Get(at(i))).packing != Packing::contiguous) {
        checkProportion(outputs.data()->Get(at(i)), outputPath(catalog_, step, region, i));
      }
    }
  }

  // Allowed in a file of any size.
  static constexpr std::int64_t kEmptySamples = 1024;

  const Catalog& catalog_;
  const columns::Catalog& columns_;
  const Complain& complain_;
  std::size_t work_ = 0;
  int frames_ = 0;                         // of the current step
  std::vector<std::size_t> fieldOfFrame_;  // 1 + the last field that has listed the frame
  std::vector<std::size_t> blockOfFrame_;  // likewise of blocks
};

}  // namespace

void checkContent(const Catalog& catalog, const Complain& complain) { ContentCheck(catalog, complain).run(); }

}  // namespace odbstore
