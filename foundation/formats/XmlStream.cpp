#include "foundation/formats/XmlStream.h"

#include "foundation/formats/LibXml.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Encoding.h"

#include <libxml/SAX2.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <span>

namespace kx {

namespace {

// Fills up to `size` bytes; 0 at the end.
using TRead = std::function<platform::Result<std::size_t>(char* buffer, std::size_t size)>;

constexpr std::size_t PieceSize = 64 * 1024;
// Of one element. The parser compares each with all before it.
constexpr int MostAttributes = 1000;
constexpr int FieldsOfAttribute = 5; // name, prefix, namespace, value, its end

std::string_view ToView(const xmlChar* text) {
  return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

// The tag as the parser hands it over: five pointers an attribute.
class TStartTag : public IXmlStartTag {
public:
  TStartTag(const xmlChar* name, const xmlChar* uri, std::span<const xmlChar* const> attributes, int line)
      : name_(name), uri_(uri), attributes_(attributes), line_(line) {}

  int Line() const override { return line_; }

  std::string_view Name() const override { return ToView(name_); }
  std::string_view NamespaceUri() const override { return ToView(uri_); }
  std::optional<std::u16string> GetAttribute(std::string_view name) const override {
    for (auto rest = attributes_; !rest.empty(); rest = rest.subspan(std::size_t{FieldsOfAttribute})) {
      if (rest[1] != nullptr || ToView(rest[0]) != name) continue;
      const auto* value = reinterpret_cast<const char*>(rest[3]);
      return text::FromUtf8({value, static_cast<std::size_t>(rest[4] - rest[3])});
    }
    return std::nullopt;
  }

private:
  const xmlChar* name_;
  const xmlChar* uri_;
  std::span<const xmlChar* const> attributes_;
  int line_;
};

// Everything that the parser calls back. No exception may pass through it, since it is written in C: the
// first one is kept and ends the reading.
class TReading : public libxml::TFailure {
public:
  TReading(IXmlEvents& events, TRead read) : events_(events), read_(std::move(read)) {}

  // True when the whole document was read. One that was converted still declares what it was before.
  bool Run(bool isUtf8);

private:
  static TReading& Of(void* parser) {
    return static_cast<TReading&>(
        *static_cast<libxml::TFailure*>(static_cast<xmlParserCtxtPtr>(parser)->_private));
  }
  template <typename TCall>
  static void Guard(void* parser, const TCall& call) {
    TReading& reading = Of(parser);
    if (reading.raised_) return;
    try {
      call(reading.events_);
    } catch (...) {
      reading.raised_ = std::current_exception();
      xmlStopParser(static_cast<xmlParserCtxtPtr>(parser));
    }
  }
  static void OnStart(void* parser, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespaceCount, const xmlChar** namespaces, int attributeCount, int defaultedCount,
                      const xmlChar** attributes);
  static void OnEnd(void* parser, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri);
  static void OnText(void* parser, const xmlChar* text, int length);
  static int OnRead(void* reading, char* buffer, int size);

  static constexpr std::u16string_view TooManyAttributes = u"An element has more than 1000 attributes.";

  IXmlEvents& events_;
  TRead read_;
  xmlParserCtxtPtr parser_ = nullptr;
  std::exception_ptr raised_;
};

bool TReading::Run(bool isUtf8) {
  const auto parser = libxml::NewParser(*this);
  parser_ = parser.get();
  xmlSAXHandler& handler = *parser->sax;
  handler.startElementNs = OnStart;
  handler.endElementNs = OnEnd;
  handler.characters = OnText;
  handler.ignorableWhitespace = OnText;
  handler.cdataBlock = OnText;
  // The parser's own would collect nodes.
  handler.comment = nullptr;
  handler.processingInstruction = nullptr;
  // "&amp;" in an attribute comes decoded only on request; entities other than the five cannot exist without
  // a document type.
  const int options = XML_PARSE_NONET | XML_PARSE_NOENT | (isUtf8 ? XML_PARSE_IGNORE_ENC : 0);
  const libxml::TOwned<xmlDoc> rest(
      xmlCtxtReadIO(parser.get(), OnRead, nullptr, this, nullptr, nullptr, options));
  if (raised_) std::rethrow_exception(raised_);
  if (parser->wellFormed == 0) Note(u"The document is not well-formed.");
  libxml::RequireEnd(*parser, *this);
  return Reason.empty();
}

void TReading::OnStart(void* parser, const xmlChar* name, const xmlChar* /*prefix*/, const xmlChar* uri,
                       int /*namespaceCount*/, const xmlChar** /*namespaces*/, int attributeCount,
                       int /*defaultedCount*/, const xmlChar** attributes) {
  if (attributeCount > MostAttributes) {
    Of(parser).Note(std::u16string(TooManyAttributes));
    xmlStopParser(static_cast<xmlParserCtxtPtr>(parser));
    return;
  }
  const std::span<const xmlChar* const> fields(attributes,
                                               static_cast<std::size_t>(attributeCount * FieldsOfAttribute));
  const int line = xmlSAX2GetLineNumber(parser);
  Guard(parser, [&](IXmlEvents& events) { events.StartElement(TStartTag(name, uri, fields, line)); });
}

void TReading::OnEnd(void* parser, const xmlChar* /*name*/, const xmlChar* /*prefix*/,
                     const xmlChar* /*uri*/) {
  Guard(parser, [](IXmlEvents& events) { events.EndElement(); });
}

void TReading::OnText(void* parser, const xmlChar* text, int length) {
  Guard(parser, [&](IXmlEvents& events) {
    events.Text({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
  });
}

int TReading::OnRead(void* reading, char* buffer, int size) {
  auto& self = *static_cast<TReading*>(reading);
  // In the middle of a tag: when its room is full the parser makes twice as much.
  if (self.parser_->maxatts > 2 * MostAttributes * FieldsOfAttribute) {
    self.Note(std::u16string(TooManyAttributes));
    return -1;
  }
  try {
    const auto count = self.read_(buffer, static_cast<std::size_t>(size));
    if (count) return static_cast<int>(*count);
    self.Note(count.Message());
  } catch (...) {
    self.raised_ = std::current_exception();
  }
  return -1;
}

// A source of bytes that has been looked into.
class TPeekedSource {
public:
  explicit TPeekedSource(TRead read) : read_(std::move(read)), buffer_(PieceSize, '\0') {}

  // Up to a whole piece of what comes next; not more than the end of the source leaves.
  platform::Result<std::string_view> Peek() {
    while (end_ < buffer_.size()) {
      const auto count = read_(buffer_.data() + end_, buffer_.size() - end_);
      if (!count) return platform::Failure{count.Message()};
      if (*count == 0) break;
      end_ += *count;
    }
    return std::string_view(buffer_).substr(begin_, end_ - begin_);
  }
  void Skip(std::size_t count) { begin_ += count; }

  platform::Result<std::size_t> Read(char* buffer, std::size_t size) {
    if (begin_ == end_) {
      begin_ = end_ = 0;
      if (const auto filled = Peek(); !filled) return platform::Failure{filled.Message()};
    }
    const std::size_t count = std::min(size, end_ - begin_);
    std::copy_n(buffer_.data() + begin_, count, buffer);
    begin_ += count;
    return count;
  }

private:
  TRead read_;
  std::string buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

// Turns a Windows code page into UTF-8, piece by piece.
class TPageSource {
public:
  TPageSource(TPeekedSource& source, libxml::TDeclaredPage page) : source_(source), page_(std::move(page)) {}

  platform::Result<std::size_t> Read(char* buffer, std::size_t size) {
    while (at_ == utf8_.size()) {
      const auto more = Refill();
      if (!more) return platform::Failure{more.Message()};
      if (!*more) return std::size_t{0};
    }
    const std::size_t count = std::min(size, utf8_.size() - at_);
    std::copy_n(utf8_.data() + at_, count, buffer);
    at_ += count;
    return count;
  }

private:
  // In every one of these pages these characters are a whole character, never the second half of one.
  static constexpr std::string_view Cuts = "\n <>";

  // False at the end of the document.
  platform::Result<bool> Refill() {
    utf8_.clear();
    at_ = 0;
    std::string piece(PieceSize, '\0');
    const auto count = source_.Read(piece.data(), piece.size());
    if (!count) return platform::Failure{count.Message()};
    piece.resize(*count);
    const std::size_t whole = piece.find_last_of(Cuts) + 1; // 0 where there is no cut
    if (piece.empty() && pending_.empty()) return false;
    if (!piece.empty() && whole == 0) {
      pending_ += piece;
      return true;
    }
    pending_.append(piece, 0, whole);
    const auto decoded = platform::FromCodePage(pending_, page_.Page);
    if (!decoded) return platform::Failure{u"The document is not valid in its encoding " + page_.Name + u"."};
    utf8_ = text::ToUtf8(*decoded);
    pending_ = piece.substr(whole);
    return true;
  }

  TPeekedSource& source_;
  libxml::TDeclaredPage page_;
  std::string pending_; // the beginning of the next piece
  std::string utf8_;
  std::size_t at_ = 0;
};

// Finds the character 0, which no document may hold: the parser would take it for the end of its buffer and
// might read on behind it.
class TZeroFinder {
public:
  explicit TZeroFinder(std::string_view beginning)
      : isWide_(beginning.starts_with("\xFF\xFE") || beginning.starts_with("\xFE\xFF") ||
                beginning.substr(0, 2).find('\0') != std::string_view::npos) {}

  bool IsIn(std::string_view piece) {
    if (!isWide_) return piece.find('\0') != std::string_view::npos;
    for (const char byte : piece) {
      if (isSecond_ && first_ == '\0' && byte == '\0') return true;
      first_ = byte;
      isSecond_ = !isSecond_;
    }
    return false;
  }

private:
  bool isWide_; // UTF-16
  bool isSecond_ = false;
  char first_ = '\0';
};

std::u16string ReadDocument(IXmlEvents& events, TRead read) {
  TPeekedSource source(std::move(read));
  const auto beginning = source.Peek();
  if (!beginning) return beginning.Message();
  const auto page = libxml::DeclaredPage(beginning->substr(0, libxml::LongestDeclaration));
  TPageSource pageSource(source, page.value_or(libxml::TDeclaredPage{}));
  TZeroFinder zero(*beginning);
  const auto readPiece = [&](char* buffer, std::size_t size) -> platform::Result<std::size_t> {
    auto count = page ? pageSource.Read(buffer, size) : source.Read(buffer, size);
    if (count && zero.IsIn({buffer, *count})) return platform::Failure{u"The document holds a character 0."};
    return count;
  };
  const bool isUtf8 = page || libxml::IsMarkedUtf8(*beginning); // whatever it declares
  TReading reading(events, readPiece);
  return reading.Run(isUtf8) ? std::u16string() : reading.Reason;
}

} // namespace

bool TXmlStream::Load(std::u16string_view fileName) {
  auto file = platform::FileReader::Open(fileName);
  error_ = file ? ReadDocument(events_,
                               [&file](char* buffer, std::size_t size) { return file->Read(buffer, size); })
                : file.Message();
  return error_.empty();
}

bool TXmlStream::LoadBytes(std::string_view bytes) {
  error_ = ReadDocument(events_, [&bytes](char* buffer, std::size_t size) -> platform::Result<std::size_t> {
    const std::size_t count = std::min(size, bytes.size());
    std::copy_n(bytes.data(), count, buffer);
    bytes.remove_prefix(count);
    return count;
  });
  return error_.empty();
}

} // namespace kx
