// JSON as it is written, without an object of it in memory.
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>

namespace kx {

// Writes UTF-8 without blanks and line breaks, non-ASCII letters as they are. Text may hold anything: what is
// ill-formed in it becomes U+FFFD. The caller sees to it that an object holds members and an array values.
class TJsonWriter {
public:
  // Gets what is written in blocks of BlockSize bytes at most, and the rest with Flush.
  using TPut = std::function<void(std::string_view utf8)>;
  static constexpr std::size_t BlockSize = std::size_t{64} * 1024;

  explicit TJsonWriter(TPut put);

  // `fill` writes the members, or the values.
  template <std::invocable TFill>
  void Object(const TFill& fill) {
    Open('{');
    fill();
    Close('}');
  }
  template <std::invocable TFill>
  void Array(const TFill& fill) {
    Open('[');
    fill();
    Close(']');
  }

  void Value(std::u16string_view text);
  void Value(std::string_view utf8);
  void Value(std::nullptr_t /*null*/) { Word("null"); }
  template <std::integral T>
  void Value(T value) {
    if constexpr (std::same_as<T, bool>) {
      Word(value ? "true" : "false");
    } else {
      std::array<char, 24> digits{};
      Word({digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr});
    }
  }
  template <typename T>
  void Value(const std::optional<T>& value) { // null for nothing
    if (!value) return Value(nullptr);
    Value(*value);
  }

  // What is written next belongs to the key. A name holds nothing that would have to be escaped.
  void Key(std::string_view name);
  template <typename T>
  void Member(std::string_view name, const T& value) {
    Key(name);
    Value(value);
  }
  template <std::invocable TFill>
  void ObjectMember(std::string_view name, const TFill& fill) {
    Key(name);
    Object(fill);
  }
  template <std::invocable TFill>
  void ArrayMember(std::string_view name, const TFill& fill) {
    Key(name);
    Array(fill);
  }
  template <std::ranges::range TValues>
  void ValuesMember(std::string_view name, const TValues& values) {
    ArrayMember(name, [&] {
      for (const auto& value : values)
        Value(value);
    });
  }

  void EndLine(); // behind an object that has a line of its own
  void Flush();

private:
  void Open(char bracket) {
    Separate();
    PutByte(bracket);
    needsComma_ = false;
  }
  void Close(char bracket) {
    PutByte(bracket);
    needsComma_ = true;
  }
  void Separate() {
    if (needsComma_) PutByte(',');
  }
  void PutByte(char byte) {
    *Room(1) = byte;
    ++used_;
  }
  char* Room(std::size_t size) { // for so many bytes, behind what is written
    if (BlockSize - used_ < size) Flush();
    return block_.get() + used_;
  }
  void Word(std::string_view ascii);
  void PutBytes(std::string_view bytes);
  std::size_t PutAscii(std::u16string_view text); // the beginning of it; how much of it

  TPut put_;
  std::unique_ptr<char[]> block_; // NOLINT(*-avoid-c-arrays): of a size known at run time, not zeroed
  std::size_t used_ = 0;
  bool needsComma_ = false;
};

// A small object as text; `fill` writes its members.
template <std::invocable<TJsonWriter&> TFill>
std::string JsonObjectText(const TFill& fill) {
  std::string text;
  TJsonWriter json([&text](std::string_view utf8) { text += utf8; });
  json.Object([&] { fill(json); });
  json.Flush();
  return text;
}

} // namespace kx
