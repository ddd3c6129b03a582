#include "inspect/contents.h"

#include <algorithm>
#include <array>

#include "odbstore/database_file.h"
#include "odbstore/stored_step.h"
#include "result/configuration_keywords.h"

namespace inspect {

namespace {

using odbstore::at;
using odbstore::Catalog;
using odbstore::Places;
using odbstore::StoredBlock;
using odbstore::StoredField;

std::size_t stepCount(const odbstore::Reader& database) {
  return database.file()->catalog().columns().steps()->name()->size();
}

// Sums up the rows of each frame; blocks mostly are in all frames of their field, and have as many rows in each.
void countRows(const StoredField& field, std::size_t frames, FieldContents& contents) {
  std::vector<std::int64_t> rows(frames);
  for (const StoredBlock& block : field.blocks) {
    for (const int frame : block.frames()) rows[static_cast<std::size_t>(frame)] += block.rows();
  }
  for (const int frame : contents.frames) {
    const std::int64_t inFrame = rows[static_cast<std::size_t>(frame)];
    contents.fewestRows = frame == contents.frames.front() ? inFrame : std::min(contents.fewestRows, inFrame);
    contents.mostRows = std::max(contents.mostRows, inFrame);
  }
}

BlockContents blockContents(const StoredBlock& block) {
  return {block.location()->info(),
          block.type(),
          block.rows(),
          block.storedRows(),
          block.width(),
          block.isDouble(),
          static_cast<std::int64_t>(block.frames().size())};
}

FieldContents fieldOf(const StoredField& field, std::size_t step, std::size_t frames) {
  FieldContents contents;
  contents.name = field.name;
  contents.step = step;
  contents.info = field.info;
  contents.frames = field.frames();
  std::sort(contents.frames.begin(), contents.frames.end());
  contents.changes = std::any_of(contents.frames.begin(), contents.frames.end(),
                                 [&](int frame) { return *field.infoIn(frame) != field.info; });
  for (const StoredBlock& block : field.blocks) contents.blocks.push_back(blockContents(block));
  countRows(field, frames, contents);
  return contents;
}

}  // namespace

std::vector<StepContents> stepContents(const odbstore::Reader& database) {
  std::vector<StepContents> steps;
  for (std::size_t i = 0; i < stepCount(database); ++i) {
    const auto step = database.stepAt(i);
    steps.push_back({step->name(), step->info(), step->frames()});
  }
  return steps;
}

std::vector<FieldContents> fieldContents(const odbstore::Reader& database) {
  std::vector<FieldContents> all;
  for (std::size_t i = 0; i < stepCount(database); ++i) {
    const auto step = database.stepAt(i);
    const auto frames = static_cast<std::size_t>(step->frameCount());
    for (const StoredField& field : step->fields()) all.push_back(fieldOf(field, i, frames));
  }
  return all;
}

std::vector<HistoryContents> historyContents(const odbstore::Reader& database) {
  const Catalog& catalog = database.file()->catalog();
  const odbstore::columns::HistoryRegions& regions = *catalog.columns().regions();
  const odbstore::columns::HistoryOutputs& outputs = *catalog.columns().outputs();
  std::vector<HistoryContents> all;
  all.reserve(outputs.name()->size());
  for (std::size_t step = 0; step < stepCount(database); ++step) {
    const Places ofStep = Catalog::placesOf(catalog.columns().steps()->regionEnd(), step);
    for (std::size_t region = ofStep.first; region < ofStep.end; ++region) {
      HistoryContents history;
      history.step = step;
      history.region = catalog.text(regions.name()->Get(at(region)));
      history.description = catalog.text(regions.description()->Get(at(region)));
      history.set = catalog.text(regions.set()->Get(at(region)));
      history.node = regions.node()->Get(at(region));
      history.element = regions.element()->Get(at(region));
      history.integrationPoint = regions.integrationPoint()->Get(at(region));
      history.sectionPoint = regions.sectionPoint()->Get(at(region));
      const Places ofRegion = Catalog::placesOf(regions.outputEnd(), region);
      for (std::size_t output = ofRegion.first; output < ofRegion.end; ++output) {
        history.output = catalog.text(outputs.name()->Get(at(output)));
        history.samples = outputs.samples()->Get(at(output));
        history.width = outputs.width()->Get(at(output));
        all.push_back(history);
      }
    }
  }
  return all;
}

std::vector<MeshContents> meshContents(const odbstore::Reader& database) {
  const Catalog& catalog = database.file()->catalog();
  const odbstore::columns::Instances& instances = *catalog.columns().instances();
  const odbstore::columns::Elements& elements = *catalog.columns().elements();
  std::vector<MeshContents> all;
  for (flatbuffers::uoffset_t i = 0; i < instances.name()->size(); ++i) {
    MeshContents mesh;
    mesh.instance = catalog.text(instances.name()->Get(i));
    mesh.part = catalog.text(instances.part()->Get(i));
    const std::int32_t nodes = instances.nodeLabels()->Get(i);
    if (nodes != odbstore::kNone) mesh.nodes = catalog.array(nodes).numbers();
    all.push_back(mesh);
  }
  for (flatbuffers::uoffset_t i = 0; i < elements.labels()->size(); ++i) {
    all[static_cast<std::size_t>(elements.instance()->Get(i))].elements.push_back(
        {catalog.text(elements.type()->Get(i)), catalog.array(elements.labels()->Get(i)).numbers()});
  }
  return all;
}

std::string kindWord(int type) {
  if (odbstore::isTensorType(type)) return "tensor";
  if (odbstore::FieldType{type} == odbstore::FieldType::vector) return "vector";
  return odbstore::FieldType{type} == odbstore::FieldType::scalar ? "scalar" : "type " + std::to_string(type);
}

std::string invariantWord(int code) {
  constexpr std::array kWords = {"maxPrincipal",
                                 "midPrincipal",
                                 "minPrincipal",
                                 "mises",
                                 "tresca",
                                 "press",
                                 "inv3",
                                 "magnitude",
                                 "maxInPlanePrincipal",
                                 "minInPlanePrincipal",
                                 "outOfPlanePrincipal"};
  if (code < 1 || code > static_cast<int>(kWords.size())) return std::to_string(code);
  return kWords[static_cast<std::size_t>(code - 1)];
}

std::vector<std::string_view> takingKeywords(std::string_view description) {
  std::vector<std::string_view> keywords;
  for (const DescriptionKeyword& keyword : kDescriptionKeywords) {
    if (description.find(keyword.word) != std::string_view::npos) keywords.push_back(keyword.text);
  }
  keywords.emplace_back("EXTRACT_ALL");
  return keywords;
}

}  // namespace inspect
