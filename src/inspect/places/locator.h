// Where and when the extremes are that records tell of.
//
//     const auto database = inspect::openDatabase("job.odb");
//     const inspect::RecordList records(database, switches);
//     inspect::Locator locator(database, switches);
//     for (const inspect::Record& record : records.find("Step_1__Frame_4__RIM__S__mises__max")) {
//       const inspect::LocatedExtreme found = locator.locate(record);
//       if (found.hasValue()) use(found.value, found.places.front().place.node, found.places.front().coordinates);
//     }
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inspect/places/ranking.h"
#include "inspect/records.h"

namespace inspect {

// A place, and where it is: a node where it lies, an element or integration point at the mean of the element's nodes.
// Without a mesh there are no coordinates.
struct LocatedPlace {
  RankedPlace place;
  std::optional<std::array<double, 3>> coordinates;
};

struct LocatedExtreme {
  double value = 0.0;                // the number that the record has, before it is rounded
  std::vector<LocatedPlace> places;  // the first with that number, then the next ones in its order
  std::uint64_t equal = 0;           // places with that number, the first one included
  std::uint64_t rows = 0;            // over which the extreme is

  // Of engineering extremes.
  int aim = 0;                           // k: position k - 1 of the ordered rows is aimed at, 0 where k is 0
  std::uint64_t before = 0;              // rows that stand before the number in the order of the selection
  bool isAscending = false;              // that order
  std::vector<LocatedPlace> passedOver;  // the first of the places before it, the most extreme one first

  // Of histories: the sample, and its abscissa (as a rule the time).
  std::int64_t sample = -1;
  double abscissa = 0.0;

  // False where nothing was found: no row has a number, or the record has one of another field (docs/records.md).
  bool hasValue() const { return !places.empty() || sample >= 0; }
};

// One thread at a time. Keeps the field that was asked for last, so records of one field and frame cost least when they
// come one after the other.
class Locator {
 public:
  // The switches decide over engineering extremes alone: their percentage, and which of the two are selected.
  Locator(std::shared_ptr<const odbstore::Reader> database, const ExtractionSwitches& switches);
  ~Locator();
  Locator(const Locator&) = delete;
  Locator& operator=(const Locator&) = delete;

  // The place of an extreme, of a field or a history, and the `next` places after it. The record is of this database
  // and has an extreme. Throws odbstore::StoreError.
  LocatedExtreme locate(const Record& record, std::size_t next = 10);

  // The same in another frame of the step, in which the field exists.
  LocatedExtreme locateIn(const Record& record, int frame, std::size_t next = 10);
  // The frames of the record's step that have its field, ascending.
  std::vector<int> framesOf(const Record& record) const;

 private:
  class Model;
  std::unique_ptr<Model> model_;
};

}  // namespace inspect
