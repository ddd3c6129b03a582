// The records that an extraction would write, from what the database says of itself: no row is read.
//
//     const auto database = inspect::openDatabase("job.odb");
//     const inspect::RecordList records(database, switches);
//     records.forEach([&](const inspect::Record& record) { return use(records.nameOf(record), record); });
//     for (const inspect::Record& record : records.find("Step_1__Frame_4__RIM__S__mises__max")) use(record);
//
// What decides over names and order are steps, frames, fields, blocks, labels of components, histories and sets, and
// over which sets have records the labels of sets and locations, which are read when sets are asked for. Two things the
// numbers alone decide: over a set without a single number above -inf (all NaN, say) nothing is written but what
// invariants have values, and an invariant whose values are all NaN is not written. Such records are in the list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/model_sets.h"
#include "inspect/record_endings.h"
#include "odbstore/reader.h"
#include "result/extraction_switches.h"

namespace inspect {

class RecordModel;

enum class RecordKind { mass, history, field };

// A record taken apart. Texts and `set` live as long as the list; all are names of the database, as they are there.
struct Record {
  static constexpr int kNoFrame = -1;

  RecordKind kind = RecordKind::field;
  std::size_t step = 0;  // from 0, in the order of the database
  std::string_view stepName;

  // "mises", "11", "mag", "1", "tresca", ...; empty for scalars and histories. Of the mass "Mass", "MassCenter",
  // "InertiaCenter", "InertiaOrigin".
  std::string_view quantity;
  // None for the mass, and for a history as a whole.
  Extreme extreme = Extreme::none;

  // Of fields.
  int frame = kNoFrame;  // from 0, in the step
  int increment = 0;
  double frameValue = 0;  // time, frequency, load factor, ...
  std::string_view field;
  const ModelSet* set = nullptr;  // null for the whole model
  std::string_view ending;        // of the name: quantity and extreme as they stand there

  // Of histories.
  std::string_view region;
  std::string_view output;
  std::string_view label;  // of the node, element, point or set that the history is of
};

// Where an extraction ends with an error, before it has written all.
struct RunEnd {
  std::size_t step = 0;
  int frame = 0;
  std::string_view field;
  const ModelSet* set = nullptr;  // whose rows in double precision have components that are not read
};

class RecordList {
 public:
  // `-elset` changes nothing in the records, and is not asked for.
  RecordList(std::shared_ptr<const odbstore::Reader> database, const ExtractionSwitches& switches);
  ~RecordList();
  RecordList(const RecordList&) = delete;
  RecordList& operator=(const RecordList&) = delete;

  const odbstore::Reader& database() const;
  // All sets of the model, those without records too.
  const std::vector<ModelSet>& sets() const;
  const std::vector<std::shared_ptr<const odbstore::StoredStep>>& steps() const;

  enum class Frames {
    all,
    different  // but for those with the same fields as the frame before, unless another frame has their increment
  };

  // Hands out the records in the order of the extraction until `take` says false. Returns where the extraction would
  // end with an error; nothing where it does not, or `take` has said false before. Throws odbstore::StoreError where
  // labels cannot be read, as all that follows.
  std::optional<RunEnd> forEach(const std::function<bool(const Record&)>& take, Frames frames = Frames::all) const;

  struct Count {
    std::uint64_t mass = 0;
    std::uint64_t histories = 0;
    std::uint64_t wholeModel = 0;
    std::uint64_t sets = 0;
    std::optional<RunEnd> end;

    std::uint64_t all() const { return mass + histories + wholeModel + sets; }
  };
  // How many there are, in a time that does not depend on that: frames that are alike are counted once.
  Count count() const;

  // The name of a record of this list, as params.txt has it.
  std::string nameOf(const Record& record) const;

  // All records of a name, in the order of the extraction; more than one where a name occurs twice. Takes a look-up,
  // not a walk, whatever the number of records. Records past a run's end (forEach) are found all the same.
  std::vector<Record> find(std::string_view name) const;

 private:
  std::unique_ptr<RecordModel> model_;
};

}  // namespace inspect
