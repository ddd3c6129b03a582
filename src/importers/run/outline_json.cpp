#include "importers/run/outline_json.h"

#include <nlohmann/json.hpp>

namespace importers {

namespace {

using Json = nlohmann::ordered_json;

Json fieldOf(const OutlineStep& step, const OutlineField& field) {
  Json frames = Json::array();
  for (const OutlineRows& rows : field.frames) {
    frames.push_back({{"frame", step.frames[rows.frame].incrementNumber}, {"rows", rows.rows}});
  }
  return {{"name", field.name},
          {"source", field.source},
          {"kind", shapeWord(field.info)},
          {"description", field.info.description},
          {"components", field.info.componentLabels},
          {"frames", std::move(frames)}};
}

Json stepOf(const OutlineStep& step) {
  Json json = {{"name", step.name},       {"number", step.number},   {"description", step.info.description},
               {"frames", Json::array()}, {"fields", Json::array()}, {"histories", Json::array()}};
  for (const odbstore::FrameInfo& frame : step.frames) {
    json["frames"].push_back(
        {{"frame", frame.incrementNumber}, {"value", frame.value}, {"description", frame.description}});
  }
  for (const OutlineField& field : step.fields) json["fields"].push_back(fieldOf(step, field));
  for (const OutlineTable& table : step.tables) {
    json["histories"].push_back(
        {{"source", table.source}, {"set", table.set}, {"rows", table.rows}, {"tables", table.tables}});
  }
  return json;
}

}  // namespace

std::string outlineJson(const Outline& outline, const std::string& file) {
  Json json = {{"file", file},
               {"nodes", outline.nodes},
               {"elements", outline.elements},
               {"form", outline.form},
               {"truncatedAfter", outline.isTruncated() ? Json(outline.truncatedAfter) : Json()},
               {"sets", Json::array()},
               {"steps", Json::array()}};
  for (const OutlineSet& set : outline.sets) {
    json["sets"].push_back({{"name", set.name},
                            {"of", set.kind == odbstore::SetKind::node ? "nodes" : "elements"},
                            {"members", set.members}});
  }
  for (const OutlineStep& step : outline.steps) json["steps"].push_back(stepOf(step));
  // A path or a text of the source need not be UTF-8.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace importers
