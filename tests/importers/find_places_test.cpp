// findPlaces() by itself: tables and steps made by hand in, the place of each table out. No file is read.
#include <fmt/core.h>
#include <gtest/gtest.h>

#include <ostream>

#include "importers/calculix/dat/printed_places.h"

namespace importers::calculix {
namespace {

PrintedTable tableOf(const std::string& line) {
  PrintedTable table;
  table.head = parseDatTitle(line);
  table.format = &datFormatOf(table.head);
  return table;
}

// Displacements of the set TOP at a total time; tables with other rows have another fingerprint.
PrintedTable at(double time, std::uint64_t fingerprint = 1) {
  PrintedTable table = tableOf(fmt::format(" displacements (vx,vy,vz) for set TOP and time  {:13.7E}", time));
  table.fingerprint = fingerprint;
  return table;
}

// The list of the modes with these frequencies.
PrintedTable modes(const std::vector<double>& frequencies) {
  PrintedTable table = tableOf("     E I G E N V A L U E   O U T P U T");
  for (std::size_t i = 0; i < frequencies.size(); ++i) {
    DatValues& row = table.kept.emplace_back();
    row.labels = {static_cast<int>(i) + 1, 0};
    row.numbers = {1.0, 1.0, frequencies[i], 0.0};
  }
  table.columns = datColumns(*table.format, table.head.heading, 4).value();
  table.rows = frequencies.size();
  return table;
}

PrintedTable mode(int number) { return tableOf(fmt::format("      E I G E N V A L U E    N U M B E R {:5}", number)); }

// An increment in time by the status file; those without results are not expected to have tables.
struct Increment {
  double total;
  bool isExpected = true;
  std::optional<FrameNumber> frame = {};
};

RunStep inTime(double start, double end, const std::vector<Increment>& increments) {
  RunStep step;
  step.procedure = Procedure::time;
  step.start = start;
  step.end = end;
  for (const Increment& increment : increments) {
    KnownIncrement& known = step.increments.emplace_back();
    known.number = static_cast<int>(step.increments.size());
    known.total = rounded(increment.total, kDigitsOfTables);
    known.inStep = rounded(increment.total - start, kDigitsOfStatus);
    known.isExpected = increment.isExpected;
    known.frame = increment.frame;
  }
  step.knowsAll = true;
  step.mayGoOn = false;
  return step;
}

RunStep ofModes() {
  RunStep step;
  step.procedure = Procedure::modes;
  return step;
}

struct PlacesCase {
  std::string name;
  std::vector<PrintedTable> tables;
  std::vector<RunStep> steps;  // numbered from 1
  // "step increment" of each table, "step mode 2" for modes, "step frame 0" for a frame of the result file, "step" for
  // a table without a frame; "0" for the mark of a mode; or what contradicts.
  std::vector<std::string> places;
};

void PrintTo(const PlacesCase& places, std::ostream* stream) { *stream << places.name; }

std::string textOf(const TablePlace& place, const PrintedPlaces& places, std::size_t known) {
  if (!place.frame) return fmt::format("{}", place.step);
  if (*place.frame < known) return fmt::format("{} frame {}", place.step, *place.frame);
  const RunFrame& frame = places.frames[*place.frame - known];
  if (frame.kind == FrameKind::mode) return fmt::format("{} mode {} {:g}", place.step, frame.mode, frame.value);
  return fmt::format("{} increment {}", place.step, frame.increment.value_or(0));
}

class FindPlaces : public testing::TestWithParam<PlacesCase> {};

TEST_P(FindPlaces, GivesTheStepAndTheFrame) {
  RunSteps steps;
  Frames frames;
  for (const RunStep& step : GetParam().steps) {
    const int number = steps.last() + 1;
    for (const KnownIncrement& known : step.increments) {
      if (!known.frame) continue;
      FrdResult block;
      block.step = number;
      block.increment = *known.number;
      block.value = known.total.low;
      block.frameCounter = static_cast<int>(*known.frame) + 1;
      ASSERT_EQ(frames.find(block, {"U"}), *known.frame);
    }
    steps.steps[number] = step;
  }
  steps.isWhole = true;
  const PrintedPlaces places = findPlaces(GetParam().tables, steps, frames, true);
  std::vector<std::string> found;
  if (places.contradiction.empty()) {
    for (const TablePlace& place : places.tables) found.push_back(textOf(place, places, frames.size()));
  } else {
    found = {places.contradiction};
  }
  EXPECT_EQ(found, GetParam().places);
}

const RunStep kFirst = inTime(0, 1, {{1}});
// Ten increments of 1e-5, of which every third and the last one are printed.
const RunStep kSecond = inTime(1, 1.0001,
                               {{1.00001, false},
                                {1.00002, false},
                                {1.00003},
                                {1.00004, false},
                                {1.00005, false},
                                {1.00006},
                                {1.00007, false},
                                {1.00008, false},
                                {1.00009},
                                {1.0001}});

INSTANTIATE_TEST_SUITE_P(
    Table, FindPlaces,
    testing::Values(PlacesCase{"NoTables", {}, {kFirst}, {}},
                    PlacesCase{"TheSampleOfTheHeader",
                               {at(1), at(1.00003), at(1.00006), at(1.00009), at(1.0001)},
                               {kFirst, kSecond},
                               {"1 increment 1", "2 increment 3", "2 increment 6", "2 increment 9", "2 increment 10"}},
                    // Seven digits of 1e6 do not tell the ends of both steps apart; their order does.
                    PlacesCase{"EqualTimes",
                               {at(1e6), at(1e6, 2)},
                               {inTime(0, 1e6, {{1e6}}), inTime(1e6, 1e6 + 0.01, {{1e6 + 0.01}})},
                               {"1 increment 1", "2 increment 1"}},
                    PlacesCase{"FramesOfTheResultFileAreUsed",
                               {at(0.5), at(1)},
                               {inTime(0, 1, {{0.5, true, {}}, {1, true, 0}})},
                               {"1 increment 1", "1 frame 0"}},
                    PlacesCase{"ATimeBetweenIncrementsOfAStepThatIsKnownInFull",
                               {at(0.7)},
                               {kFirst},
                               {"the times of the tables are not those of the steps"}},
                    PlacesCase{"TimesThatRunBackwards",
                               {at(1), at(0.5)},
                               {inTime(0, 1, {{0.5}, {1}})},
                               {"the times of the tables are not those of the steps"}},
                    PlacesCase{"ModesBetweenTimes",
                               {at(1), modes({40, 50}), mode(1), at(1), mode(2), at(1), at(2)},
                               {kFirst, ofModes(), inTime(1, 2, {{2}})},
                               {"1 increment 1", "2", "0", "2 mode 1 40", "0", "2 mode 2 50", "3 increment 1"}},
                    PlacesCase{"MoreListsOfModesThanSteps",
                               {modes({40}), modes({50})},
                               {ofModes()},
                               {"the run has no further step for eigenvalue output"}},
                    PlacesCase{"ModesOfARunWithoutSteps",
                               {modes({40})},
                               {kFirst},
                               {"the run has no further step for eigenvalue output"}}),
    [](const testing::TestParamInfo<PlacesCase>& info) { return info.param.name; });

}  // namespace
}  // namespace importers::calculix
