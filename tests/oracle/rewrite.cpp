// Writes a database once more with the writer of today's layout, all that is in it:
//
//   rewrite FROM TO [index] [compress] [checksum]
//
// With `index` rows that are equal in all frames of their block are handed to the writer once.

#include <algorithm>
#include <exception>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "odbstore/reader.h"
#include "odbwriter/block_series.h"
#include "odbwriter/database_writer.h"
#include "odbwriter/row_index.h"

namespace {

using odbstore::DatabaseWriter;
using odbstore::Owner;
using odbstore::OwnerKind;
using odbstore::SetKind;
using odbstore::StoredBlock;

// The rows of a block in all its frames.
template <class Number>
struct Rows {
  std::vector<int> frames;
  std::vector<std::vector<Number>> numbers;  // [rows, width] of each frame

  explicit Rows(const StoredBlock& block) : frames(block.frames()) {
    for (const int frame : frames) {
      numbers.emplace_back(static_cast<std::size_t>(block.rows() * block.width()));
      block.read(frame, numbers.back().data());
    }
  }

  // For each row the number of the row that it equals, from 0 in the order of their first use.
  odbstore::RowIndex indexOf(std::size_t count, std::size_t width) const {
    std::map<std::string, int> known;
    std::vector<int> sources;
    for (std::size_t i = 0; i < count; ++i) {
      std::string row;
      for (const std::vector<Number>& frame : numbers) {
        row.append(reinterpret_cast<const char*>(frame.data() + i * width), width * sizeof(Number));
      }
      sources.push_back(known.emplace(row, static_cast<int>(i)).first->second);
    }
    return odbstore::makeRowIndex(sources, static_cast<std::int64_t>(count));
  }
};

class Copy {
 public:
  Copy(const odbstore::Reader& from, DatabaseWriter& to, bool isIndexed)
      : from_(from), to_(to), isIndexed_(isIndexed) {}

  void run() {
    copyModel();
    for (const std::string& name : from_.steps()) copyStep(*from_.step(name));
    to_.finish();
  }

 private:
  void copySets(const Owner& owner) {
    for (const SetKind kind : {SetKind::element, SetKind::node}) {
      for (const std::string& set : from_.sets(owner, kind))
        to_.addSet(owner, kind, set, from_.setMembers(owner, kind, set));
    }
  }

  void copyModel() {
    to_.setName(from_.name());
    for (const std::string& part : from_.parts()) {
      to_.addPart(part);
      copySets({OwnerKind::part, part});
    }
    for (const odbstore::InstanceInfo& instance : from_.instances()) {
      to_.addInstance(instance.name, instance.part);
      copySets({OwnerKind::instance, instance.name});
    }
    copySets({});
  }

  void copyStep(const odbstore::StoredStep& step) {
    const DatabaseWriter::Step id = to_.addStep(step.name(), step.info());
    for (const odbstore::FrameInfo& frame : step.frames()) to_.addFrame(id, frame);
    copyHistories(step, id);
    for (const odbstore::StoredField& field : step.fields()) copyField(field, id);
  }

  void copyHistories(const odbstore::StoredStep& step, DatabaseWriter::Step id) {
    std::vector<std::pair<DatabaseWriter::History, std::vector<float>>> histories;
    for (const std::string& name : step.historyRegions()) {
      const odbstore::StoredHistoryRegion region = step.historyRegion(name);
      const DatabaseWriter::Region to = to_.addHistoryRegion(id, name, region.info);
      for (const std::string& output : region.outputs) {
        odbstore::HistorySamples samples = step.historySamples(name, output);
        histories.emplace_back(to_.addHistory(to, output, samples.samples, samples.width), std::move(samples.numbers));
      }
    }
    to_.layOut();
    for (const auto& [history, samples] : histories) to_.writeSamples(history, samples);
  }

  void copyField(const odbstore::StoredField& field, DatabaseWriter::Step step) {
    const DatabaseWriter::Field id = to_.addField(step, field.name, field.info);
    bool isChanging = false;
    for (const int frame : field.frames()) {
      to_.addFieldFrame(id, frame);
      to_.describeField(id, frame, *field.infoIn(frame));
      isChanging = isChanging || !(*field.infoIn(frame) == field.info);
    }
    for (const StoredBlock& block : field.blocks) {
      if (block.isDouble()) {
        copyBlock<double>(block, field.info, isChanging, id);
      } else {
        copyBlock<float>(block, field.info, isChanging, id);
      }
    }
  }

  template <class Number>
  void copyBlock(const StoredBlock& block, const odbstore::FieldInfo& info, bool isChanging,
                 DatabaseWriter::Field field) {
    const Rows<Number> rows(block);
    const auto width = static_cast<std::size_t>(block.width());
    const odbstore::StoredLocation& place = *block.location();
    odbstore::RowIndex index;
    if (isIndexed_) index = rows.indexOf(static_cast<std::size_t>(block.rows()), width);
    const DatabaseWriter::Location location = to_.addLocation(
        place.info(), {place.nodeLabels(), place.elementLabels(), place.integrationPoints()}, index.rowOf);
    const odbstore::BlockKey key{location.index, block.type(), block.componentLabels(), block.isDouble(),
                                 block.width()};
    std::vector<int> frames = rows.frames;
    std::sort(frames.begin(), frames.end());
    const DatabaseWriter::Block to = to_.addBlock(field, location, odbstore::formOf(key, info, isChanging, frames));
    for (std::size_t i = 0; i < rows.frames.size(); ++i) {
      std::vector<Number> stored;
      for (const int source : index.source) {
        const Number* const row = rows.numbers[i].data() + static_cast<std::size_t>(source) * width;
        stored.insert(stored.end(), row, row + width);
      }
      to_.writeRows(to, rows.frames[i], std::span<const Number>(isIndexed_ ? stored : rows.numbers[i]));
    }
  }

  const odbstore::Reader& from_;
  DatabaseWriter& to_;
  bool isIndexed_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "rewrite FROM TO [index] [compress] [checksum]\n";
    return 2;
  }
  const std::set<std::string_view> wishes(argv + 3, argv + argc);
  try {
    const odbstore::Reader from(argv[1]);
    DatabaseWriter to(argv[2], {wishes.contains("compress"), wishes.contains("checksum")});
    Copy(from, to, wishes.contains("index")).run();
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return 0;
}
