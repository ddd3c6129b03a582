#include "importers/calculix/import_calculix.h"

#include <fmt/format.h>

#include <set>

#include "importers/calculix/deck.h"
#include "importers/calculix/field_mapping.h"
#include "importers/calculix/frames.h"
#include "importers/calculix/frd_reader.h"
#include "importers/calculix/model.h"

namespace importers::calculix {

namespace {

// The chosen columns of the chosen rows of a block.
std::vector<float> gather(const FrdResult& block, const std::vector<int>& columns, const std::vector<int>* rows) {
  const std::size_t width = block.components.size();
  const std::size_t count = rows != nullptr ? rows->size() : block.labels.size();
  std::vector<float> out;
  out.reserve(count * columns.size());
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t row = rows != nullptr ? static_cast<std::size_t>((*rows)[i]) : i;
    const float* const from = block.values.data() + row * width;
    for (const int column : columns) out.push_back(from[column]);
  }
  return out;
}

class Import {
 public:
  Import(const ImportRequest& request, const WarningSink& warn)
      : request_(request),
        warn_(warn),
        reader_(request.results),
        deck_(request.deck.empty() ? Deck{} : readDeck(request.deck, warn)),
        writer_(request.output, request.storage),
        model_(deck_, writer_),
        frames_(readStepTimes(request.status), deck_.stepTitles, writer_) {}

  ImportSummary run() {
    writer_.setTitle(deck_.heading.empty() ? reader_.header().title : deck_.heading);
    writer_.setProducer(reader_.header().program);
    writer_.setAssemblyName("ASSEMBLY");
    writer_.addPart(kPart);
    writer_.addInstance(kInstance, kPart);
    while (const std::optional<FrdBlock> block = reader_.next()) {
      std::visit([this](const auto& content) { take(content); }, *block);
    }
    if (!request_.deck.empty()) model_.addSets(request_.deck, warn_);
    tellOfTheEnd();
    writer_.finish();
    return {frames_.stepCount(), frames_.frameCount(), static_cast<int>(fields_.size()), model_.setCount()};
  }

 private:
  void take(const FrdNodes& nodes) {
    if (model_.hasNodes()) {
      warnOfResults("a second block of nodes is passed over");
    } else {
      model_.addNodes(nodes);
    }
  }

  void take(const FrdElements& elements) {
    if (model_.hasElements()) {
      warnOfResults("a second block of elements is passed over");
    } else {
      model_.addElements(elements);
    }
  }

  void take(const FrdResult& block) {
    if (block.labels.empty()) {
      if (empty_.insert(block.name).second) {
        warn_(fmt::format("{}: warning: {} has no rows and is left out", placeIn(request_.results, block.line),
                          block.name));
      }
      return;
    }
    const std::vector<MappedField> fields = mapResult(block);
    std::vector<std::string> names;
    for (const MappedField& field : fields) names.push_back(field.name);
    const odbstore::FrameId frame = frames_.frameOf(block, names);
    RowPlaces& places = model_.placesOf(block.labels);
    for (const MappedField& field : fields) addField(block, field, frame, places);
  }

  void addField(const FrdResult& block, const MappedField& field, odbstore::FrameId frame, RowPlaces& places) {
    fields_.insert(field.name);
    const odbstore::FieldId id = writer_.addField(frame, field.name, field.info);
    if (!field.isTensor()) {
      writer_.addBlock(id, places.nodal(), std::span<const float>(gather(block, field.columns, nullptr)));
      return;
    }
    for (const ElementNodalRows& rows : places.elementNodal()) {
      writer_.addBlock(id, rows.location, std::span<const float>(gather(block, field.columns, &rows.gather)));
    }
  }

  void tellOfTheEnd() {
    if (reader_.isCutOff()) {
      warnOfResults(frames_.frameCount() > 0
                        ? "the file is cut off; complete results were imported up to " + frames_.lastPlace()
                        : std::string("the file is cut off before its first complete result"));
    } else if (frames_.frameCount() == 0) {
      warnOfResults("the file holds no results");
    }
  }

  void warnOfResults(const std::string& text) { warn_(fmt::format("{}: warning: {}", request_.results, text)); }

  const ImportRequest& request_;
  const WarningSink& warn_;
  FrdReader reader_;
  Deck deck_;
  odbstore::Writer writer_;
  Model model_;
  Frames frames_;
  std::set<std::string> fields_;
  std::set<std::string> empty_;  // names of blocks without rows
};

}  // namespace

ImportSummary importCalculix(const ImportRequest& request, const WarningSink& warn) {
  return Import(request, warn).run();
}

}  // namespace importers::calculix
