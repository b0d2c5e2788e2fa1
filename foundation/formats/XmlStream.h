// XML documents read in one pass, for files too large to keep as a tree. What is refused, and the encodings,
// are those of TXmlDocument; only a text may be longer than a tree holds.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kx {

// One start tag. Names and values are UTF-8, and valid during the call that hands it over.
class IXmlStartTag {
public:
  virtual ~IXmlStartTag() = default;
  virtual std::string_view Name() const = 0; // without a prefix
  virtual std::string_view NamespaceUri() const = 0;
  virtual std::optional<std::u16string> GetAttribute(std::string_view name) const = 0; // without a namespace
  virtual int Line() const = 0; // where the tag ends, from 1
};

// Receives the document in its order. What it raises ends the reading and passes through TXmlStream::Load.
class IXmlEvents {
public:
  virtual ~IXmlEvents() = default;
  virtual void StartElement(const IXmlStartTag& tag) = 0;
  virtual void EndElement() = 0;
  // A piece of text or of a CDATA section inside the innermost open element, in UTF-8; never part of a
  // character.
  virtual void Text(std::string_view utf8) = 0;
};

// Hands a document to `events`, which outlives it.
class TXmlStream {
public:
  explicit TXmlStream(IXmlEvents& events) : events_(events) {}

  // False when the document cannot be read to its end; ParseError says why, and whatever the events have
  // received is worthless.
  bool Load(std::u16string_view fileName);
  bool LoadBytes(std::string_view bytes);
  const std::u16string& ParseError() const { return error_; }

private:
  IXmlEvents& events_;
  std::u16string error_;
};

} // namespace kx
