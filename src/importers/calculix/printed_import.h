// Brings the rows of printed tables (.dat) into the database.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "importers/calculix/contents.h"
#include "importers/calculix/model.h"
#include "importers/calculix/printed_histories.h"
#include "odbstore/writer.h"

namespace importers::calculix {

class PrintedImport {
 public:
  // `contents` says which tables make fields, `frames` where those are.
  PrintedImport(const std::string& path, const Contents& contents, const Model& model, odbstore::Writer& writer,
                const std::map<FrameNumber, odbstore::FrameId>& frames);

  // Reads the file once more: rows of tables that `histories` takes go there, those that make fields into the database.
  // A row that is damaged is an ImportError with its line. `fields` receives the names of the fields.
  void run(PrintedHistories& histories, std::set<std::string>& fields,
           const std::function<void(std::uint64_t done, std::uint64_t all)>& progress);

 private:
  struct Rows {
    std::vector<int> first;   // node or element
    std::vector<int> second;  // integration point
    std::vector<bool> areLocal;
    std::vector<float> numbers;
    std::size_t width = 0;
  };

  void readTable(DatReader& reader, const PrintedTable& table, const ContentsBlock* block, PrintedHistories* histories);
  void addFields(const PrintedTable& table, const ContentsBlock& block);
  void addBlocks(const PrintedTable& table, const MappedField& field, odbstore::FieldId id);
  odbstore::FieldId fieldOf(FrameNumber frame, const MappedField& field);

  std::string path_;
  const Contents& contents_;
  const Model& model_;
  odbstore::Writer& writer_;
  const std::map<FrameNumber, odbstore::FrameId>& frames_;
  Rows rows_;  // of the table being read
  // The fields of the last frame: tables of several sets make several blocks of one field.
  FrameNumber frame_ = 0;
  std::map<std::string, odbstore::FieldId> fields_;
};

}  // namespace importers::calculix
