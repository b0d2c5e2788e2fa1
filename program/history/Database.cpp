#include "program/history/Database.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"

#include <sqlite3.h>

namespace kx::history {

namespace {

[[noreturn]] void Fail(sqlite3* database, int code) {
  const int kind = code & 0xFF; // the rest says it more precisely
  throw EDatabase(text::FromUtf8(database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(code)) +
                      u".",
                  kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB);
}

void Check(sqlite3_stmt* statement, int code) {
  if (code != SQLITE_OK) Fail(sqlite3_db_handle(statement), code);
}

} // namespace

void TStatement::TFinalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

void TStatement::Begin() {
  sqlite3_reset(statement_.get()); // says again what the last step said
}

bool TStatement::Next() {
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) Fail(sqlite3_db_handle(statement_.get()), code);
  sqlite3_reset(statement_.get());
  return false;
}

void TStatement::Run() {
  Next();
  Begin(); // a statement that is under way would be in the way of the end of the transaction
}

std::int64_t TStatement::Only() {
  const std::int64_t value = Next() ? Integer(0) : 0;
  Begin();
  return value;
}

std::int64_t TStatement::Integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::u16string TStatement::Text(int column) const {
  const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(statement_.get(), column));
  const auto bytes = static_cast<std::size_t>(sqlite3_column_bytes16(statement_.get(), column));
  return text == nullptr ? std::u16string() : std::u16string(text, bytes / sizeof(char16_t));
}

std::string_view TStatement::Bytes(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
  return bytes == nullptr ? std::string_view() : std::string_view(bytes, size);
}

void TStatement::Bind(int place, std::int64_t value) {
  Check(statement_.get(), sqlite3_bind_int64(statement_.get(), place, value));
}

void TStatement::Bind(int place, const std::u16string& text) {
  Check(statement_.get(),
        sqlite3_bind_text16(statement_.get(), place, text.data(),
                            static_cast<int>(text.size() * sizeof(char16_t)), SQLITE_TRANSIENT));
}

void TStatement::Bind(int place, const TBytes& bytes) {
  Check(statement_.get(), sqlite3_bind_blob(statement_.get(), place, bytes.data(),
                                            static_cast<int>(bytes.size()), SQLITE_TRANSIENT));
}

void TDatabase::TClose::operator()(sqlite3* database) const {
  sqlite3_close(database);
}

TDatabase::TDatabase(const std::u16string& file, TMode mode, std::chrono::milliseconds patience) {
  const int flags = SQLITE_OPEN_READWRITE | (mode == TMode::Create ? SQLITE_OPEN_CREATE : 0);
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(text::ToUtf8(platform::ResolveForWriting(file)).c_str(), &opened,
                                   flags | SQLITE_OPEN_NOMUTEX, nullptr);
  database_.reset(opened);
  if (code != SQLITE_OK) Fail(opened, code);
  sqlite3_busy_timeout(opened, static_cast<int>(patience.count()));
}

void TDatabase::Execute(const char* statements) {
  const int code = sqlite3_exec(database_.get(), statements, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) Fail(database_.get(), code);
}

TStatement TDatabase::Prepare(std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  const int code =
      sqlite3_prepare_v2(database_.get(), sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
  if (code != SQLITE_OK) Fail(database_.get(), code);
  return TStatement(statement);
}

std::int64_t TDatabase::Integer(std::string_view sql) {
  return Prepare(sql).Only();
}

TTransaction::~TTransaction() {
  // Nothing to take back after Commit, and a failure may have done it already.
  if (sqlite3_get_autocommit(database_.database_.get()) == 0)
    sqlite3_exec(database_.database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

} // namespace kx::history
