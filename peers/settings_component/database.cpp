#include "peers/settings_component/database.h"

namespace peers {

Database::Database(const std::filesystem::path& file, int flags) {
  sqlite3* connection = nullptr;
  const int result =
      sqlite3_open_v2(file.c_str(), &connection, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  m_connection.reset(connection);
  if (!connection) throw std::bad_alloc();
  if (result != SQLITE_OK) throw DatabaseError(file.string() + ": " + sqlite3_errmsg(connection));
  Check(sqlite3_busy_timeout(connection, kBusyMilliseconds));
}

std::string Database::Row::Text(int column) const {
  const unsigned char* text = sqlite3_column_text(m_statement, column);
  const int size = sqlite3_column_bytes(m_statement, column);
  if (text == nullptr) return {};
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)};
}

std::int64_t Database::Number(const char* sql) {
  std::int64_t number = 0;
  Query(sql, [&](const Row& row) { number = row.Whole(0); });
  return number;
}

void Database::Execute(const char* sql) {
  Check(sqlite3_exec(m_connection.get(), sql, nullptr, nullptr, nullptr));
}

void Database::Checkpoint() {
  const int result = sqlite3_wal_checkpoint_v2(m_connection.get(), nullptr,
                                               SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  if (result != SQLITE_BUSY) Check(result);
}

sqlite3_stmt* Database::Prepare(const char* sql) {
  auto& kept = m_statements[sql];
  if (!kept) {
    sqlite3_stmt* statement = nullptr;
    Check(sqlite3_prepare_v3(m_connection.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement,
                             nullptr));
    kept.reset(statement);
  }
  return kept.get();
}

void Database::Bind(sqlite3_stmt* statement, int place, std::string_view text) {
  // An empty view may have no address, which SQLite would take for NULL.
  const char* first = text.empty() ? "" : text.data();
  Check(sqlite3_bind_text64(statement, place, first, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Database::Bind(sqlite3_stmt* statement, int place, double number) {
  Check(sqlite3_bind_double(statement, place, number));
}

bool Database::Step(sqlite3_stmt* statement) {
  const int result = sqlite3_step(statement);
  if (result != SQLITE_ROW && result != SQLITE_DONE) Check(result);
  return result == SQLITE_ROW;
}

void Database::Check(int result) const {
  if (result != SQLITE_OK) throw DatabaseError(sqlite3_errmsg(m_connection.get()));
}

Transaction::Transaction(Database& database) : m_open(&database) {
  database.Run("BEGIN IMMEDIATE");
}

Transaction::Transaction(Database& database, Reading) : m_open(&database) {
  database.Run("BEGIN");
}

Transaction::~Transaction() {
  if (m_open == nullptr) return;
  try {
    m_open->Run("ROLLBACK");
  } catch (const DatabaseError&) {
    // A failed statement may have undone the whole already.
  }
}

void Transaction::Commit() {
  m_open->Run("COMMIT");
  m_open = nullptr;
}

}  // namespace peers
