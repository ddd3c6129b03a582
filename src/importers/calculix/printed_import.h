// Delivers the rows of printed tables (.dat).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "importers/calculix/contents.h"
#include "importers/calculix/dat/printed_histories.h"
#include "importers/calculix/run_outline.h"
#include "importers/run/sink.h"
#include "importers/run/source.h"

namespace importers::calculix {

class PrintedImport {
 public:
  // `plan` says what becomes of the tables. All must outlive this object.
  PrintedImport(const std::string& path, const Contents& contents, const Plan& plan, Sink& sink)
      : path_(path), contents_(contents), plan_(plan), sink_(sink) {}

  // Reads the file once more: rows of tables that `histories` takes go there, those of chosen fields to the sink.
  // Throws ImportError with the line of a damaged row.
  void run(PrintedHistories& histories, const ProgressSink& progress);

 private:
  struct Rows {
    std::vector<int> first;   // node or element
    std::vector<int> second;  // integration point
    std::vector<bool> areLocal;
    std::vector<float> numbers;
    std::size_t width = 0;
  };

  std::vector<Target> chosenOf(const PrintedTable& table) const;
  void readTable(DatReader& reader, const PrintedTable& table, const std::vector<Target>& targets,
                 PrintedHistories* histories);
  void deliver(const PrintedTable& table, const Target& target);

  std::string path_;
  const Contents& contents_;
  const Plan& plan_;
  Sink& sink_;
  Rows rows_;  // of the table being read
};

}  // namespace importers::calculix
