#pragma once

// A SQLite database in the few words that the setting file needs. Every failure is a DatabaseError.

#include <sqlite3.h>

#include <concepts>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace peers {

class DatabaseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Database {
 public:
  /// The columns of one result row, from 0 on.
  class Row {
   public:
    explicit Row(sqlite3_stmt* statement) : m_statement(statement) {}
    std::int64_t Whole(int column) const { return sqlite3_column_int64(m_statement, column); }
    std::int32_t Int(int column) const { return sqlite3_column_int(m_statement, column); }
    bool Flag(int column) const { return Int(column) != 0; }
    double Real(int column) const { return sqlite3_column_double(m_statement, column); }
    std::string Text(int column) const;

   private:
    sqlite3_stmt* m_statement;
  };

  /// `flags` are those of sqlite3_open_v2. A busy database is waited for up to `kBusyMilliseconds`.
  Database(const std::filesystem::path& file, int flags);

  /// Runs one statement and gives the number of rows that it changed. `sql` must be a literal: its
  /// prepared form is kept.
  template <class... Values>
  int Run(const char* sql, const Values&... values) {
    Query(
        sql, [](const Row&) {}, values...);
    return sqlite3_changes(m_connection.get());
  }

  /// Calls `action` with each row that the statement gives.
  template <class Action, class... Values>
  void Query(const char* sql, Action action, const Values&... values) {
    const Use use(Prepare(sql));
    int place = 0;
    (Bind(use.statement, ++place, values), ...);
    while (Step(use.statement)) action(Row(use.statement));
  }

  std::int64_t Number(const char* sql);

  /// Runs several statements that give nothing back and are needed once.
  void Execute(const char* sql);

  /// Brings what the log file holds into the database file, on the disk for good, unless another
  /// connection is just about to.
  void Checkpoint();

 private:
  static constexpr int kBusyMilliseconds = 10000;

  struct Close {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };

  /// A prepared statement is ready for its next use when this one ends.
  struct Use {
    explicit Use(sqlite3_stmt* prepared) : statement(prepared) {}
    ~Use() {
      sqlite3_reset(statement);
      sqlite3_clear_bindings(statement);
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    sqlite3_stmt* statement;
  };

  sqlite3_stmt* Prepare(const char* sql);
  void Bind(sqlite3_stmt* statement, int place, std::string_view text);
  void Bind(sqlite3_stmt* statement, int place, double number);
  void Bind(sqlite3_stmt* statement, int place, std::integral auto number) {
    Check(sqlite3_bind_int64(statement, place, number));
  }
  bool Step(sqlite3_stmt* statement);
  void Check(int result) const;

  std::unique_ptr<sqlite3, Close> m_connection;
  std::map<const char*, std::unique_ptr<sqlite3_stmt, Close>> m_statements;
};

/// Undone at its end unless committed.
class Transaction {
 public:
  /// One view of the whole for several reads.
  struct Reading {};
  explicit Transaction(Database& database);
  Transaction(Database& database, Reading);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  Database* m_open;
};

}  // namespace peers
