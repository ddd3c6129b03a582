#include "report/field_rows.h"

#include <algorithm>
#include <limits>

namespace report {

namespace {

using odbstore::StoredBlock;
using odbstore::StoredLocation;

bool isOnElements(const StoredLocation& location) { return !odbstore::hasNodeLabels(location.position()); }

// Those of the kind of the page's field which have rows in the frame.
std::vector<const StoredBlock*> blocksIn(const odbstore::StoredField& field, int frame) {
  std::vector<const StoredBlock*> blocks;
  for (const StoredBlock& block : field.blocks)
    if (block.existsIn(frame) && block.storedRows() > 0 && block.width() > 0) blocks.push_back(&block);
  return blocks;
}

// The stored rows in the page's columns, [stored rows, widthOf(kind)].
std::vector<float> rowsOf(FieldKind kind, const StoredBlock& block, int frame) {
  const auto count = static_cast<std::size_t>(block.storedRows());
  const auto width = static_cast<std::size_t>(block.width());
  std::vector<float> stored(count * width);
  block.readStored(frame, stored.data());
  const std::vector<int> columns = columnsOf(kind, block);
  std::vector<float> rows(count * columns.size(), 0.0F);
  for (std::size_t c = 0; c < columns.size(); ++c) {
    if (columns[c] < 0) continue;
    for (std::size_t i = 0; i < count; ++i)
      rows[i * columns.size() + c] = stored[i * width + static_cast<std::size_t>(columns[c])];
  }
  return rows;
}

// Places of the largest and the smallest of some numbers, the first of equal ones; -1 where all are NaN.
struct Extent {
  std::ptrdiff_t max = -1;
  std::ptrdiff_t min = -1;
};

template <class Number>
Extent extentOf(std::span<const Number> numbers) {
  Extent extent;
  Number max = -std::numeric_limits<Number>::infinity();
  Number min = std::numeric_limits<Number>::infinity();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const auto place = static_cast<std::ptrdiff_t>(i);
    if (numbers[i] > max || (extent.max < 0 && numbers[i] == max)) {
      max = numbers[i];
      extent.max = place;
    }
    if (numbers[i] < min || (extent.min < 0 && numbers[i] == min)) {
      min = numbers[i];
      extent.min = place;
    }
  }
  return extent;
}

// Keeps `place` where it goes beyond what has been met.
void keep(FieldFrame& made, const std::string& quantity, const Place& max, const Place& min) {
  const auto [entry, isNew] = made.extremes.try_emplace(quantity, FieldFrame::Extremes{max, min});
  if (isNew) return;
  if (max.value > entry->second.max.value) entry->second.max = max;
  if (min.value < entry->second.min.value) entry->second.min = min;
}

}  // namespace

std::optional<PageField> pageField(const odbstore::StoredField& field, int frame) {
  const std::vector<const StoredBlock*> blocks = blocksIn(field, frame);
  if (blocks.empty()) return std::nullopt;
  const std::shared_ptr<const odbstore::FieldInfo> info = field.infoIn(frame);
  PageField page;
  page.name = field.name;
  page.description = info->description;
  page.kind = kindOf(blocks.front()->type());
  page.isOfElements = isOnElements(*blocks.front()->location());
  page.hasHalvedShear = info->engineeringShear;
  page.quantities = quantitiesOf(page.kind, info->validInvariants);
  return page;
}

std::vector<FieldRows::Target> FieldRows::makeTargets(const StoredLocation& location, bool isOfElements) const {
  const std::string instance = location.info().instance;
  const inspect::MeshPart* part = mesh_.partOf(instance);
  if (!part) return {};
  const std::vector<int>& labels = isOfElements ? location.elementLabels() : location.nodeLabels();
  const base::LabelIndex& index = isOfElements ? part->elements : part->nodes;
  const std::size_t first = isOfElements ? part->firstCell : part->firstPoint;
  const std::vector<std::int32_t>& placeOf = isOfElements ? surface_.elementOf : surface_.vertexOf;
  const std::vector<int>& rowOf = location.rowOf();
  std::vector<Target> targets;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const int at = index.placeOf(labels[i]);
    if (at < 0) continue;
    const std::int32_t place = placeOf[first + static_cast<std::size_t>(at)];
    if (place >= 0) targets.push_back({rowOf.empty() ? static_cast<std::int32_t>(i) : rowOf[i], place, 1.0F});
  }
  return targets;
}

const std::vector<FieldRows::Target>& FieldRows::targetsOf(const StoredLocation& location, bool isOfElements) {
  const auto [entry, isNew] = targets_.try_emplace(&location);
  std::vector<Target>& targets = entry->second;
  if (!isNew) return targets;
  targets = makeTargets(location, isOfElements);
  std::sort(targets.begin(), targets.end(),
            [](const Target& a, const Target& b) { return a.place != b.place ? a.place < b.place : a.row < b.row; });
  std::size_t kept = 0;
  for (const Target& target : targets) {
    const bool isAgain = kept > 0 && targets[kept - 1].place == target.place && targets[kept - 1].row == target.row;
    if (isAgain) {
      targets[kept - 1].weight += 1.0F;
    } else {
      targets[kept++] = target;
    }
  }
  targets.resize(kept);
  targets.shrink_to_fit();
  return targets;
}

Place FieldRows::placeOf(const StoredLocation& location, std::size_t storedRow) const {
  const std::vector<int>& rowOf = location.rowOf();
  const auto row = rowOf.empty()
                       ? storedRow
                       : static_cast<std::size_t>(std::find(rowOf.begin(), rowOf.end(), static_cast<int>(storedRow)) -
                                                  rowOf.begin());
  const auto labelIn = [row](const std::vector<int>& labels) { return row < labels.size() ? labels[row] : -1; };
  Place place;
  place.instance = location.info().instance;
  place.node = labelIn(location.nodeLabels());
  place.element = labelIn(location.elementLabels());
  place.integrationPoint = labelIn(location.integrationPoints());
  if (place.node >= 0) place.point = mesh_.pointOf(place.instance, place.node);
  if (place.element >= 0) place.cell = mesh_.cellOf(place.instance, place.element);
  return place;
}

void FieldRows::takeExtremes(const PageField& page, const StoredBlock& block, int frame, std::span<const float> rows,
                             FieldFrame& made) const {
  const StoredLocation& location = *block.location();
  const auto take = [&](const std::string& quantity, const auto& numbers) {
    const Extent extent = extentOf(numbers);
    if (extent.max < 0 || extent.min < 0) return;
    Place max = placeOf(location, static_cast<std::size_t>(extent.max));
    Place min = placeOf(location, static_cast<std::size_t>(extent.min));
    max.value = static_cast<double>(numbers[static_cast<std::size_t>(extent.max)]);
    min.value = static_cast<double>(numbers[static_cast<std::size_t>(extent.min)]);
    keep(made, quantity, max, min);
  };
  if (page.kind == FieldKind::scalar && block.isDouble() && block.width() == 1) {
    std::vector<double> numbers(static_cast<std::size_t>(block.storedRows()));
    block.readStored(frame, numbers.data());
    return take("", std::span<const double>(numbers));
  }
  derive(page.kind, page.hasHalvedShear, rows, page.quantities, take);
}

FieldFrame FieldRows::read(const PageField& page, const odbstore::StoredField& field, int frame) {
  FieldFrame made;
  const std::size_t width = widthOf(page.kind);
  const std::size_t places = page.isOfElements ? surface_.cells.size() : surface_.points.size();
  std::vector<double> sums(places * width);
  std::vector<float> weights(places);
  for (const StoredBlock* block : blocksIn(field, frame)) {
    if (kindOf(block->type()) != page.kind) continue;
    const std::vector<float> rows = rowsOf(page.kind, *block, frame);
    takeExtremes(page, *block, frame, rows, made);
    if (isOnElements(*block->location()) != page.isOfElements) continue;
    for (const Target& target : targetsOf(*block->location(), page.isOfElements)) {
      const auto place = static_cast<std::size_t>(target.place);
      weights[place] += target.weight;
      for (std::size_t c = 0; c < width; ++c)
        sums[place * width + c] += static_cast<double>(target.weight) *
                                   static_cast<double>(rows[static_cast<std::size_t>(target.row) * width + c]);
    }
  }
  made.rows.resize(sums.size());
  for (std::size_t i = 0; i < sums.size(); ++i)
    made.rows[i] = static_cast<float>(sums[i] / static_cast<double>(weights[i / width]));
  return made;
}

}  // namespace report
