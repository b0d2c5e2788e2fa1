// Changes to some places of a text; all other bytes stay.
#pragma once

#include "program/runner/ProjectXml.h"

#include <string>
#include <string_view>
#include <vector>

namespace kx {

class TTextEdits {
public:
  // Spans must not overlap. Of several insertions at one place the first comes first.
  void Replace(TByteSpan span, std::string text) { edits_.push_back({span, std::move(text)}); }
  void Insert(std::size_t at, std::string text) { Replace({at, at}, std::move(text)); }
  std::string Apply(std::string_view bytes) const;

private:
  struct TEdit {
    TByteSpan Span;
    std::string Text;
  };
  std::vector<TEdit> edits_;
};

} // namespace kx
