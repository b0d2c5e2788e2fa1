#include "program/runner/TextEdits.h"

#include <algorithm>

namespace kx {

std::string TTextEdits::Apply(std::string_view bytes) const {
  auto edits = edits_;
  std::ranges::stable_sort(edits, {}, [](const TEdit& edit) { return edit.Span.Begin; });
  std::string result;
  std::size_t at = 0;
  for (const TEdit& edit : edits) {
    result += bytes.substr(at, edit.Span.Begin - at);
    result += edit.Text;
    at = edit.Span.End;
  }
  return result += bytes.substr(at);
}

} // namespace kx
