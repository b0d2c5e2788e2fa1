#include "foundation/formats/RegEx.h"

#include "foundation/platform/Spares.h"
#include "foundation/text/Text.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <array>

namespace kx {

namespace {

// Far beyond what any sensible expression needs on a line of text, and reached within a second or two.
constexpr std::uint32_t MatchLimit = 10'000'000;
constexpr std::uint32_t HeapLimitKib = 64 * 1024;

std::u16string ErrorText(int code) {
  std::array<char16_t, 256> buffer{};
  const int length =
      pcre2_get_error_message(code, reinterpret_cast<PCRE2_UCHAR16*>(buffer.data()), buffer.size());
  return length < 0 ? u"error " + text::FromInteger(code)
                    : std::u16string(buffer.data(), static_cast<std::size_t>(length));
}

struct TFree {
  void operator()(pcre2_code_16* code) const { pcre2_code_free_16(code); }
  void operator()(pcre2_match_data_16* data) const { pcre2_match_data_free_16(data); }
  void operator()(pcre2_match_context_16* context) const { pcre2_match_context_free_16(context); }
  void operator()(pcre2_compile_context_16* context) const { pcre2_compile_context_free_16(context); }
  void operator()(pcre2_jit_stack_16* stack) const { pcre2_jit_stack_free_16(stack); }
};
template <typename T>
using TOwned = std::unique_ptr<T, TFree>;

// Compiled expressions backtrack on a stack of their own; the 32 KiB they have by default are used up by a
// long line.
struct TJitStack {
  TOwned<pcre2_jit_stack_16> Stack{pcre2_jit_stack_create_16(32 * 1024, 16 * 1024 * 1024, nullptr)};
};
platform::Spares<TJitStack>& JitStacks() {
  static platform::Spares<TJitStack> stacks;
  return stacks;
}
thread_local pcre2_jit_stack_16* jitStack = nullptr; // of the match that this thread is at

std::uint32_t CompileOptions(TRegExOptions options) {
  // Lone surrogates in the text of a tool or a file are characters like any other.
  std::uint32_t flags = PCRE2_UTF | PCRE2_MATCH_INVALID_UTF;
  if (Has(options, TRegExOptions::IgnoreCase)) flags |= PCRE2_CASELESS;
  if (Has(options, TRegExOptions::MultiLine)) flags |= PCRE2_MULTILINE;
  return flags;
}

TOwned<pcre2_code_16> Compile(std::u16string_view pattern, TRegExOptions options) {
  const TOwned<pcre2_compile_context_16> context(pcre2_compile_context_create_16(nullptr));
  pcre2_set_newline_16(context.get(), PCRE2_NEWLINE_ANYCRLF);
  int error = 0;
  PCRE2_SIZE offset = 0;
  TOwned<pcre2_code_16> code(pcre2_compile_16(reinterpret_cast<PCRE2_SPTR16>(pattern.data()), pattern.size(),
                                              CompileOptions(options), &error, &offset, context.get()));
  if (!code)
    throw ERegExError(ErrorText(error) + u" at position " +
                      text::FromInteger(static_cast<std::int64_t>(offset) + 1) + u" of \"" +
                      std::u16string(pattern) + u"\"");
  // Without the just-in-time compiler (unsupported machine) matching is slower, not different.
  pcre2_jit_compile_16(code.get(), PCRE2_JIT_COMPLETE);
  return code;
}

} // namespace

std::u16string_view TRegExMatch::GetItem(std::size_t index) const {
  return HasItem(index) ? *groups_[index] : std::u16string_view();
}

bool TRegExMatch::HasItem(std::size_t index) const {
  return index < groups_.size() && groups_[index].has_value();
}

class TRegularExpression : public IRegularExpression {
public:
  TRegularExpression(std::u16string_view pattern, TRegExOptions options)
      : code_(Compile(pattern, options)), context_(pcre2_match_context_create_16(nullptr)) {
    pcre2_set_match_limit_16(context_.get(), MatchLimit);
    pcre2_set_heap_limit_16(context_.get(), HeapLimitKib);
    pcre2_jit_stack_assign_16(
        context_.get(), [](void*) { return jitStack; }, nullptr);
  }

  TRegExMatch Match(std::u16string_view input, std::size_t from) const override {
    TRegExMatch match;
    const auto data = LendData();
    const int count = Run(data->Data.get(), input, from);
    if (count == 0) return match;
    const PCRE2_SIZE* offsets = pcre2_get_ovector_pointer_16(data->Data.get());
    match.position_ = offsets[0];
    match.groups_.resize(pcre2_get_ovector_count_16(data->Data.get()));
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
      const PCRE2_SIZE begin = offsets[2 * i];
      const PCRE2_SIZE end = offsets[2 * i + 1];
      if (begin != PCRE2_UNSET && begin <= end) match.groups_[i] = input.substr(begin, end - begin);
    }
    return match;
  }

  bool IsMatch(std::u16string_view input) const override { return Run(LendData()->Data.get(), input, 0) > 0; }

private:
  // What one match writes: an expression may be used on several threads.
  struct TData {
    TOwned<pcre2_match_data_16> Data;
  };
  platform::Spares<TData>::Loan LendData() const {
    auto data = data_.Lend();
    if (!data->Data) data->Data.reset(pcre2_match_data_create_from_pattern_16(code_.get(), nullptr));
    return data;
  }

  // The number of groups set; 0 when nothing matched.
  int Run(pcre2_match_data_16* data, std::u16string_view input, std::size_t from) const {
    if (from > input.size()) return 0;
    int result = Try(data, input, from, 0);
    // The interpreter is slower, but keeps what it may still try on the heap.
    if (result == PCRE2_ERROR_JIT_STACKLIMIT) result = Try(data, input, from, PCRE2_NO_JIT);
    if (result == PCRE2_ERROR_NOMATCH) return 0;
    if (result < 0) throw ERegExError(ErrorText(result));
    return result;
  }

  int Try(pcre2_match_data_16* data, std::u16string_view input, std::size_t from,
          std::uint32_t options) const {
    const auto stack = JitStacks().Lend();
    jitStack = stack->Stack.get();
    static constexpr char16_t empty = 0;
    const char16_t* begin = input.data() != nullptr ? input.data() : &empty;
    return pcre2_match_16(code_.get(), reinterpret_cast<PCRE2_SPTR16>(begin), input.size(), from, options,
                          data, context_.get());
  }

  TOwned<pcre2_code_16> code_;
  mutable platform::Spares<TData> data_;
  TOwned<pcre2_match_context_16> context_;
};

namespace RegEx {

std::shared_ptr<const IRegularExpression> NewRegularExpression(std::u16string_view pattern,
                                                               TRegExOptions options) {
  return std::make_shared<TRegularExpression>(pattern, options);
}

TRegExMatch Match(std::u16string_view input, std::u16string_view pattern, TRegExOptions options) {
  return TRegularExpression(pattern, options).Match(input, 0);
}

bool IsMatch(std::u16string_view input, std::u16string_view pattern, TRegExOptions options) {
  return TRegularExpression(pattern, options).IsMatch(input);
}

std::vector<std::u16string> Split(std::u16string_view input, std::u16string_view pattern) {
  const TRegularExpression expression(pattern, TRegExOptions::None);
  std::vector<std::u16string> pieces;
  std::size_t begin = 0;
  for (std::size_t from = 0;;) {
    const TRegExMatch match = expression.Match(input, from);
    if (!match) break;
    const std::size_t end = match.Position() + match.Value().size();
    if (match.Value().empty()) { // an empty match separates nothing at either end of the text
      from = match.Position() + 1;
      if (match.Position() == begin || match.Position() >= input.size()) continue;
    } else {
      from = end;
    }
    pieces.emplace_back(input.substr(begin, match.Position() - begin));
    begin = end;
  }
  pieces.emplace_back(input.substr(begin));
  return pieces;
}

} // namespace RegEx

} // namespace kx
