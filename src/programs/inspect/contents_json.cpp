#include "contents_json.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "odbstore/database_file.h"

namespace inspect {

namespace {

using Json = nlohmann::ordered_json;

Json numberOf(double value) {
  if (std::isfinite(value)) return value;
  return std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf";
}

Json numbersOf(const std::vector<double>& numbers) {
  Json list = Json::array();
  for (const double number : numbers) list.push_back(numberOf(number));
  return list;
}

Json meshOf(const MeshContents& mesh) {
  Json elements = Json::array();
  for (const MeshContents::Elements& group : mesh.elements) {
    elements.push_back({{"type", group.type}, {"elements", group.count}});
  }
  return {{"name", mesh.instance}, {"part", mesh.part}, {"nodes", mesh.nodes}, {"elements", std::move(elements)}};
}

Json stepOf(const StepContents& step, std::size_t place) {
  constexpr double kNoMass = -1.0;
  Json json = {{"name", step.name}, {"number", place + 1}, {"description", step.info.description}};
  if (step.info.mass != kNoMass) {
    json["mass"] = numberOf(step.info.mass);
    if (!step.info.massCenter.empty()) json["massCenter"] = numbersOf(step.info.massCenter);
    if (!step.info.inertiaAboutCenter.empty()) json["inertiaAboutCenter"] = numbersOf(step.info.inertiaAboutCenter);
    if (!step.info.inertiaAboutOrigin.empty()) json["inertiaAboutOrigin"] = numbersOf(step.info.inertiaAboutOrigin);
  }
  json["frames"] = Json::array();
  for (const odbstore::FrameInfo& frame : step.frames) {
    json["frames"].push_back(
        {{"frame", frame.incrementNumber}, {"value", numberOf(frame.value)}, {"description", frame.description}});
  }
  return json;
}

Json blockOf(const BlockContents& block) {
  Json json = {{"instance", block.location.instance},
               {"position", odbstore::positionWord(block.location.position)},
               {"elementType", block.location.elementType},
               {"sectionPoint", block.location.sectionPoint}};
  json.update({{"kind", kindWord(block.type)},
               {"type", block.type},
               {"precision", block.isDouble ? "double" : "single"},
               {"rows", block.rows},
               {"storedRows", block.storedRows},
               {"width", block.width},
               {"frames", block.frames}});
  return json;
}

Json fieldOf(const FieldContents& field, const ChosenContents& contents) {
  const StepContents& step = contents.allSteps[field.step];
  Json json = {{"name", field.name},
               {"step", step.name},
               {"description", field.info.description},
               {"kind", kindWord(field.info.type)},
               {"type", field.info.type},
               {"components", field.info.componentLabels},
               {"changes", field.changes}};
  Json invariants = Json::array();
  for (const int code : field.info.validInvariants) invariants.push_back(invariantWord(code));
  json["invariants"] = std::move(invariants);
  json["keywords"] = takingKeywords(field.info.description);
  json["rows"] = field.mostRows;
  json["fewestRows"] = field.fewestRows;
  json["frames"] = Json::array();
  for (const int frame : field.frames) {
    json["frames"].push_back(step.frames[static_cast<std::size_t>(frame)].incrementNumber);
  }
  json["blocks"] = Json::array();
  for (const BlockContents& block : field.blocks) json["blocks"].push_back(blockOf(block));
  return json;
}

const char* ownerWord(odbstore::OwnerKind kind) {
  if (kind == odbstore::OwnerKind::assembly) return "assembly";
  return kind == odbstore::OwnerKind::part ? "part" : "instance";
}

Json setOf(const SetContents& set) {
  Json json = {{"name", set.set.name},   {"ownerKind", ownerWord(set.set.ownerKind)},
               {"owner", set.set.owner}, {"of", set.set.kind == odbstore::SetKind::node ? "nodes" : "elements"},
               {"members", set.members}, {"leftOut", set.set.isLeftOut}};
  for (const SetLabels& group : set.labels) {
    json["labels"].push_back({{"instance", group.instance}, {"labels", group.labels}});
  }
  return json;
}

Json historyOf(const HistoryContents& history, const ChosenContents& contents) {
  Json json = {{"step", contents.allSteps[history.step].name}, {"region", history.region},   {"name", history.output},
               {"description", history.description},           {"samples", history.samples}, {"width", history.width}};
  if (history.node >= 0) json["node"] = history.node;
  if (history.element >= 0) json["element"] = history.element;
  if (history.integrationPoint != 0) json["integrationPoint"] = history.integrationPoint;
  if (history.sectionPoint != 0) json["sectionPoint"] = history.sectionPoint;
  if (!history.set.empty()) json["set"] = history.set;
  return json;
}

Json headOf(const ChosenContents& contents) {
  const odbstore::Reader& database = *contents.database;
  const odbstore::DatabaseFile& file = *database.file();
  return {{"file", contents.path},           {"layout", contents.layout},
          {"bytes", contents.bytes},         {"catalogued", file.isCatalogued()},
          {"producer", database.producer()}, {"title", database.title()}};
}

}  // namespace

std::string contentsJson(const ChosenContents& contents) {
  Json json = headOf(contents);
  const auto add = [&](const char* key, const auto& items, auto&& itemOf) {
    json[key] = Json::array();
    for (const auto& item : items) json[key].push_back(itemOf(item));
  };
  if (contents.isWhole) {
    add("instances", contents.meshes, meshOf);
    add("steps", contents.steps, [&](std::size_t place) { return stepOf(contents.allSteps[place], place); });
  }
  if (contents.isWhole || !contents.fields.empty()) {
    add("fields", contents.fields, [&](const FieldContents& field) { return fieldOf(field, contents); });
  }
  if (contents.isWhole || !contents.sets.empty()) add("sets", contents.sets, setOf);
  if (contents.isWhole) {
    add("histories", contents.histories, [&](const HistoryContents& item) { return historyOf(item, contents); });
  }
  // A path need not be UTF-8.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace inspect
