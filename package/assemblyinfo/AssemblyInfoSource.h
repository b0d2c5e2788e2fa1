// The source of an AssemblyInfo file, taken apart: what the rewriting of attributes needs to know of five
// languages, and no more. Nothing here raises: what is not understood is left out.
//
// Positions count UTF-16 units of the text; ranges end behind their last unit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

enum class TAssemblyInfoLanguage : std::uint8_t { CSharp, VisualBasic, Cpp, JSharp, FSharp };

// By the file name's extension.
std::optional<TAssemblyInfoLanguage> AssemblyInfoLanguageOf(std::u16string_view fileName);

struct TSourceRange {
  std::size_t Begin = 0;
  std::size_t End = 0;
};

enum class TSourceTokenKind : std::uint8_t { Word, String, Mark, Other, DocEnd };

struct TSourceToken {
  TSourceTokenKind Kind = TSourceTokenKind::Other;
  TSourceRange Range;
  bool Certain = true; // compiled whatever the conditional symbols are
  bool FirstOnLine = false;
  std::size_t Piece = 0; // the number of conditional directives before it
};

// Code without comments and without what a condition switches off for certain. Of a J# documentation comment
// the "@assembly" tags are code; a DocEnd stands for its end.
struct TSourceTokens {
  std::vector<TSourceToken> Tokens;
  std::vector<TSourceRange> LongComments;    // those of more than one line
  std::optional<std::size_t> FirstCondition; // begin of the first conditional block
  std::size_t IncludesEnd = 0;               // behind the last #include
  std::optional<std::size_t> OpenLiteral;    // a literal of code that is compiled that is never closed
};

// In a text of unknown code page (`mayBeDoubleByte`) a backslash behind a character that is not ASCII may be
// the second half of one: it continues no line.
TSourceTokens ScanAssemblyInfo(std::u16string_view text, TAssemblyInfoLanguage language,
                               bool mayBeDoubleByte = false);

// The name that a word token spells: without "@", brackets or backquotes around it, escapes decoded.
std::u16string NameOfWord(std::u16string_view word, TAssemblyInfoLanguage language);

// One attribute of the assembly.
struct TSourceAttribute {
  std::u16string Name;      // without namespace and without "Attribute"
  std::u16string Qualifier; // as written before the name: "System.Reflection."
  bool OfFramework = false; // of System.Reflection, as far as the file tells
  bool Certain = true;
  bool HasSuffix = false;
  bool HasParentheses = false;
  TSourceRange NameRange;    // qualifier included
  TSourceRange Argument;     // the first unnamed one; empty where one would stand
  bool IsLiteral = false;    // the argument is one string literal without parts to be computed
  bool OthersFollow = false; // with an empty argument: named ones stand behind it
};

// Brackets with attributes, the ";" behind them included.
struct TSourceSection {
  TSourceRange Range;
  bool Certain = true;
  std::vector<TSourceAttribute> Attributes;
};

// What stands before attributes: imports, options of the file.
struct TSourcePreamble {
  TSourceRange Range;
  std::u16string Namespace; // with dots; empty when it imports none
  std::u16string Alias;
};

struct TAssemblyInfoSource {
  std::vector<TSourceSection> Sections;
  std::vector<TSourcePreamble> Preambles; // the certain ones
};

TAssemblyInfoSource ParseAssemblyInfo(std::u16string_view text, TAssemblyInfoLanguage language,
                                      const TSourceTokens& tokens);

// Line ends and blanks as the compilers see them.
bool IsSourceLineEnd(char16_t c, TAssemblyInfoLanguage language);
bool IsSourceBlank(char16_t c);

} // namespace kx
