#include "inspect/starting_configuration.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

#include "base/control_characters.h"
#include "inspect/contents.h"
#include "inspect/records.h"
#include "result/configuration_keywords.h"

namespace inspect {

namespace {

// What the database has, as far as keywords ask for it.
struct Holdings {
  std::size_t steps = 0;
  std::size_t stepsWithMass = 0;
  std::size_t histories = 0;
  std::size_t sets = 0;
  std::vector<FieldContents> fields;
  bool hasInvariants = false;
};

Holdings holdingsOf(const odbstore::Reader& database) {
  constexpr double kNoMass = -1.0;
  Holdings holdings;
  for (const StepContents& step : stepContents(database)) {
    ++holdings.steps;
    if (step.info.mass != kNoMass) ++holdings.stepsWithMass;
  }
  holdings.histories = historyContents(database).size();
  for (const ModelSet& set : modelSets(*database.file())) holdings.sets += set.isLeftOut ? 0 : 1;
  holdings.fields = fieldContents(database);
  for (const FieldContents& field : holdings.fields) {
    holdings.hasInvariants = holdings.hasInvariants || (field.name == "S" && !field.info.validInvariants.empty());
  }
  return holdings;
}

// A name of the database in a text that must not begin to count there.
std::string shown(std::string_view name) {
  std::string text = base::escaped(name);
  for (std::size_t at; (at = text.find(kConfigurationStart)) != std::string::npos;) text[text.find(' ', at)] = '_';
  return text;
}

// "S, SDEG", each once; a few of many.
std::string namesOf(const std::vector<FieldContents>& fields, std::string_view word) {
  constexpr std::size_t kMost = 20;
  std::set<std::string> names;
  for (const FieldContents& field : fields) {
    if (field.info.description.find(word) != std::string::npos) names.insert(shown(field.name));
  }
  if (names.empty()) return "nothing here";
  std::string text;
  std::size_t count = 0;
  for (const std::string& name : names) {
    if (count++ == kMost) return text + fmt::format(" and {} more", names.size() - kMost);
    text += (text.empty() ? "" : ", ") + name;
  }
  return text;
}

std::string remark(std::string_view keyword, const std::string& text) {
  return fmt::format("    {:<26}{}\n", keyword, text);
}

std::string remarks(const Holdings& holdings) {
  std::string text =
      remark("EXTRACT_MASS", fmt::format("{} of {} steps have a mass", holdings.stepsWithMass, holdings.steps));
  text += remark("EXTRACT_HISTORY", fmt::format("{} histories, each with all its samples", holdings.histories));
  text += remark("MINMAX_HISTORY", "their largest and smallest values");
  text += remark("EXTRACT_FIELD", "visits the frames; with it one of the next four");
  text += remark("EXTRACT_ALL", "all fields: " + namesOf(holdings.fields, ""));
  for (const DescriptionKeyword& keyword : kDescriptionKeywords) {
    text += remark(keyword.text, namesOf(holdings.fields, keyword.word));
  }
  text += remark("EXTRACT_FIELD_SETS", fmt::format("the same over each of {} sets", holdings.sets));
  text += remark("EXTRACT_FIELD_COMPONENTS", "components of vectors and tensors too");
  text += remark("TENSOR_INVARIANTS", holdings.hasInvariants ? "invariants of S over the sets; takes all fields"
                                                             : "nothing here: no field S names invariants");
  text += remark("ENGINEERING_MAX", "the largest value but for PERCENTAGE of them");
  text += remark("ENGINEERING_MIN", "the smallest value but for PERCENTAGE of them");
  text += remark("PERCENTAGE = 1", "in percent of the values");
  return text + remark("DO_NOT_COMPUTE_VALUES", "names alone, each with the value 0");
}

ExtractionSwitches chosen(const Holdings& holdings) {
  ExtractionSwitches switches;
  switches.mass = holdings.stepsWithMass > 0;
  switches.historyExtremes = holdings.histories > 0;
  switches.field = switches.allFieldOutputs = !holdings.fields.empty();
  return switches;
}

}  // namespace

std::string startingConfiguration(const std::shared_ptr<const odbstore::Reader>& database, const std::string& name) {
  const Holdings holdings = holdingsOf(*database);
  const ExtractionSwitches switches = chosen(holdings);
  const std::uint64_t records = RecordList(database, switches).count().all();
  std::string text = fmt::format(
      "Extraction from {}: what each keyword takes there. These lines do not count; move\n"
      "a keyword below the mark to have it. As it stands, this gives {} records.\n\n",
      shown(name), records);
  text += remarks(holdings);
  text += fmt::format("\n{}\n", kConfigurationStart);
  if (switches.mass) text += "EXTRACT_MASS\n";
  if (switches.historyExtremes) text += "MINMAX_HISTORY\n";
  if (switches.field) text += "EXTRACT_FIELD\nEXTRACT_ALL\n";
  return text;
}

}  // namespace inspect
