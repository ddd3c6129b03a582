#include "report/page_fields.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

namespace report {

namespace {

using FrameKey = std::pair<std::size_t, int>;  // step, frame
using Step = std::shared_ptr<const odbstore::StoredStep>;

constexpr std::string_view kVectorColumns[] = {"1", "2", "3"};

const char* wordOf(FieldKind kind) {
  return kind == FieldKind::tensor ? "tensor" : kind == FieldKind::vector ? "vector" : "scalar";
}

Json fieldJson(const PageField& field) {
  return {{"name", field.name},
          {"description", field.description},
          {"kind", wordOf(field.kind)},
          {"on", field.isOfElements ? "elements" : "vertices"},
          {"halvedShear", field.hasHalvedShear},
          {"quantities", field.quantities}};
}

struct Column {
  std::string name;
  double lowest, highest;
  PackedArray array;
};

Column columnOf(std::string name, std::span<const float> rows, std::size_t width, std::size_t column) {
  Quantized numbers = quantize(rows, width, column);
  return {std::move(name), numbers.lowest, numbers.highest, pack(std::span<const std::uint16_t>(numbers.items), 1)};
}

// What comes with the field itself, or its details.
std::vector<Column> columnsOf(const PageField& field, const std::vector<float>& rows, bool areDetails) {
  std::vector<Column> columns;
  if (field.kind == FieldKind::scalar) {
    columns.push_back(columnOf("", rows, 1, 0));
  } else if (field.kind == FieldKind::vector) {
    for (std::size_t c = 0; c < 3; ++c) columns.push_back(columnOf(std::string(kVectorColumns[c]), rows, 3, c));
  } else if (areDetails) {
    for (std::size_t c = 0; c < 6; ++c)
      columns.push_back(columnOf(std::string(odbstore::kTensorComponents[c]), rows, 6, c));
  } else {
    derive(field.kind, field.hasHalvedShear, rows, {"mises"}, [&](const std::string& name, std::span<const float> all) {
      if (name == "mises") columns.push_back(columnOf(name, all, 1, 0));
    });
  }
  return columns;
}

class Filler {
 public:
  Filler(const odbstore::Reader& reader, const inspect::ModelMesh& mesh, const Surface& surface, PageData& data)
      : mesh_(mesh), surface_(surface), data_(data), rows_(mesh, surface) {
    for (const std::string& name : reader.steps()) steps_.push_back(reader.step(name));
  }

  FieldsPart fill() {
    bool isFull = false;
    for (const Candidate& candidate : byImportance(fieldsOfSteps())) {
      isFull = isFull || !take(candidate);
      if (isFull) ++(candidate.isDetail ? part_.withoutDetails : part_.leftOut);
    }
    part_.fields = Json::array();
    for (const PageField& field : fields_) part_.fields.push_back(fieldJson(field));
    part_.frames = Json::array();
    for (auto& [key, frame] : frames_) {
      Json entry = {{"step", key.first}, {"frame", key.second}, {"fields", Json::array()}};
      for (auto& [number, field] : frame) entry["fields"].push_back(std::move(field));
      part_.frames.push_back(std::move(entry));
    }
    return std::move(part_);
  }

 private:
  std::vector<StepFields> fieldsOfSteps() const {
    std::vector<StepFields> all;
    for (const Step& step : steps_) {
      StepFields& fields = all.emplace_back();
      fields.frames = step->frameCount();
      for (const odbstore::StoredField& field : step->fields()) {
        const std::vector<int> frames = field.frames();
        if (frames.empty()) continue;
        const std::optional<PageField> page = pageField(field, frames.front());
        if (page) fields.fields.push_back({field.name, page->kind == FieldKind::tensor, frames});
      }
    }
    return all;
  }

  // The field's number on the page; nothing where another field of the name is of another kind.
  std::optional<std::size_t> numberOf(const PageField& field) {
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      if (fields_[i].name != field.name) continue;
      const bool isSame = fields_[i].kind == field.kind && fields_[i].isOfElements == field.isOfElements &&
                          fields_[i].hasHalvedShear == field.hasHalvedShear;
      if (!isSame) return std::nullopt;
      return i;
    }
    fields_.push_back(field);
    return fields_.size() - 1;
  }

  // Returns false where there is no room for it.
  bool take(const Candidate& candidate) {
    const odbstore::StoredField* stored = steps_[candidate.step]->findField(candidate.field);
    const std::optional<PageField> field = pageField(*stored, candidate.frame);
    const std::optional<std::size_t> number = field ? numberOf(*field) : std::nullopt;
    if (!number) return true;
    const FieldFrame frame = rows_.read(*field, *stored, candidate.frame);
    if (frame.extremes.empty()) return true;
    const std::vector<Column> columns = columnsOf(*field, frame.rows, candidate.isDetail);
    const Json extremes = candidate.isDetail ? Json() : extremesJson(frame);
    std::size_t bytes = extremes.dump().size();
    for (const Column& column : columns) bytes += column.array.text.size() + kReferenceBytes;
    if (!data_.hasRoomFor(bytes)) return false;
    data_.reserve(bytes - sizeOf(columns));
    put(candidate, *number, columns, extremes);
    return true;
  }

  // What the description says of an array, about.
  static constexpr std::size_t kReferenceBytes = 100;

  static std::size_t sizeOf(const std::vector<Column>& columns) {
    std::size_t bytes = 0;
    for (const Column& column : columns) bytes += column.array.text.size();
    return bytes;
  }

  Json extremesJson(const FieldFrame& frame) const {
    Json extremes = Json::object();
    for (const auto& [quantity, extreme] : frame.extremes)
      extremes[quantity] = {{"max", placeJson(extreme.max, mesh_, surface_)},
                            {"min", placeJson(extreme.min, mesh_, surface_)}};
    return extremes;
  }

  void put(const Candidate& candidate, std::size_t number, const std::vector<Column>& columns, const Json& extremes) {
    Json& entry = frames_[{candidate.step, candidate.frame}][number];
    entry["field"] = number;
    for (const Column& column : columns)
      entry["columns"][column.name] = {column.lowest, column.highest, data_.add(column.array)};
    if (candidate.isDetail) return;
    entry["extremes"] = extremes;
    part_.shown.emplace(candidate.step, candidate.frame, candidate.field);
  }

  const inspect::ModelMesh& mesh_;
  const Surface& surface_;
  PageData& data_;
  FieldRows rows_;
  std::vector<Step> steps_;
  std::vector<PageField> fields_;
  std::map<FrameKey, std::map<std::size_t, Json>> frames_;
  FieldsPart part_;
};

// The coordinates of a place: of its node, else the mean of those of its element's nodes.
std::optional<std::array<double, 3>> pointOf(const Place& place, const inspect::ModelMesh& mesh) {
  std::vector<std::int64_t> points;
  if (place.point >= 0) {
    points.push_back(place.point);
  } else if (place.cell >= 0) {
    const std::span<const std::int64_t> all = mesh.pointsOf(static_cast<std::size_t>(place.cell));
    points.assign(all.begin(), all.end());
  }
  if (points.empty()) return std::nullopt;
  std::array<double, 3> sum{};
  for (const std::int64_t point : points) {
    for (std::size_t c = 0; c < 3; ++c) sum[c] += mesh.coordinates[3 * static_cast<std::size_t>(point) + c];
  }
  for (double& number : sum) number /= static_cast<double>(points.size());
  return sum;
}

}  // namespace

Json placeJson(const Place& place, const inspect::ModelMesh& mesh, const Surface& surface) {
  Json json = {{"value", place.value}};
  if (!std::isfinite(place.value)) json["value"] = place.value > 0 ? "inf" : "-inf";
  const auto add = [&json](const char* key, std::int64_t number) {
    if (number >= 0) json[key] = number;
  };
  if (place.point >= 0) add("vertex", surface.vertexOf[static_cast<std::size_t>(place.point)]);
  if (place.cell >= 0) add("element", surface.elementOf[static_cast<std::size_t>(place.cell)]);
  add("node", place.node);
  add("cell", place.element);
  add("point", place.integrationPoint);
  if (mesh.parts.size() > 1) json["instance"] = place.instance;
  if (const auto at = pointOf(place, mesh)) json["at"] = *at;
  return json;
}

FieldsPart fieldsPart(const odbstore::Reader& reader, const inspect::ModelMesh& mesh, const Surface& surface,
                      PageData& data) {
  return Filler(reader, mesh, surface, data).fill();
}

}  // namespace report
