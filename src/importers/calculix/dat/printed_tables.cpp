#include "importers/calculix/dat/printed_tables.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>
#include <utility>

#include "importers/calculix/dat/printed_rows.h"
#include "importers/calculix/dat/row_layout.h"

namespace importers::calculix {

namespace {

bool keepsRows(const DatFormat& format) { return format.rows == DatRows::mode || format.rows == DatRows::total; }

class PrintedTableReader {
 public:
  PrintedTableReader(const std::string& path, const Deck& deck) : reader_(path), rows_(deck) {}

  PrintedTables read() {
    DatTable section;
    for (std::size_t ordinal = 0; const std::optional<DatTable> head = reader_.next(); ++ordinal) {
      PrintedTable table;
      table.ordinal = ordinal;
      table.head = *head;
      table.format = &datFormatOf(*head);
      if (table.format->rows == DatRows::section) section = *head;
      if (table.format->rows == DatRows::total && !head->time) {
        table.isOfSection = true;
        table.head.set = section.set;
        table.head.time = section.time;
      }
      if (table.format->title.empty()) noteUnknown(*head);
      lastIsKnown_ = table.format->rows != DatRows::ignored;
      if (!lastIsKnown_) continue;
      readRows(table);
      printed_.tables.push_back(std::move(table));
    }
    finish();
    return std::move(printed_);
  }

 private:
  void noteUnknown(const DatTable& head) {
    // Text between tables is not a table.
    DatRow row;
    if (!reader_.nextRow(row) || !noted_.insert(head.title).second) return;
    printed_.problems.push_back(
        {head.line, fmt::format("tables of \"{}\" are not known, and are left out", head.title), true});
  }

  void leaveOut(PrintedTable& table, const std::string& why) {
    if (table.isLeftOut) return;
    table.isLeftOut = true;
    printed_.problems.push_back({reader_.lineNumber(), fmt::format("{}, and the table is left out", why), true});
  }

  void readRows(PrintedTable& table) {
    rows_.start(*table.format, table.head);
    layout_.forget();
    std::string_view line;
    while (reader_.nextRow(line)) {
      if (table.isLeftOut) continue;
      if (layout_.fits(line, values_.labels)) {
        ++table.rows;
        note(table, line);
      } else {
        readRow(table, line);
      }
    }
  }

  void readRow(PrintedTable& table, std::string_view line) {
    splitRow(line, row_);
    if (isRemark(row_)) return;
    ++table.rows;
    if (!readDatRow(*table.format, row_, values_)) {
      return leaveOut(table, fmt::format("this is not a row of {}", table.head.title));
    }
    const std::size_t numbers = values_.numbers.size();
    if (table.rows == 1) {
      const auto columns = datColumns(*table.format, table.head.heading, numbers);
      if (!columns) {
        return leaveOut(
            table, fmt::format("the heading of {} does not fit its rows of {} numbers", table.head.title, numbers));
      }
      table.columns = *columns;
      table.width = numbers;
    } else if (numbers != table.width) {
      return leaveOut(table, fmt::format("this is not a row of {}", table.head.title));
    }
    note(table, line);
    if (keepsRows(*table.format)) {
      table.kept.push_back(values_);
    } else {
      layout_.learn(line, table.format->labels());
    }
  }

  void note(PrintedTable& table, std::string_view line) {
    rows_.add(values_);
    (values_.isLocal ? table.hasLocalRows : table.hasGlobalRows) = true;
    table.fingerprint = table.fingerprint * 31 + std::hash<std::string_view>()(line);
  }

  void finish() {
    printed_.lastLine = reader_.lineNumber();
    const bool endsInLine = reader_.isCutOff();
    printed_.isCutOff = endsInLine || (lastIsKnown_ && rows_.areMissing());
    if (!printed_.isCutOff || !lastIsKnown_ || printed_.tables.empty()) return;
    std::erase_if(printed_.problems,
                  [this](const PrintedProblem& problem) { return problem.line >= printed_.tables.back().head.line; });
    printed_.tables.pop_back();
  }

  PrintedTables printed_;
  DatReader reader_;
  DatRow row_;
  DatValues values_;
  RowLayout layout_;
  bool lastIsKnown_ = false;
  std::set<std::string> noted_;
  PrintedRows rows_;
};

}  // namespace

PrintedTables readPrintedTables(const std::string& path, const Deck& deck) {
  std::error_code ignored;
  if (path.empty() || !std::filesystem::exists(path, ignored)) return {};
  return PrintedTableReader(path, deck).read();
}

void reportProblems(const PrintedTables& printed, const std::string& path, bool isStrict, const WarningSink& warn) {
  for (const PrintedProblem& problem : printed.problems) {
    if (isStrict && problem.isLoss) throw ImportError(path, problem.line, problem.text);
    warn(base::warning({path, problem.line}, problem.text));
  }
}

}  // namespace importers::calculix
