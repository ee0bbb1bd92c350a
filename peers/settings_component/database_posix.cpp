#include <utility>

#include "peers/settings_component/database.h"

namespace peers {

namespace {

/// Budget of a query on an empty file, because the entries of this transaction are read too.
constexpr std::int64_t kFreeWork = 64'000'000;
/// Budget for each byte of the file. The component's own records need less than two.
constexpr std::int64_t kWorkOfByte = 8;
/// Work for each row of a result, for the memory that it takes.
constexpr std::int64_t kWorkOfRow = 256;
constexpr int kStepsBetweenLooks = 1000;

/// Returns a file name as the path of a URI (RFC 3986).
std::string Encoded(const std::string& name) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string encoded;
  for (const char character : name) {
    const auto byte = static_cast<unsigned char>(character);
    const bool isPlain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                         (byte >= '0' && byte <= '9') || character == '/' || character == '.';
    if (isPlain)
      encoded += character;
    else
      encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return encoded;
}

}  // namespace

Database::Database(const std::filesystem::path& file, int flags) {
  Open(file.string(), flags);
}

Database::Database(const std::filesystem::path& file, AsItLies) {
  Open("file:" + Encoded(file.string()) + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
}

void Database::Open(const std::string& name, int flags) {
  const int result = sqlite3_open_v2(name.c_str(), m_connection.Out(),
                                     flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW, nullptr);
  if (!m_connection) throw std::bad_alloc();
  Check(result);
  Check(sqlite3_busy_timeout(m_connection.Get(), kBusyMilliseconds));
  Restrain();
}

void Database::Restrain() {
  sqlite3* const connection = m_connection.Get();
  constexpr std::pair<int, int> kSwitches[] = {{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                               {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                               {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                               {SQLITE_DBCONFIG_ENABLE_VIEW, 0}};
  for (const auto& [name, value] : kSwitches)
    Check(sqlite3_db_config(connection, name, value, nullptr));
  constexpr std::pair<int, int> kLimits[] = {{SQLITE_LIMIT_LENGTH, 16 * 1024 * 1024},
                                             {SQLITE_LIMIT_SQL_LENGTH, 10000},
                                             {SQLITE_LIMIT_COLUMN, 32},
                                             {SQLITE_LIMIT_EXPR_DEPTH, 16},
                                             {SQLITE_LIMIT_ATTACHED, 0}};
  for (const auto& [name, value] : kLimits) sqlite3_limit(connection, name, value);
  const auto look = [](void* database) {
    return static_cast<Database*>(database)->Spend(kStepsBetweenLooks) ? 0 : 1;
  };
  sqlite3_progress_handler(connection, kStepsBetweenLooks, look, this);
  m_budget = kFreeWork;
  Execute("PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0");
  m_budget += kWorkOfByte * Number("PRAGMA page_count") * Number("PRAGMA page_size");
}

std::string Database::Row::Text(int column) const {
  const unsigned char* text = sqlite3_column_text(m_statement, column);
  const int size = sqlite3_column_bytes(m_statement, column);
  if (text == nullptr) return {};
  m_database.Require(m_database.Spend(size));
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)};
}

std::int64_t Database::Number(const char* sql) {
  std::int64_t number = 0;
  Query(sql, [&](const Row& row) { number = row.Whole(0); });
  return number;
}

void Database::Execute(const char* sql) {
  m_spent = 0;
  const platform::NoSizeSignal guard;
  Check(sqlite3_exec(m_connection.Get(), sql, nullptr, nullptr, nullptr));
}

void Database::Checkpoint() {
  const platform::NoSizeSignal guard;
  const int result = sqlite3_wal_checkpoint_v2(m_connection.Get(), nullptr,
                                               SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  if (result != SQLITE_BUSY) Check(result);
}

sqlite3_stmt* Database::Prepare(const char* sql) {
  auto& kept = m_statements[sql];
  if (!kept)
    Check(sqlite3_prepare_v3(m_connection.Get(), sql, -1, SQLITE_PREPARE_PERSISTENT, kept.Out(),
                             nullptr));
  return kept.Get();
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
  if (result == SQLITE_ROW) Require(Spend(kWorkOfRow));
  return result == SQLITE_ROW;
}

void Database::Require(bool isWithinBudget) const {
  if (!isWithinBudget)
    throw DatabaseError("it takes more work than a setting file of its size has to");
}

void Database::Check(int result) const {
  Require(result != SQLITE_INTERRUPT);
  if (result != SQLITE_OK) throw DatabaseError(sqlite3_errmsg(m_connection.Get()));
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
    // A failed statement may have rolled back already.
  }
}

void Transaction::Commit() {
  m_open->Run("COMMIT");
  m_open = nullptr;
}

}  // namespace peers
