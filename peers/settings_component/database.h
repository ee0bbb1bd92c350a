#pragma once

// A SQLite database in the few words that the setting file needs. Every failure is a DatabaseError.
//
// The file is data, whoever has made it: triggers and views in it never run, its schema calls no
// function that reaches outside, and no text, row or statement is longer than 16 MiB, 16 MiB and
// 10,000 bytes. Each query has a budget of work that rises with the size of the file and that one
// of the component never spends; a file that is built to be read without end fails on it.

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

  /// `flags` are those of sqlite3_open_v2. A busy database is waited for up to `kBusyMilliseconds`.
  Database(const std::filesystem::path& file, int flags);
  /// To read a file that nobody changes meanwhile, without any write: no file is made beside it,
  /// and what a log file beside it holds is passed over.
  struct AsItLies {};
  Database(const std::filesystem::path& file, AsItLies);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Runs one statement and gives the number of rows that it changed. `sql` must be a literal: its
  /// prepared form is kept.
  template <class... Values>
  int Run(const char* sql, const Values&... values) {
    Query(
        sql, [](const Row&) {}, values...);
    return sqlite3_changes(m_connection.Get());
  }

  /// Calls `action` with each row that the statement gives.
  template <class Action, class... Values>
  void Query(const char* sql, Action action, const Values&... values) {
    const platform::NoSizeSignal guard;
    const Use use(*this, Prepare(sql));
    int place = 0;
    (Bind(use.statement, ++place, values), ...);
    while (Step(use.statement)) action(Row(*this, use.statement));
  }

  std::int64_t Number(const char* sql);

  /// Runs several statements that give nothing back and are needed once.
  void Execute(const char* sql);

  /// Brings what the log file holds into the database file, on the disk for good, unless another
  /// connection is just about to.
  void Checkpoint();

 private:
  static constexpr int kBusyMilliseconds = 10000;

  /// A prepared statement is ready for its next use when this one ends. The queries within a query
  /// share its budget.
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
  /// Takes bytes, or steps of the database's machine, out of the budget; false when it is spent.
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
