#include "check_report.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "base/control_characters.h"
#include "base/diagnostic.h"
#include "tool/text_table.h"

namespace inspect {

namespace {

using base::escaped;
using OrderedJson = nlohmann::ordered_json;
using Cells = std::vector<std::string>;

// Why a field is taken, or not.
std::string reasonOf(const FieldChoice& choice) {
  if (choice.isTaken) return fmt::format("{}", fmt::join(choice.keywords, ", "));
  return fmt::format("not taken; {} would take it: {}", fmt::join(choice.keywords, " or "),
                     escaped(choice.field->info.description));
}

std::string countText(const DatabaseReport& database) {
  const RecordList::Count& count = database.count;
  return fmt::format("{}: {} records: {} of masses, {} of histories, {} over the whole model, {} over sets\n",
                     escaped(database.path), count.all(), count.mass, count.histories, count.wholeModel, count.sets);
}

// Fields that fare alike in several steps have one row.
std::string fieldText(const DatabaseReport& database) {
  std::map<Cells, std::set<int>> steps;
  for (const FieldChoice& choice : database.choices) {
    steps[{escaped(choice.field->name), reasonOf(choice)}].insert(static_cast<int>(choice.field->step) + 1);
  }
  if (steps.empty()) return {};
  std::vector<Cells> rows = {{"field", "steps", "taken by"}};
  for (const auto& [row, in] : steps) rows.push_back({row[0], tool::runsOf(in), row[1]});
  return "\n" + tool::aligned(rows);
}

std::string regionText(const Record& record) {
  if (record.kind != RecordKind::field) return "history " + escaped(record.region);
  if (record.set == nullptr) return fmt::format("field {} over the whole model", escaped(record.field));
  const ModelSet& set = *record.set;
  const std::string owner = set.ownerKind == odbstore::OwnerKind::assembly ? "" : " " + escaped(set.owner);
  return fmt::format("field {} over the {} of set {} of the {}{}", escaped(record.field), memberWord(set.kind),
                     escaped(set.name), ownerWord(set.ownerKind), owner);
}

std::string repeatedText(const RepeatedNames& repeated) {
  if (repeated.count == 0) return {};
  std::string text = fmt::format("\n{}{} names occur more than once{}\n", repeated.isWhole ? "" : "at least ",
                                 repeated.count, repeated.count > repeated.first.size() ? ", among them" : ":");
  for (const RepeatedName& name : repeated.first) {
    text += "  " + escaped(name.name) + "\n";
    for (const Record& record : name.records) {
      text += fmt::format("    step {}{}, {}\n", escaped(record.stepName),
                          record.kind == RecordKind::field ? fmt::format(", frame {}", record.frame + 1) : "",
                          regionText(record));
    }
  }
  return text;
}

OrderedJson jsonOfRecord(const Record& record) {
  OrderedJson json = {{"step", record.stepName}};
  if (record.kind == RecordKind::field) {
    json.update({{"frame", record.increment}, {"frameValue", record.frameValue}, {"field", record.field}});
    if (record.set != nullptr) {
      json.update({{"setKind", memberWord(record.set->kind)}, {"owner", record.set->owner}, {"set", record.set->name}});
    }
  } else if (record.kind == RecordKind::history) {
    json.update({{"region", record.region}, {"output", record.output}});
  }
  return json;
}

OrderedJson jsonOfRepeated(const RepeatedName& name) {
  OrderedJson json = {{"name", name.name}, {"records", OrderedJson::array()}};
  for (const Record& record : name.records) json["records"].push_back(jsonOfRecord(record));
  return json;
}

void addDatabase(OrderedJson& json, const DatabaseReport& database) {
  const RecordList::Count& count = database.count;
  json["database"] = database.path;
  json["counts"] = {{"records", count.all()},
                    {"mass", count.mass},
                    {"histories", count.histories},
                    {"wholeModel", count.wholeModel},
                    {"sets", count.sets}};
  json["fields"] = OrderedJson::array();
  for (const FieldChoice& choice : database.choices) {
    json["fields"].push_back({{"name", choice.field->name},
                              {"step", database.steps[choice.field->step]},
                              {"description", choice.field->info.description},
                              {"taken", choice.isTaken},
                              {choice.isTaken ? "keywords" : "wouldTake", choice.keywords}});
  }
  json["repeatedNames"] = database.repeated.count;
  json["repeated"] = OrderedJson::array();
  for (const RepeatedName& name : database.repeated.first) json["repeated"].push_back(jsonOfRepeated(name));
}

}  // namespace

std::string reportText(const CheckReport& report) {
  std::string text;
  for (const Remark& remark : report.remarks) {
    const base::Place place = {report.configuration, static_cast<std::int64_t>(remark.line), {}, {}};
    text += base::textOf(base::warning(place, remark.reason)) + "\n";
  }
  if (report.database) {
    text += countText(*report.database) + fieldText(*report.database) + repeatedText(report.database->repeated);
  }
  return text;
}

std::string reportJson(const CheckReport& report) {
  OrderedJson json = {{"configuration", report.configuration},
                      {"takesNothing", report.takesNothing},
                      {"remarks", OrderedJson::array()}};
  for (const Remark& remark : report.remarks) {
    json["remarks"].push_back(
        {{"line", remark.line == 0 ? OrderedJson() : OrderedJson(remark.line)}, {"reason", remark.reason}});
  }
  if (report.database) addDatabase(json, *report.database);
  // A path, or a line of the configuration, need not be UTF-8.
  return json.dump(2, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
}

}  // namespace inspect
