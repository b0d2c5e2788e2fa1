// The lines of a solution file, one after the other, without the file ever being in memory as a whole.
#pragma once

#include "contract/Process.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/Spares.h"
#include "foundation/text/Encoding.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

// Line ends are CR LF, LF and CR; empty lines before the first other line do not count. Whatever the encoding
// of the file (byte-order mark, else UTF-8 when the whole file is valid UTF-8, else the ANSI code page), a
// line is UTF-8 here, in which the bytes of a UTF-8 file stand as they are: all that the reader looks for is
// ASCII, so only the few pieces that it keeps are ever decoded.
//
// Raises EKxParseError for a file that cannot be read, and EKxException once `stop` is raised.
class TSolutionLines {
public:
  TSolutionLines(std::u16string_view fileName, const TKxEvent* stop);
  ~TSolutionLines();
  TSolutionLines(const TSolutionLines&) = delete;
  TSolutionLines& operator=(const TSolutionLines&) = delete;

  // Steps to the next line, at first to line 0; False behind the last one, where Index is the number of
  // lines.
  bool Next();
  // Steps to the next line whose first character behind blanks is `first`, with little work for the lines
  // between.
  bool NextBeginningWith(char first);
  // Back before line 0. A file larger than the buffer is read again.
  void Rewind();

  std::string_view Line() const { return line_; } // valid until the next step
  std::int64_t Index() const { return index_; }
  int LineNumber() const; // from 1, as an editor counts

private:
  struct TBuffer {
    std::unique_ptr<char[]> Bytes;
    std::size_t Capacity = 0;
  };
  static platform::Spares<TBuffer>& SpareBuffers();

  bool Step();
  void PassLinesInBuffer(char first);
  bool StepAtAnyLineEnd();
  bool TakeRest();
  void Take(std::size_t end, std::size_t next);
  bool IsAnsi();
  bool Fill();
  void Start();
  void FillFromUtf16();
  void Append(std::string_view bytes);
  void MakeRoom(std::size_t wanted);
  std::size_t Read(char* target, std::size_t size);
  void Examine();

  std::u16string fileName_;
  const TKxEvent* stop_;
  platform::FileReader file_;
  text::ByteOrderMark mark_ = text::ByteOrderMark::None;
  std::string utf16_; // read and not yet converted

  platform::Spares<TBuffer>::Loan lent_; // keeps its room while nothing is read
  TBuffer buffer_;
  std::size_t first_ = 0;    // of the file in the buffer, behind the byte-order mark
  std::size_t begin_ = 0;    // of the next line
  std::size_t scanned_ = 0;  // no line end between begin_ and here
  std::size_t examined_ = 0; // known to Examine
  std::size_t end_ = 0;      // of what has been read
  std::uint64_t total_ = 0;  // bytes read from the file
  bool started_ = false;
  bool atEnd_ = false;
  bool forgotten_ = false;   // the file's beginning is no longer in the buffer
  bool loneReturns_ = false; // a CR without LF was seen
  bool beyondAscii_ = false;
  std::optional<bool> isAnsi_;

  std::string_view line_;
  std::string decoded_;
  std::int64_t index_ = -1;
  std::int64_t emptyAbove_ = 0;
};

} // namespace kx
