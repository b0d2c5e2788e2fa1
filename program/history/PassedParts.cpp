#include "program/history/PassedParts.h"

#include "foundation/platform/Files.h"
#include "program/history/HistoryFile.h"

namespace kx::history {

TPassedParts ReadPassedParts(const std::u16string& file) {
  TPassedParts parts;
  if (file.empty() || !platform::FileExists(file)) return parts;
  try {
    TDatabase database = OpenToAsk(file);
    TStatement rows = database.Prepare("SELECT part, state FROM passed");
    rows.With();
    while (rows.Next())
      parts.emplace(rows.Text(0), rows.Bytes(1));
  } catch (const EKxException&) {
    parts.clear(); // the run finds out for itself
  }
  return parts;
}

std::u16string RememberPassedParts(const std::u16string& file, const TPassedParts& parts) {
  if (file.empty()) return {};
  try {
    TDatabase database = OpenToAdd(file);
    TTransaction transaction(database);
    database.Execute("DELETE FROM passed");
    TStatement add = database.Prepare("INSERT INTO passed VALUES(?, ?)");
    for (const auto& [part, state] : parts)
      add.With(part, TBytes(state)).Run();
    transaction.Commit();
    return {};
  } catch (const EKxException& error) {
    return u"What this run has done cannot be remembered for --resume. " + error.Message();
  }
}

} // namespace kx::history
