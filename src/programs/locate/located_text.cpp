#include "located_text.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "base/control_characters.h"

namespace inspect {

namespace {

using nlohmann::ordered_json;

std::string_view kindOf(const ModelSet& set) {
  return set.kind == odbstore::SetKind::element ? "element set" : "node set";
}

std::string ownerOf(const ModelSet& set) {
  switch (set.ownerKind) {
    case odbstore::OwnerKind::instance:
      return fmt::format(" of instance {}", set.owner);
    case odbstore::OwnerKind::part:
      return fmt::format(" of part {}", set.owner);
    default:
      return "";
  }
}

std::string subjectOf(const Record& record) {
  if (record.kind == RecordKind::history)
    return fmt::format("  {}, history {} of {}\n", record.stepName, record.output, record.region);
  const std::string over = record.set == nullptr
                               ? "the whole model"
                               : fmt::format("{} {}{}", kindOf(*record.set), record.set->name, ownerOf(*record.set));
  return fmt::format("  {}, frame {} (value {}), {} {} of {} over {}\n", record.stepName, record.increment,
                     record.frameValue, wordOf(record.extreme), record.quantity.empty() ? "value" : record.quantity,
                     record.field, over);
}

std::string placeText(const LocatedPlace& located) {
  const RankedPlace& place = located.place;
  std::string text = fmt::format("{:<16} {}", place.value, place.instance);
  if (place.node >= 0) text += fmt::format(" node {}", place.node);
  if (place.element >= 0) text += fmt::format(" element {}", place.element);
  if (place.integrationPoint > 0) text += fmt::format(" point {}", place.integrationPoint);
  if (located.coordinates) {
    const auto& [x, y, z] = *located.coordinates;
    text += fmt::format(" at ({:.6g}, {:.6g}, {:.6g})", x, y, z);
  }
  return text;
}

std::string listOf(const std::vector<LocatedPlace>& places, std::size_t from) {
  std::string text;
  for (std::size_t i = from; i < places.size(); ++i) text += "    " + placeText(places[i]) + "\n";
  return text;
}

std::string engineeringText(const Record& record, const LocatedExtreme& found) {
  if (record.extreme != Extreme::engineeringMax && record.extreme != Extreme::engineeringMin) return "";
  std::string text = fmt::format("  position {} of {} rows is aimed at; {} rows are {}\n", found.aim, found.rows,
                                 found.before, found.isAscending ? "smaller" : "larger");
  if (!found.passedOver.empty()) text += "  passed over:\n" + listOf(found.passedOver, 0);
  return text;
}

std::string overTimeText(const std::vector<FrameExtreme>& frames) {
  if (frames.empty()) return "";
  std::string text = "  over time:\n";
  for (const FrameExtreme& frame : frames) {
    text += fmt::format("    frame {} (value {}): {}\n", frame.increment, frame.value,
                        frame.found.places.empty() ? "no value" : placeText(frame.found.places.front()));
  }
  return text;
}

// JSON has no numbers for what is not finite.
ordered_json numberOf(double value) {
  if (std::isfinite(value)) return value;
  return std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf";
}

ordered_json jsonOfPlace(const LocatedPlace& located) {
  const RankedPlace& place = located.place;
  ordered_json json = {{"value", numberOf(place.value)}, {"instance", place.instance}};
  json["label"] = place.node >= 0 ? place.node : place.element;
  if (place.node >= 0) json["node"] = place.node;
  if (place.element >= 0) json["element"] = place.element;
  if (place.integrationPoint > 0) json["integrationPoint"] = place.integrationPoint;
  json["coordinates"] = located.coordinates ? ordered_json(*located.coordinates) : ordered_json();
  return json;
}

ordered_json jsonOfPlaces(const std::vector<LocatedPlace>& places, std::size_t from) {
  ordered_json list = ordered_json::array();
  for (std::size_t i = from; i < places.size(); ++i) list.push_back(jsonOfPlace(places[i]));
  return list;
}

void addSubject(const Record& record, ordered_json& json) {
  json["step"] = record.stepName;
  json["extreme"] = wordOf(record.extreme);
  if (record.kind == RecordKind::history) {
    json["region"] = record.region;
    json["output"] = record.output;
    return;
  }
  json["frame"] = record.increment;
  json["frameValue"] = numberOf(record.frameValue);
  json["field"] = record.field;
  json["quantity"] = record.quantity;
  if (record.set == nullptr) return;
  const ModelSet& set = *record.set;
  json["set"] = {
      {"name", set.name}, {"kind", set.kind == odbstore::SetKind::element ? "element" : "node"}, {"owner", set.owner}};
}

void addFound(const Record& record, const LocatedExtreme& found, ordered_json& json) {
  json["value"] = found.hasValue() ? numberOf(found.value) : ordered_json();
  if (!found.places.empty()) json.update(jsonOfPlace(found.places.front()));
  if (found.sample >= 0) {
    json["sample"] = found.sample;
    json["abscissa"] = numberOf(found.abscissa);
  }
  json["equal"] = found.equal;
  json["rows"] = found.rows;
  json["next"] = jsonOfPlaces(found.places, 1);
  if (record.extreme != Extreme::engineeringMax && record.extreme != Extreme::engineeringMin) return;
  json["engineering"] = {{"aim", found.aim},
                         {"before", found.before},
                         {"order", found.isAscending ? "ascending" : "descending"},
                         {"passedOver", jsonOfPlaces(found.passedOver, 0)}};
}

}  // namespace

std::string textOf(const ChosenRecord& chosen, const Located& located) {
  const LocatedExtreme& found = located.found;
  std::string text = fmt::format("{}\n{}", chosen.name, subjectOf(located.record));
  if (!found.hasValue()) return base::escaped(text) + "  no value\n";
  if (found.sample >= 0)
    text += fmt::format("  {} at {} (sample {} of {})\n", found.value, found.abscissa, found.sample + 1, found.rows);
  if (!found.places.empty()) text += "  " + placeText(found.places.front()) + "\n";
  if (found.equal > 1)
    text += fmt::format("  {} {} have this value\n", found.equal, found.sample >= 0 ? "samples" : "places");
  text += engineeringText(located.record, found);
  if (found.places.size() > 1) text += "  next:\n" + listOf(found.places, 1);
  return text + overTimeText(located.overTime);
}

std::string jsonOf(const ChosenRecord& chosen, const Located& located) {
  ordered_json json = {{"name", chosen.name}};
  addSubject(located.record, json);
  addFound(located.record, located.found, json);
  if (!chosen.recorded.empty()) json["recorded"] = chosen.recorded;
  for (const FrameExtreme& frame : located.overTime) {
    ordered_json one = {{"frame", frame.increment}, {"frameValue", numberOf(frame.value)}, {"value", nullptr}};
    if (!frame.found.places.empty()) one.update(jsonOfPlace(frame.found.places.front()));
    json["overTime"].push_back(std::move(one));
  }
  return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace inspect
