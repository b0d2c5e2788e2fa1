#include "program/history/HistoryFile.h"

#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"

#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace kx::history {

namespace {

constexpr auto Patience = std::chrono::seconds(2); // the others are done in milliseconds
constexpr std::int64_t Application = 0x6B784869;   // "kxHi", in the head of each of our files

// Each step makes the next version of the schema, user_version. Only ever add steps.
//
// A run has a number; what happened in it has its number, too, so that a range of runs is a range of rows.
// What returns in many runs (findings, tests, names) is there once and knows the last run that had it: so it
// is known what a run has fixed, and what belongs to no run any more. Times are in milliseconds, results
// those of TResultKind, severities those of TFindingSeverity, "tests" and "findings" of a run as in
// Outcomes.h.
constexpr auto Steps = std::to_array<const char*>({R"(
  CREATE TABLE runs(
    run INTEGER PRIMARY KEY, began INTEGER NOT NULL, result INTEGER NOT NULL, elapsed INTEGER NOT NULL,
    errors INTEGER NOT NULL, warnings INTEGER NOT NULL,
    passed INTEGER NOT NULL, failed INTEGER NOT NULL, not_run INTEGER NOT NULL,
    new_findings INTEGER NOT NULL, fixed_findings INTEGER NOT NULL,
    machine TEXT NOT NULL, system TEXT NOT NULL, commit_id TEXT NOT NULL, branch TEXT NOT NULL,
    command_line TEXT NOT NULL, tools TEXT NOT NULL);
  CREATE TABLE outcomes(run INTEGER PRIMARY KEY, tests BLOB NOT NULL, findings BLOB NOT NULL);
  CREATE TABLE names(id INTEGER PRIMARY KEY, text TEXT NOT NULL UNIQUE, last_run INTEGER NOT NULL);
  CREATE TABLE parts(
    run INTEGER NOT NULL, number INTEGER NOT NULL, nesting INTEGER NOT NULL,
    action INTEGER NOT NULL, configuration INTEGER NOT NULL, project INTEGER NOT NULL,
    result INTEGER NOT NULL, began INTEGER NOT NULL, elapsed INTEGER NOT NULL,
    errors INTEGER NOT NULL, warnings INTEGER NOT NULL,
    PRIMARY KEY(run, number)) WITHOUT ROWID;
  CREATE TABLE metrics(
    run INTEGER NOT NULL, number INTEGER NOT NULL, action INTEGER NOT NULL, configuration INTEGER NOT NULL,
    name INTEGER NOT NULL, value INTEGER NOT NULL,
    PRIMARY KEY(run, number)) WITHOUT ROWID;
  CREATE TABLE tests(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, last_run INTEGER NOT NULL);
  CREATE TABLE findings(
    id INTEGER PRIMARY KEY, fingerprint TEXT NOT NULL UNIQUE, rule TEXT NOT NULL, severity INTEGER NOT NULL,
    message TEXT NOT NULL, file TEXT NOT NULL, line INTEGER NOT NULL, "column" INTEGER NOT NULL,
    code TEXT NOT NULL, project TEXT NOT NULL, configuration TEXT NOT NULL, action TEXT NOT NULL,
    advice TEXT NOT NULL, since_run INTEGER NOT NULL, since INTEGER NOT NULL, last_run INTEGER NOT NULL);
)",
                                                   R"(
  CREATE TABLE passed(part TEXT PRIMARY KEY, state BLOB NOT NULL) WITHOUT ROWID;
)"});

// In this order: another run may make the file between the two questions, its tables and its mark at once.
void RequireOwn(TDatabase& database) {
  if (database.Integer("SELECT count(*) FROM sqlite_master") == 0) return; // a new one
  if (database.Integer("PRAGMA application_id") == Application) return;
  throw EKxException(u"It is a database of another program.");
}

TDatabase Open(const std::u16string& file, TDatabase::TMode mode) {
  TDatabase database(file, mode, Patience);
  database.Execute("PRAGMA synchronous=NORMAL; PRAGMA temp_store=MEMORY");
  RequireOwn(database);
  const auto newest = static_cast<std::int64_t>(Steps.size());
  if (database.Integer("PRAGMA user_version") == newest) return database;
  TTransaction transaction(database);
  const std::int64_t version = database.Integer("PRAGMA user_version"); // somebody else may have been first
  if (version > newest) throw EKxException(u"It was written by a newer version of this program.");
  for (auto step = static_cast<std::size_t>(version); step < Steps.size(); ++step)
    database.Execute(Steps[step]);
  database.Execute(("PRAGMA application_id=" + std::to_string(Application) +
                    "; PRAGMA user_version=" + std::to_string(newest))
                       .c_str());
  transaction.Commit();
  return database;
}

// By the head of the file; the application's number stands there in the order of the network.
bool IsOurs(const std::u16string& file) {
  constexpr std::string_view magic("SQLite format 3\0", 16);
  constexpr std::size_t applicationAt = 68;
  auto reader = platform::FileReader::Open(file);
  std::array<char, 72> head{};
  if (!reader) return false;
  const auto size = reader->Read(head.data(), head.size());
  const std::string_view bytes(head.data(), head.size());
  return size && *size == head.size() && bytes.starts_with(magic) && bytes.substr(applicationAt) == "kxHi";
}

} // namespace

TDatabase OpenToAdd(const std::u16string& file) {
  const auto made = platform::CreateDirectories(text::ExtractFileDir(file));
  if (!made) throw EKxException(made.Message());
  return Open(file, TDatabase::TMode::Create);
}

TDatabase OpenToAsk(const std::u16string& file) {
  return Open(file, TDatabase::TMode::Existing);
}

std::u16string SetAside(const std::u16string& file, bool isOwn) {
  if (!isOwn && !IsOurs(file)) return {};
  std::u16string aside = file + u".damaged";
  for (const auto* part : {u"", u"-journal"}) { // the journal of the one must not be played into the next
    std::error_code error;
    std::filesystem::rename(platform::ResolveForWriting(file + part),
                            platform::ResolveForWriting(aside + part), error);
    if (error && *part == u'\0') return {};
  }
  return aside;
}

} // namespace kx::history
