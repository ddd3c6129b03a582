#include "tables/sqlite_table.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <set>

#include "base/file_error.h"

namespace tables {

// The border to SQLite: each call is checked, failures name the file.
struct SqliteTable::Connection {
  std::string name;
  sqlite3* database = nullptr;
  sqlite3_stmt* insertion = nullptr;

  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    sqlite3_finalize(insertion);
    sqlite3_close(database);
  }

  void check(int status) const {
    if (status == SQLITE_OK || status == SQLITE_DONE) return;
    throw base::FileError(name, "", fmt::format("cannot be written: {}", sqlite3_errmsg(database)));
  }
  void execute(const std::string& statement) const {
    check(sqlite3_exec(database, statement.c_str(), nullptr, nullptr, nullptr));
  }
  void bindText(int place, std::string_view text) const {
    check(sqlite3_bind_text64(insertion, place, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8));
  }
};

namespace {

std::string quoted(const std::string& name) {
  std::string text = "\"";
  for (const char c : name) text += c == '"' ? std::string("\"\"") : std::string(1, c);
  return text + "\"";
}

// SQLite takes names that differ in the case of letters for the same.
class DistinctNames {
 public:
  std::string add(const std::string& name) {
    std::string distinct = name;
    for (int number = 2; !names_.insert(lower(distinct)).second; ++number)
      distinct = fmt::format("{}#{}", name, number);
    return distinct;
  }

 private:
  static std::string lower(std::string text) {
    for (char& c : text) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
  }

  std::set<std::string> names_;
};

}  // namespace

SqliteTable::SqliteTable(const std::string& path, std::string name, std::string table)
    : name_(std::move(name)), table_(std::move(table)), connection_(std::make_unique<Connection>()) {
  connection_->name = name_;
  // Without SQLite's own locks: whoever made the file holds one that they would meet.
  const int status = sqlite3_open_v2(path.c_str(), &connection_->database, SQLITE_OPEN_READWRITE, "unix-none");
  connection_->check(status);
  connection_->execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA temp_store = MEMORY");
}

SqliteTable::~SqliteTable() = default;

void SqliteTable::begin(const std::vector<Column>& columns) {
  const int most = sqlite3_limit(connection_->database, SQLITE_LIMIT_COLUMN, -1);
  if (columns.size() > static_cast<std::size_t>(most)) {
    throw base::FileError(
        name_, "",
        fmt::format("cannot be written: the table has {} columns, and SQLite takes {}; choose records, "
                    "or write the long form",
                    columns.size(), most));
  }
  columns_ = columns;
  DistinctNames names;
  std::string definitions;
  std::string places;
  for (const Column& column : columns) {
    definitions += (definitions.empty() ? "" : ", ") + quoted(names.add(column.name)) + (column.isValue ? "" : " TEXT");
    places += places.empty() ? "?" : ", ?";
  }
  connection_->execute("BEGIN");
  connection_->execute(fmt::format("CREATE TABLE {} ({})", quoted(table_), definitions));
  const std::string insertion = fmt::format("INSERT INTO {} VALUES ({})", quoted(table_), places);
  connection_->check(
      sqlite3_prepare_v2(connection_->database, insertion.c_str(), -1, &connection_->insertion, nullptr));
}

namespace {

// The whole of a text as a number; nothing where it is none. What is not a number to SQLite would be stored as NULL.
template <class Number>
std::optional<Number> numberIn(std::string_view text) {
  Number number{};
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = failure == std::errc() && end == text.data() + text.size() && number == number;
  return isWhole ? std::optional(number) : std::nullopt;
}

}  // namespace

void SqliteTable::bindValue(int place, std::string_view text, const Column& column) const {
  const Connection& connection = *connection_;
  const auto whole = column.isWhole ? numberIn<std::int64_t>(text) : std::nullopt;
  const auto number = column.isValue && !whole ? numberIn<double>(text) : std::nullopt;
  if (whole) {
    connection.check(sqlite3_bind_int64(connection.insertion, place, *whole));
  } else if (number) {
    connection.check(sqlite3_bind_double(connection.insertion, place, *number));
  } else {
    connection.bindText(place, text);
  }
}

void SqliteTable::row(const std::vector<Cell>& cells) {
  const Connection& connection = *connection_;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const int place = static_cast<int>(i) + 1;
    if (!cells[i] || (columns_[i].isValue && *cells[i] == "None")) {
      connection.check(sqlite3_bind_null(connection.insertion, place));
    } else {
      bindValue(place, *cells[i], columns_[i]);
    }
  }
  connection.check(sqlite3_step(connection.insertion));
  connection.check(sqlite3_reset(connection.insertion));
}

void SqliteTable::end() {
  connection_->execute("COMMIT");
  connection_.reset();
}

}  // namespace tables
