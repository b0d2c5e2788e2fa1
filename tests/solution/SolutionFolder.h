// A folder with solutions in it, written and opened by tests.
#pragma once

#include "foundation/text/Exceptions.h"
#include "package/solution/VSNETSLN.h"
#include "tests/support/Failure.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace kx::tests {

using Strings = std::vector<std::string>;

class SolutionFolder : public testing::Test, protected TTemporaryFolder {
protected:
  std::shared_ptr<IVSDotNetSolution> Open(std::string_view name = "a.sln", bool all = true) const {
    return OpenSolution(Path(name), all);
  }
  std::shared_ptr<IVSDotNetSolution> OpenText(std::string_view text, bool all = true) const {
    Write("a.sln", text);
    return Open("a.sln", all);
  }
  // "message @ line", or "no error".
  std::string RefusalOf(std::string_view text) const {
    try {
      OpenText(text);
    } catch (const EKxParseError& error) {
      if (error.File() == Path("a.sln"))
        return error.what() + std::string(" @ ") + std::to_string(error.Line());
      return error.what();
    }
    return "no error";
  }
};

// The names of projects or of configurations.
inline Strings NamesOf(const auto& items) {
  if (!items) return {"null"};
  Strings names;
  for (int i = 0; i < items->GetCount(); ++i)
    names.push_back(text::ToUtf8(items->GetItem(i)->GetName()));
  return names;
}

inline Strings Lines(const text::TStringList& list) {
  Strings lines;
  for (const std::u16string& line : list)
    lines.push_back(text::ToUtf8(line));
  return lines;
}

} // namespace kx::tests
