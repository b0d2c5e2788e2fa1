// Projects for the targets that need some: the small actions of the tests, and nothing that runs.
#pragma once

#include "fuzz/FuzzTarget.h"
#include "program/runner/Project.h"
#include "program/runner/ServiceRegistry.h"
#include "tests/support/RecordingHost.h"

#include <string>
#include <string_view>

namespace kx::fuzz {

// Where actions live that nobody runs; made once, since inputs are many.
struct TQuietHost {
  TQuietHost();
  TOptionsStore Store;
  TServiceRegistry Services{Store};
  tests::TRecordingHost Host;
};
TQuietHost& QuietHost();

bool IsProject(std::string_view bytes);

// A text that a file can hold: what XML forbids is left out, line ends are the host's.
std::u16string StorableText(std::string_view utf8);

} // namespace kx::fuzz
