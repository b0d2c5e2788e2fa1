#include "foundation/formats/LibXml.h"

#include "foundation/text/Encoding.h"

#include <algorithm>
#include <array>

namespace kx::libxml {

namespace {

// The code pages that Visual Studio means by the names it writes; other names are the parser's business.
struct TEncodingName {
  std::u16string_view Name;
  unsigned Page;
};
constexpr std::array<TEncodingName, 22> EncodingNames{{
    {u"windows-874", 874},   {u"windows-1250", 1250}, {u"windows-1251", 1251},  {u"windows-1252", 1252},
    {u"windows-1253", 1253}, {u"windows-1254", 1254}, {u"windows-1255", 1255},  {u"windows-1256", 1256},
    {u"windows-1257", 1257}, {u"windows-1258", 1258}, {u"shift_jis", 932},      {u"shift-jis", 932},
    {u"sjis", 932},          {u"ms_kanji", 932},      {u"windows-31j", 932},    {u"gb2312", 936},
    {u"gbk", 936},           {u"big5", 950},          {u"ks_c_5601-1987", 949}, {u"euc-kr", 949},
    {u"iso-2022-kr", 949},   {u"us-ascii", 1252},
}};

// The encoding that the XML declaration names; empty when the document begins with none.
std::u16string DeclaredEncoding(std::string_view bytes) {
  if (bytes.substr(0, 5) != "<?xml") return {};
  const std::string_view declaration = bytes.substr(0, std::min(bytes.find("?>"), LongestDeclaration));
  const std::size_t key = declaration.find("encoding");
  if (key == std::string_view::npos) return {};
  const std::size_t open = declaration.find_first_of("\"'", key);
  if (open == std::string_view::npos) return {};
  const std::size_t close = declaration.find(declaration[open], open + 1);
  if (close == std::string_view::npos) return {};
  return text::FromAscii(declaration.substr(open + 1, close - open - 1));
}

TFailure& FailureOf(void* parser) {
  return *static_cast<TFailure*>(static_cast<xmlParserCtxtPtr>(parser)->_private);
}

// A document that needs document types cannot be trusted to be small, or to stay on this machine.
void RefuseDocumentType(void* parser, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                        const xmlChar* /*systemId*/) {
  FailureOf(parser).Note(u"A document type declaration (DTD) is not allowed.");
  xmlStopParser(static_cast<xmlParserCtxtPtr>(parser));
}

void NoteError(void* parser, xmlErrorPtr error) {
  if (error->level < XML_ERR_ERROR || error->message == nullptr) return;
  const std::u16string text(text::Trim(text::FromUtf8(error->message)));
  FailureOf(parser).Note(text + u" (line " + text::FromInteger(error->line) + u")");
}

// What the library keeps for all of its users it makes when it is first used, and not safely on two threads:
// here, before there are any.
[[maybe_unused]] const bool isReady = [] {
  xmlInitParser();
  return true;
}();

} // namespace

TOwned<xmlParserCtxt> NewParser(TFailure& failure) {
  TOwned<xmlParserCtxt> parser(xmlNewParserCtxt());
  parser->_private = &failure;
  parser->sax->internalSubset = RefuseDocumentType;
  parser->sax->serror = NoteError;
  return parser;
}

void RequireEnd(const xmlParserCtxt& parser, TFailure& failure) {
  const xmlParserInput* input = parser.input;
  if (input != nullptr && input->cur < input->end)
    failure.Note(u"Extra content at the end of the document (line " + text::FromInteger(input->line) + u")");
}

std::optional<TDeclaredPage> DeclaredPage(std::string_view bytes) {
  std::u16string encoding = DeclaredEncoding(bytes);
  const auto found = std::ranges::find_if(EncodingNames, [&encoding](const TEncodingName& row) {
    return text::EqualsIgnoreCase(row.Name, encoding);
  });
  if (found == EncodingNames.end()) return std::nullopt;
  return TDeclaredPage{std::move(encoding), found->Page};
}

} // namespace kx::libxml
