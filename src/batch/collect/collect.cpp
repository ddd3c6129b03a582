#include "batch/collect/collect.h"

#include <optional>

#include "base/file_error.h"
#include "batch/collect/input_state.h"
#include "batch/collect/record_columns.h"
#include "tables/record_lines.h"

namespace batch {

namespace {

constexpr std::size_t kHeadColumns = 3;

class Collector {
 public:
  Collector(const BatchDirectory& directory, const CollectRequest& request, tables::Table& table)
      : directory_(directory),
        request_(request),
        table_(table),
        inputs_(directory.inputs()),
        settings_(directory.lastSettings()),
        records_(request.patterns) {}

  CollectSummary run() {
    table_.begin(columns());
    for (const BatchInput& input : inputs_) {
      const InputState state = stateWithParams(directory_, input, settings_, params_);
      count(state);
      putHead(input, state);
      if (request_.isLong) {
        putLong();
      } else {
        putWide();
      }
    }
    table_.end();
    return summary_;
  }

 private:
  std::vector<tables::Column> columns() {
    std::vector<tables::Column> columns = {{"input"}, {"status"}, {"reason"}};
    if (request_.isLong) {
      columns.push_back({"record"});
      columns.push_back({"value", true});
      return columns;
    }
    for (const BatchInput& input : inputs_) {
      stateWithParams(directory_, input, settings_, params_);
      records_.beginRow();
      tables::forEachRecord(params_, [&](std::string_view name, std::string_view) { records_.columnOf(name); });
    }
    for (const std::string& name : records_.names()) columns.push_back({name, true});
    return columns;
  }

  void count(const InputState& state) {
    if (state.status == InputStatus::failed) ++summary_.failed;
    if (state.status == InputStatus::running || state.status == InputStatus::missing) ++summary_.unfinished;
  }

  void putHead(const BatchInput& input, const InputState& state) {
    reason_ = state.detail.empty() ? state.reason : state.reason + ": " + state.detail;
    cells_.assign(kHeadColumns + (request_.isLong ? 2 : records_.names().size()), std::nullopt);
    cells_[0] = input.path;
    cells_[1] = nameOf(state.status);
    if (!reason_.empty()) cells_[2] = reason_;
  }

  void putRow() {
    table_.row(cells_);
    ++summary_.rows;
  }

  void putLong() {
    bool hasRecord = false;
    tables::forEachRecord(params_, [&](std::string_view name, std::string_view value) {
      if (!records_.isWanted(name)) return;
      cells_[kHeadColumns] = name;
      cells_[kHeadColumns + 1] = value;
      hasRecord = true;
      putRow();
    });
    if (!hasRecord) putRow();
  }

  void putWide() {
    records_.beginRow();
    tables::forEachRecord(params_, [&](std::string_view name, std::string_view value) {
      const std::optional<std::size_t> column = records_.knownColumnOf(name);
      if (column) {
        cells_[kHeadColumns + *column] = value;
      } else if (records_.isWanted(name)) {
        throw base::FileError(directory_.path(), "", "records came up while they were collected; collect again");
      }
    });
    putRow();
  }

  const BatchDirectory& directory_;
  const CollectRequest& request_;
  tables::Table& table_;
  std::vector<BatchInput> inputs_;
  std::string settings_;
  RecordColumns records_;
  std::string params_;
  std::string reason_;
  std::vector<tables::Cell> cells_;
  CollectSummary summary_;
};

}  // namespace

CollectSummary collect(const BatchDirectory& directory, const CollectRequest& request, tables::Table& table) {
  return Collector(directory, request, table).run();
}

}  // namespace batch
