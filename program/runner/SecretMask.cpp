#include "program/runner/SecretMask.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/runner/Base64.h"
#include "program/runner/Spellings.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace kx {

namespace {

constexpr std::u16string_view Shown = u"***";

// Of the text that is looked at.
struct TRange {
  std::size_t Start;
  std::size_t End;
};

// What is looked for. In Base64 the characters before and behind hold bits of the secret, too.
struct TPattern {
  std::u16string Text;
  std::size_t Before = 0;
  std::size_t Behind = 0;
};

// The Base64 of bytes of which `ahead` (0 to 2) belong to what stands before the secret.
TPattern Base64Of(std::string_view secret, std::size_t ahead) {
  const std::u16string digits = ToBase64(std::string(ahead, '\0') + std::string(secret));
  const std::size_t first = (8 * ahead + 5) / 6;
  const std::size_t end = 8 * (ahead + secret.size()) / 6;
  return {digits.substr(first, end - first), ahead == 0 ? 0U : 1U,
          8 * (ahead + secret.size()) % 6 == 0 ? 0U : 1U};
}

void AddBase64(std::string_view secret, std::vector<TPattern>& patterns) {
  for (std::size_t ahead = 0; ahead < 3; ++ahead) {
    TPattern pattern = Base64Of(secret, ahead);
    TPattern forAddresses = pattern;
    std::ranges::replace(forAddresses.Text, u'+', u'-');
    std::ranges::replace(forAddresses.Text, u'/', u'_');
    if (forAddresses.Text != pattern.Text) patterns.push_back(std::move(forAddresses));
    patterns.push_back(std::move(pattern));
  }
}

std::vector<TPattern> PatternsOf(const std::u16string& secret) {
  std::vector<TPattern> patterns;
  patterns.push_back({secret});
  AddBase64(text::ToUtf8(secret), patterns);
  AddBase64(text::ToUtf16LE(secret), patterns);
  return patterns;
}

} // namespace

// Finds all patterns in one pass: Aho and Corasick, "Efficient string matching: an aid to bibliographic
// search", 1975.
class TSecretMask::TSearch {
public:
  explicit TSearch(std::vector<TPattern> patterns)
      : patterns_(std::move(patterns)), fromRoot_(0x10000, Root) {
    nodes_.emplace_back();
    for (std::size_t i = 0; i < patterns_.size(); ++i)
      Add(i);
    Link();
  }

  std::vector<TRange> Find(std::u16string_view text) const {
    std::vector<TRange> found;
    std::uint32_t node = Root;
    for (std::size_t i = 0; i < text.size(); ++i) {
      node = Next(node, text[i]);
      if (nodes_[node].Pattern == None) continue;
      const TPattern& pattern = patterns_[nodes_[node].Pattern];
      const std::size_t start = i + 1 - pattern.Text.size();
      std::size_t end = std::min(i + 1 + pattern.Behind, text.size());
      while (pattern.Behind > 0 && end < text.size() && text[end] == u'=')
        ++end;
      found.push_back({start - std::min(start, pattern.Before), end});
    }
    return found;
  }

private:
  static constexpr std::uint32_t Root = 0;
  static constexpr std::size_t None = static_cast<std::size_t>(-1);

  struct TNode {
    std::uint32_t Fail = Root;  // the longest other beginning of a pattern that ends here
    std::size_t Pattern = None; // the longest that ends here
    std::vector<std::pair<char16_t, std::uint32_t>> Children = {};
  };

  // Few have more than one.
  std::uint32_t Child(std::uint32_t node, char16_t c) const {
    if (node == Root) return fromRoot_[c];
    for (const auto& [character, child] : nodes_[node].Children)
      if (character == c) return child;
    return Root;
  }

  std::uint32_t Next(std::uint32_t node, char16_t c) const {
    for (;; node = nodes_[node].Fail) {
      const std::uint32_t child = Child(node, c);
      if (child != Root || node == Root) return child;
    }
  }

  void Add(std::size_t pattern) {
    std::uint32_t node = Root;
    for (const char16_t c : patterns_[pattern].Text) {
      std::uint32_t child = Child(node, c);
      if (child == Root) {
        child = static_cast<std::uint32_t>(nodes_.size());
        nodes_.emplace_back();
        nodes_[node].Children.emplace_back(c, child);
        if (node == Root) fromRoot_[c] = child;
      }
      node = child;
    }
    nodes_[node].Pattern = pattern;
  }

  // Shorter beginnings first, so that a node's own link is known before those of its children.
  void Link() {
    std::vector<std::uint32_t> order{Root};
    order.reserve(nodes_.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
      const std::uint32_t node = order[i];
      for (const auto& [c, child] : nodes_[node].Children) {
        order.push_back(child);
        if (node != Root) nodes_[child].Fail = Next(nodes_[node].Fail, c);
        if (nodes_[child].Pattern == None) nodes_[child].Pattern = nodes_[nodes_[child].Fail].Pattern;
      }
    }
  }

  std::vector<TPattern> patterns_;
  std::vector<TNode> nodes_;
  std::vector<std::uint32_t> fromRoot_; // by character
};

namespace {

// By their starts, those that overlap as one.
std::vector<TRange> Merged(std::vector<TRange> ranges) {
  std::ranges::sort(ranges, {}, &TRange::Start);
  std::vector<TRange> merged;
  for (const TRange& range : ranges) {
    if (!merged.empty() && range.Start < merged.back().End)
      merged.back().End = std::max(merged.back().End, range.End);
    else
      merged.push_back(range);
  }
  return merged;
}

std::u16string WithoutRanges(std::u16string_view text, const std::vector<TRange>& ranges) {
  std::u16string shown;
  std::size_t done = 0;
  for (const TRange& range : ranges) {
    shown.append(text, done, range.Start - done).append(Shown);
    done = range.End;
  }
  return shown.append(text, done);
}

} // namespace

void TSecretMask::Keep(std::u16string_view secret) {
  std::vector<std::u16string> wanted;
  const auto lines = text::SplitLines(secret);
  wanted.assign(lines.begin(), lines.end());
  if (lines.size() > 1)
    for (const auto* lineEnd : {u"\n", u"\r\n"})
      wanted.push_back(text::Join(std::vector<std::u16string>(lines.begin(), lines.end()), lineEnd));
  const std::scoped_lock lock(mutex_);
  for (auto& one : wanted)
    if (one.size() >= Shortest && secrets_.insert(std::move(one)).second) search_ = nullptr;
}

std::shared_ptr<const TSecretMask::TSearch> TSecretMask::Search() const {
  const std::scoped_lock lock(mutex_);
  if (search_ == nullptr && !secrets_.empty()) {
    std::vector<TPattern> patterns;
    for (const auto& secret : secrets_)
      for (auto& pattern : PatternsOf(secret))
        patterns.push_back(std::move(pattern));
    search_ = std::make_shared<const TSearch>(std::move(patterns));
  }
  return search_;
}

void TSecretMask::Mask(std::u16string& text) const {
  const auto search = Search();
  if (search == nullptr) return;
  std::vector<TRange> found = search->Find(text);
  for (const auto& spellings : KnownSpellings()) {
    const TDecodedText decoded = Decode(spellings, text);
    for (const TRange& range : search->Find(decoded.Text))
      found.push_back({range.Start == 0 ? 0 : decoded.Ends[range.Start - 1], decoded.Ends[range.End - 1]});
  }
  if (!found.empty()) text = WithoutRanges(text, Merged(std::move(found)));
}

std::string TSecretMask::Masked(std::string_view utf8) const {
  if (Search() == nullptr) return std::string(utf8);
  std::u16string text = text::FromUtf8(utf8);
  Mask(text);
  return text::ToUtf8(text);
}

} // namespace kx
