// The elements of a project file, each with the bytes it stands on, so that the text can be edited in place.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

struct TByteSpan {
  std::size_t Begin = 0;
  std::size_t End = 0;
};

// One element. Positions count bytes from the start of the file, byte-order mark included.
struct TProjectElement {
  struct TAttribute {
    std::u16string Name;
    std::u16string Value;
  };
  std::u16string Name;
  int Line = 0;
  std::vector<TAttribute> Attributes;
  std::u16string Text; // its own, without that of its children; line ends are LF
  std::vector<TProjectElement> Children;
  TByteSpan Whole;
  TByteSpan Content; // between the tags; empty, at Whole.End, for "<A/>"
  bool IsSelfClosing = false;

  const TProjectElement* Child(std::u16string_view name) const; // the first; letter case counts
  std::optional<std::u16string> Attribute(std::u16string_view name) const;
  // The first child whose attribute Name is this, whatever its letter case; null: there is none.
  const TProjectElement* Named(std::u16string_view name) const;
};

// Reads the whole of a file. Raises EKxParseError with file and line: malformed XML, another encoding than
// UTF-8, a document type.
TProjectElement ParseProjectXml(std::string_view bytes, std::u16string_view fileName);

} // namespace kx
