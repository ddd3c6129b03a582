#include "report/write_page.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/file_error.h"
#include "base/output_file.h"
#include "inspect/mesh/model_mesh.h"
#include "inspect/open_database.h"
#include "odbstore/database_file.h"
#include "odbstore/reader.h"
#include "report/mesh_sets.h"
#include "report/page_data.h"
#include "report/page_fields.h"
#include "report/page_model.h"
#include "report/page_records.h"
#include "report/page_steps.h"
#include "report/page_template.h"

namespace report {

namespace {

// Shares of the page that parts may take before fields and frames get the rest.
constexpr std::size_t kShareOfSets = 10;
constexpr std::size_t kShareOfHistories = 6;
constexpr std::size_t kShareOfRecords = 3;

class Page {
 public:
  Page(const PageRequest& request, const base::DiagnosticSink& warn)
      : request_(request), warn_(warn), reader_(inspect::openDatabase(request.database)), data_(request.mostBytes) {
    const PageTemplate page = pageTemplate();
    data_.reserve(page.beforeTitle.size() + page.beforeData.size() + page.afterData.size() + kMargin);
  }

  PageSummary make() {
    description_ = {{"format", 1},
                    {"file", std::filesystem::path(request_.database).filename().string()},
                    {"title", reader_->title()},
                    {"producer", reader_->producer()},
                    {"bytes", reader_->file()->size()},
                    {"steps", stepsPart(*reader_)}};
    addMessages();
    addModel();
    addHistories();
    readRecords();
    addFields();
    description_["notes"] = notes_;
    write();
    return summary_;
  }

 private:
  // For the description's punctuation and what grows by escaping.
  static constexpr std::size_t kMargin = 20'000;

  void note(const std::string& text) {
    notes_.push_back(text);
    warn_(base::note({request_.page}, text));
  }

  void addMessages();
  void addModel();
  void addHistories();
  void readRecords();
  void addFields();
  void write() const;

  const PageRequest& request_;
  const base::DiagnosticSink& warn_;
  std::shared_ptr<const odbstore::Reader> reader_;
  PageData data_;
  inspect::ModelMesh mesh_;
  Surface surface_;
  std::vector<MeshSet> sets_;
  std::optional<PageRecords> records_;
  Json description_;
  std::vector<std::string> notes_;
  PageSummary summary_;
};

void Page::addMessages() {
  description_["messages"] = Json::array();
  if (request_.messages.empty()) return;
  for (const std::string& line : messageLines(request_.messages)) description_["messages"].push_back(line);
}

void Page::addModel() {
  mesh_ = inspect::readMesh(*reader_);
  sets_ = meshSets(*reader_, mesh_);
  surface_ = surfaceOf(mesh_, sets_);
  summary_.triangles = surface_.triangles();
  PageData trial(data_.room());
  Json model = modelPart(mesh_, surface_, trial);
  if (mesh_.isEmpty()) return note("the database has no mesh, so there is no picture of the model");
  if (!data_.hasRoomFor(trial.text().size())) {
    surface_ = {};
    surface_.vertexOf.assign(mesh_.nodeLabels.size(), -1);
    surface_.elementOf.assign(mesh_.elementLabels.size(), -1);
    return note(fmt::format("the surface of the model takes {:.1f} MB, for which the page has no room",
                            static_cast<double>(trial.text().size()) / 1e6));
  }
  description_["model"] = modelPart(mesh_, surface_, data_);
  std::size_t leftOut = 0;
  description_["sets"] = setsPart(sets_, surface_, request_.mostBytes / kShareOfSets, data_, leftOut);
  if (leftOut > 0) note(fmt::format("{} sets cannot be shown in the picture for want of room", leftOut));
}

void Page::addHistories() {
  std::size_t leftOut = 0;
  description_["histories"] = historiesPart(*reader_, request_.mostBytes / kShareOfHistories, data_, leftOut);
  if (leftOut > 0) note(fmt::format("{} histories are left out for want of room", leftOut));
}

void Page::readRecords() {
  if (request_.params.empty()) return;
  records_.emplace(RecordsSource{request_.params, request_.configuration}, reader_,
                   request_.mostBytes / kShareOfRecords);
  summary_.records = records_->shown();
  data_.reserve(records_->bytes());
  if (records_->unknown() > 0)
    note(fmt::format("{} of {} records are not of this database", records_->unknown(), records_->shown()));
  if (records_->leftOut() > 0) note(fmt::format("{} records are left out for want of room", records_->leftOut()));
}

void Page::addFields() {
  data_.reserve(scriptText(description_).size());
  FieldsPart part = fieldsPart(*reader_, mesh_, surface_, data_);
  summary_.frames = part.frames.size();
  description_["fields"] = std::move(part.fields);
  description_["frames"] = std::move(part.frames);
  if (part.leftOut > 0)
    note(fmt::format("{} of {} fields in frames are left out for want of room", part.leftOut,
                     part.leftOut + part.shown.size()));
  if (part.withoutDetails > 0)
    note(fmt::format("of {} tensors in frames there is the equivalent stress alone for want of room",
                     part.withoutDetails));
  if (records_) description_["records"] = records_->json(mesh_, surface_, part.shown, data_);
}

void Page::write() const {
  const PageTemplate page = pageTemplate();
  base::OutputFile file(request_.page);
  std::ofstream out(file.temporaryPath(), std::ios::binary);
  out << page.beforeTitle << htmlText(description_["file"].get<std::string>()) << page.beforeData
      << "<script type=\"application/json\" id=\"description\">" << scriptText(description_)
      << "</script>\n<script type=\"text/plain\" id=\"data\">" << data_.text() << "</script>" << page.afterData;
  out.close();
  if (!out) throw base::FileError(request_.page, "", "could not be written completely");
  file.publish();
}

}  // namespace

PageSummary writePage(const PageRequest& request, const base::DiagnosticSink& warn) {
  PageSummary summary = Page(request, warn).make();
  summary.bytes = static_cast<std::size_t>(std::filesystem::file_size(request.page));
  return summary;
}

}  // namespace report
