#pragma once

// The few operations of a SQLite database that the setting file needs. Every failure throws
// DatabaseError.
//
// The file may be hostile. Triggers and views in it never run, and its schema calls no function
// that reaches outside. A text and a row have at most 16 MiB, a statement 10,000 bytes. Each query
// has a budget of work in proportion to the size of the file. The component's own files never use
// it up; a file that is built to be read without end fails on it.

#include <sqlite3.h>

#include <concepts>
#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/owner.h"
#include "platform/posix/machine/size_signal.h"

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
    Row(Database& database, sqlite3_stmt* statement)
        : m_database(database), m_statement(statement) {}
    std::int64_t Whole(int column) const { return sqlite3_column_int64(m_statement, column); }
    std::int32_t Int(int column) const { return sqlite3_column_int(m_statement, column); }
    bool Flag(int column) const { return Int(column) != 0; }
    double Real(int column) const { return sqlite3_column_double(m_statement, column); }
    std::string Text(int column) const;

   private:
    Database& m_database;
    sqlite3_stmt* m_statement;
  };

  /// `flags` are those of sqlite3_open_v2. Waits up to `kBusyMilliseconds` for a busy database.
  Database(const std::filesystem::path& file, int flags);
  /// Opens a file that nobody changes meanwhile to be read. Writes nothing: no file is made beside
  /// it. Changes that are still in a log file beside it are not seen.
  struct AsItLies {};
  Database(const std::filesystem::path& file, AsItLies);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Runs one statement and returns the number of rows that it changed. `sql` must be a literal,
  /// because its address is the key of the prepared statement.
  template <class... Values>
  int Run(const char* sql, const Values&... values) {
    Query(
        sql, [](const Row&) {}, values...);
    return sqlite3_changes(m_connection.Get());
  }

  /// Calls `action` with each row of the result.
  template <class Action, class... Values>
  void Query(const char* sql, Action action, const Values&... values) {
    const platform::NoSizeSignal guard;
    const Use use(*this, Prepare(sql));
    int place = 0;
    (Bind(use.statement, ++place, values), ...);
    while (Step(use.statement)) action(Row(*this, use.statement));
  }

  std::int64_t Number(const char* sql);

  /// Runs several statements without a result, once.
  void Execute(const char* sql);

  /// Moves the changes from the log file to the database file and syncs it, unless another
  /// connection is doing so.
  void Checkpoint();

 private:
  static constexpr int kBusyMilliseconds = 10000;

  /// Resets a prepared statement at the end. Queries inside a query share its budget.
  struct Use {
    Use(Database& owner, sqlite3_stmt* prepared) : database(owner), statement(prepared) {
      if (database.m_uses++ == 0) database.m_spent = 0;
    }
    ~Use() {
      sqlite3_reset(statement);
      sqlite3_clear_bindings(statement);
      --database.m_uses;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    Database& database;
    sqlite3_stmt* statement;
  };

  /// The last connection to a file writes the log file back.
  static void Close(sqlite3* connection) {
    const platform::NoSizeSignal guard;
    sqlite3_close(connection);
  }
  void Open(const std::string& name, int flags);
  void Restrain();
  /// Takes bytes, or steps of SQLite's virtual machine, off the budget. Returns false when it is
  /// used up.
  bool Spend(std::int64_t work) {
    m_spent += work;
    return m_spent <= m_budget;
  }
  void Require(bool isWithinBudget) const;

  sqlite3_stmt* Prepare(const char* sql);
  void Bind(sqlite3_stmt* statement, int place, std::string_view text);
  void Bind(sqlite3_stmt* statement, int place, double number);
  void Bind(sqlite3_stmt* statement, int place, std::integral auto number) {
    Check(sqlite3_bind_int64(statement, place, number));
  }
  bool Step(sqlite3_stmt* statement);
  void Check(int result) const;

  std::int64_t m_budget = 0;
  std::int64_t m_spent = 0;
  int m_uses = 0;
  Owner<sqlite3*, Close> m_connection;
  std::map<const char*, Owner<sqlite3_stmt*, sqlite3_finalize>> m_statements;
};

/// Rolls back at its end unless committed. Its guard spares each of its queries one.
class Transaction {
 public:
  /// For several reads of one state.
  struct Reading {};
  explicit Transaction(Database& database);
  Transaction(Database& database, Reading);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  platform::NoSizeSignal m_guard;
  Database* m_open;
};

}  // namespace peers
