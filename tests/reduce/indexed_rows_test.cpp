// Rows that are stored once and reached through an index, against the same rows stored one by one: all records, and all
// that stays in the process from one database to the next.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <iostream>
#include <numeric>
#include <sstream>

#include "odbaccess/odb_api.h"
#include "odbstore/reader.h"
#include "odbwriter/database_writer.h"
#include "odbwriter/row_index.h"
#include "reduce/field_value_access.h"
#include "reduce/reduction_results.h"
#include "result/extraction_switches.h"
#include "support/drawn_numbers.h"
#include "support/temporary_directory.h"
#include "traversal/traverse_steps.h"

namespace {

using odbstore::DatabaseWriter;
using odbstore::OwnerKind;
using odbstore::Position;
using odbstore::SetKind;

constexpr int kFrames = 3;
constexpr int kLabels = 60;
const std::vector<std::string> kInstances = {"I-1", "I-2"};

struct Block {
  odbstore::LocationInfo place;
  odbstore::LocationLabels labels;
  odbstore::RowIndex index;
  DatabaseWriter::BlockForm form;
  std::vector<std::vector<double>> rows;  // stored ones, [stored rows, width], of each of its frames
};

struct Field {
  std::string name;
  odbstore::FieldInfo info;
  std::vector<Block> blocks;
};

struct Set {
  odbstore::Owner owner;
  SetKind kind;
  std::string name;
  std::vector<odbstore::SetMembers> members;
};

struct Model {
  std::vector<Set> sets;
  std::vector<Field> fields;
};

// Draws models in which rows repeat.
class Drawing : private DrawnNumbers {
 public:
  Drawing() : DrawnNumbers(20261122) {}
  using DrawnNumbers::upTo;

  Model model() {
    Model model;
    drawSets(model);
    for (const char* const name : {"NT", "S", "U"}) model.fields.push_back(field(name));
    return model;
  }

  ExtractionSwitches switches() {
    ExtractionSwitches drawn;
    drawn.field = drawn.allFieldOutputs = true;
    drawn.fieldSets = upTo(3) > 0;
    drawn.fieldComponents = upTo(3) > 0;
    drawn.engineeringMax = upTo(1) == 0;
    drawn.engineeringMin = upTo(1) == 0;
    drawn.tensorInvariants = upTo(1) == 0;
    constexpr double kPercentages[] = {0, 1, 10, 33, 50, 99, 100};
    drawn.percentage = kPercentages[upTo(6)];
    return drawn;
  }

 private:
  std::vector<int> labels(int count, int most) {
    std::vector<int> drawn(static_cast<std::size_t>(count));
    for (int& label : drawn) label = 1 + upTo(most - 1);
    return drawn;
  }

  // Those of a set: some of them, none, or all that there are.
  std::vector<int> setLabels(int count) {
    if (upTo(3) > 0) return labels(upTo(count), kLabels);
    std::vector<int> all(kLabels);
    std::iota(all.begin(), all.end(), 1);
    return all;
  }

  void drawSets(Model& model) {
    for (const SetKind kind : {SetKind::element, SetKind::node}) {
      model.sets.push_back({{OwnerKind::part, "P"}, kind, "OF PART", {{"", setLabels(40)}}});
      model.sets.push_back({{OwnerKind::instance, "I-1"}, kind, "OF INSTANCE", {{"", setLabels(5)}}});
      std::vector<odbstore::SetMembers> members;
      for (const std::string& instance : kInstances) {
        if (upTo(3) > 0) members.push_back({instance, setLabels(20)});
      }
      model.sets.push_back({{}, kind, "OF ASSEMBLY", members});
    }
  }

  Field field(const std::string& name) {
    Field field;
    field.name = name;
    drawKinds();
    constexpr int kTensors[] = {5, 6, 7, 8, 9};
    const int type = name == "S" ? kTensors[upTo(4)] : name == "U" ? 3 : 2;
    field.info = {"Stress, spatial displacement", type, {}, {1, 2, 3, 4, 5, 6, 7, 9, 10, 11}, upTo(3) == 0};
    if (name == "S") field.info.componentLabels = odbstore::defaultTensorLabels(type);
    if (name == "U") field.info.componentLabels = {"U1", "U2", "U3"};
    if (name == "S" && upTo(2) > 0) {
      for (std::string& label : field.info.componentLabels) label.insert(0, "S");
    }
    const int blocks = upTo(3);
    for (int i = 0; i < blocks; ++i) field.blocks.push_back(block(field.info));
    return field;
  }

  Block block(const odbstore::FieldInfo& info) {
    Block block;
    constexpr Position kPositions[] = {Position::nodal, Position::integrationPoint, Position::elementNodal,
                                       Position::centroid};
    block.place = {kInstances[static_cast<std::size_t>(upTo(1))], kPositions[upTo(3)], "", 0, ""};
    constexpr int kSizes[] = {0, 1, 2, 3, 7, 41, 42, 60, 100, 300, 1000, 4095, 4096, 4097, 9000};
    const int rows = kSizes[upTo(upTo(9) == 0 ? 14 : 10)];
    if (odbstore::hasNodeLabels(block.place.position)) block.labels.nodes = labels(rows, kLabels);
    if (odbstore::hasElementLabels(block.place.position)) block.labels.elements = labels(rows, kLabels);
    if (odbstore::hasIntegrationPoints(block.place.position)) block.labels.integrationPoints = labels(rows, 8);
    const int distinct = 1 + upTo(rows);
    std::vector<int> sources = labels(rows, distinct);
    for (int& source : sources) --source;
    block.index = odbstore::makeRowIndex(sources, distinct);
    block.form.width = info.componentLabels.empty() ? 1 + upTo(1) : static_cast<int>(info.componentLabels.size());
    block.form.isDouble = info.type == 2 && upTo(2) == 0;
    block.form.frames.emplace();
    for (int frame = 0; frame < kFrames; ++frame) {
      if (upTo(4) == 0) continue;
      block.form.frames->push_back(frame);
      std::vector<double> numbers(static_cast<std::size_t>(block.index.storedRows() * block.form.width));
      for (double& x : numbers) x = number();
      block.rows.push_back(std::move(numbers));
    }
    return block;
  }
};

template <class Number>
void writeBlock(DatabaseWriter& writer, DatabaseWriter::Block id, const Block& block, bool isIndexed) {
  const auto width = static_cast<std::size_t>(block.form.width);
  for (std::size_t i = 0; i < block.rows.size(); ++i) {
    const std::vector<Number> stored(block.rows[i].begin(), block.rows[i].end());
    std::vector<Number> expanded;
    for (const int row : block.index.rowOf) {
      const auto from = stored.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(row) * width);
      expanded.insert(expanded.end(), from, from + static_cast<std::ptrdiff_t>(width));
    }
    writer.writeRows(id, (*block.form.frames)[i], std::span<const Number>(isIndexed ? stored : expanded));
  }
}

void write(const std::string& path, const Model& model, bool isIndexed) {
  DatabaseWriter writer(path);
  writer.setName("model");
  writer.addPart("P");
  for (const std::string& instance : kInstances) writer.addInstance(instance, "P");
  for (const Set& set : model.sets) writer.addSet(set.owner, set.kind, set.name, set.members);
  const auto step = writer.addStep("Step-1", {});
  for (int frame = 0; frame < kFrames; ++frame) writer.addFrame(step, {frame, 0.0, ""});
  for (const Field& field : model.fields) {
    const auto id = writer.addField(step, field.name, field.info);
    for (const Block& block : field.blocks) {
      const auto location =
          writer.addLocation(block.place, block.labels, isIndexed ? block.index.rowOf : std::vector<int>());
      const auto to = writer.addBlock(id, location, block.form);
      if (block.form.isDouble) {
        writeBlock<double>(writer, to, block, isIndexed);
      } else {
        writeBlock<float>(writer, to, block, isIndexed);
      }
    }
  }
  writer.finish();
}

// How many blocks of a database are reached through an index.
int indexedBlocks(const std::string& path) {
  int count = 0;
  const auto step = odbstore::Reader(path).step("Step-1");
  for (const odbstore::StoredField& field : step->fields()) {
    for (const odbstore::StoredBlock& block : field.blocks) count += block.location()->isIndexed() ? 1 : 0;
  }
  return count;
}

// What stays in a process from one extraction to the next.
struct ProcessState {
  ReductionResults results = {};
  std::array<double, kVectorComponents> vector{};
  std::array<double, kTensorComponents.size()> tensor{};

  void putBack() const {
    reductionResults() = results;
    componentSlots().vector = vector;
    connectTensorSlots(componentSlots());
    for (std::size_t c = 0; c < tensor.size(); ++c) *componentSlots().tensor[c] = tensor[c];
  }
  void keep() {
    results = reductionResults();
    vector = componentSlots().vector;
    for (std::size_t c = 0; c < tensor.size(); ++c) tensor[c] = *componentSlots().tensor[c];
  }

  // All numbers as bits; one NaN is as good as another.
  std::vector<std::uint64_t> bits() const {
    std::vector<double> numbers(vector.begin(), vector.end());
    numbers.insert(numbers.end(), tensor.begin(), tensor.end());
    const auto add = [&](const Extremes& extremes) {
      numbers.insert(numbers.end(), {extremes.max, extremes.min, extremes.engineeringMax, extremes.engineeringMin});
    };
    add(results.block);
    for (const Extremes& extremes : results.vector) add(extremes);
    for (const Extremes& extremes : results.tensor) add(extremes);
    std::vector<std::uint64_t> bits;
    for (const double x : numbers) bits.push_back(x == x ? std::bit_cast<std::uint64_t>(x) : ~std::uint64_t{0});
    return bits;
  }
};

// The records of a database, and how the extraction ended.
std::string extracted(const std::string& path, ProcessState& state) {
  state.putBack();
  std::ostringstream records;
  std::ostringstream console;
  std::streambuf* const terminal = std::cout.rdbuf(console.rdbuf());
  try {
    traverseSteps(openOdb(path.c_str(), true, false), nullptr, records);
  } catch (const odb_Exception& exception) {
    records << "exception " << exception.UserReport().cStr();
  }
  std::cout.rdbuf(terminal);
  state.keep();
  return records.str();
}

TEST(IndexedRowsTest, GiveTheRecordsAndLeaveTheProcessOfRowsOneByOne) {
  const TemporaryDirectory directory;
  Drawing drawing;
  ProcessState indexedState;
  ProcessState expandedState;
  int indexed = 0;
  std::size_t records = 0;
  constexpr int kRounds = 150;
  for (int round = 0; round < kRounds; ++round) {
    const std::string tag = std::to_string(round) + ".odb";
    const std::string asIndexed = directory.file("indexed" + tag);
    const std::string oneByOne = directory.file("expanded" + tag);
    const Model model = drawing.model();
    write(asIndexed, model, true);
    write(oneByOne, model, false);
    indexed += indexedBlocks(asIndexed);
    ASSERT_EQ(indexedBlocks(oneByOne), 0);
    extractionSwitches() = drawing.switches();
    const std::string expected = extracted(oneByOne, expandedState);
    ASSERT_EQ(extracted(asIndexed, indexedState), expected) << "round " << round;
    ASSERT_EQ(indexedState.bits(), expandedState.bits()) << "round " << round;
    records += static_cast<std::size_t>(std::count(expected.begin(), expected.end(), '\n'));
  }
  // Rounds without indices or records would prove nothing.
  EXPECT_GT(indexed, kRounds);
  EXPECT_GT(records, std::size_t{100} * kRounds);
}

}  // namespace
