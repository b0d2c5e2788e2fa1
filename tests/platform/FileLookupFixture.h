// A folder of files, and a look-up into it that lives as long.
#pragma once

#include "foundation/platform/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::platform {

class TFileLookupFixture : public testing::Test, protected tests::TTemporaryFolder {
protected:
  bool Exists(std::string_view name) { return lookup_.FileExists(Path(name)); }
  bool ExistsNow(std::string_view name) {
    lookup_.Refresh();
    return Exists(name);
  }

  FileLookup lookup_;
};

} // namespace kx::platform
