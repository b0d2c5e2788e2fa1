#include "program/runner/SecretMask.h"

#include "foundation/text/CommandLine.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/runner/Base64.h"

#include <gtest/gtest.h>

#include <thread>

namespace kx {
namespace {

std::u16string MaskedBy(std::u16string_view secret, std::u16string text) {
  TSecretMask mask;
  mask.Keep(secret);
  mask.Mask(text);
  return text;
}

TEST(SecretMask, KnowsHowToolsSpellASecret) {
  const std::tuple<const char*, std::u16string, std::u16string, std::u16string> cases[] = {
      {"as it stands", u"p&ss w\u00F6rd", u"a p&ss w\u00F6rd b", u"a *** b"},
      {"another letter case", u"hush!", u"Hush!", u"Hush!"},
      {"twice", u"hush!", u"<hush!hush!>", u"<******>"},
      {"within itself", u"abab", u"-ababab-", u"-***-"},
      {"one within another", u"bcde", u"abcdef", u"a***f"},
      {"an address", u"p&ss w\u00F6rd", u"?p=p%26ss%20w%C3%B6rd&q=p%26ss%20w%c3%b6rd", u"?p=***&q=***"},
      {"one letter of an address", u"p&ss w\u00F6rd", u"p&ss%20w\u00F6rd", u"***"},
      {"a form", u"p&ss w\u00F6rd", u"p=p%26ss+w%C3%B6rd&q", u"p=***&q"},
      {"a plus in an address", u"a+b c", u"a%2Bb%20c a+b%20c", u"*** ***"},
      {"an address of bytes", u"w\u00F6rd", u"w%F6rd", u"***"},
      {"beyond the first plane", u"\U0001F511\U0001F512 x", u"%F0%9F%94%91%F0%9F%94%92%20x!", u"***!"},
      {"XML", u"a<b>&'c\"", u"<p>a&lt;b&gt;&amp;&apos;c&quot;</p>", u"<p>***</p>"},
      {"an apostrophe between quotation marks of a shell", u"pass'word", u"echo 'pass'\"'\"'word'",
       u"echo '***'"},
      {"XML by numbers", u"a<b>&'c\"", u"a&#60;b&#x3e;&amp;&#39;c&#x22; &none; &#xFFFFFFFF;",
       u"*** &none; &#xFFFFFFFF;"},
      {"XML beyond the first plane", u"\U0001F511key", u"&#x1F511;key &#128273;key", u"*** ***"},
      {"JSON by numbers", u"ab\u00F6cd", u"ab\\xf6cd \\u0061b\\u00f6cd", u"*** ***"},
      {"backslashes that mean themselves", u"azAZ09", u"\\a\\z\\A\\Z\\0\\9", u"\\a\\z\\A\\Z\\0\\9"},
      {"signs of a shell", u"a b~c", u"a\\ b\\~c", u"***"},
      {"PowerShell", u"a&b|c", u"a`&b`|c", u"***"},
      {"JSON", u"a\"b\\c\u00F6/", u"{\"p\":\"a\\\"b\\\\c\\u00f6\\/\"}", u"{\"p\":\"***\"}"},
      {"JSON in XML", u"a\"b\\c", u"a\\&quot;b\\\\c", u"***"},
      {"an argument", u"a \"b\\\" c\\", text::QuoteArgument(u"a \"b\\\" c\\") + u" d", u"\"***\" d"},
      {"an argument with doubled quotes", u"a \"b\" c", u"\"a \"\"b\"\" c\"", u"\"***\""},
      {"an argument in JSON", u"ab\"c", u"\"ab\\\\\\\"c\"", u"\"***\""},
      {"a shell", u"it's $5", u"'it'\\''s $5' it\\'s\\ \\$5", u"'***' ***"},
      {"cmd", u"a&b|c", u"a^&b^|c", u"***"},
      {"several lines", u"line one\nline two\nx", u"line one and line two, not x", u"*** and ***, not x"},
      {"several lines at once", u"line one\nx\nline two",
       u"(line one\r\nx\r\nline two) line one%0Ax%0Aline two", u"(***) ***"},
      {"too short", u"abc", u"abcabc", u"abcabc"},
  };
  for (const auto& [name, secret, text, shown] : cases)
    EXPECT_EQ(MaskedBy(secret, text), shown) << name;
}

TEST(Base64, ReadsBackOnlyWhatItWrites) {
  for (const auto& [bytes, text] :
       {std::pair("", u""), {"f", u"Zg=="}, {"fo", u"Zm8="}, {"foo", u"Zm9v"}, {"fo\xFF/", u"Zm//Lw=="}}) {
    EXPECT_EQ(ToBase64(bytes), text);
    EXPECT_EQ(FromBase64(text), bytes);
  }
  for (const auto* text : {u"Zg=", u"Zg", u"Zh==", u"Z===", u"Zg==Zg==", u"Zm9*", u"===="})
    EXPECT_EQ(FromBase64(text), std::nullopt);
}

// The bits of a secret are spread over characters that it shares with what stands around it.
TEST(SecretMask, FindsBase64AtEachPosition) {
  const std::u16string secret = u"h\u00F6sh?>~hush";
  for (const std::u16string before : {u"", u"u", u"us", u"user", u"user:"})
    for (const std::u16string after : {u"", u".", u"..", u"..."})
      for (const bool wide : {false, true})
        for (const bool forAddresses : {false, true}) {
          const std::u16string whole = before + secret + after;
          std::u16string digits = ToBase64(wide ? text::ToUtf16LE(whole) : text::ToUtf8(whole));
          if (forAddresses) {
            std::ranges::replace(digits, u'+', u'-');
            std::ranges::replace(digits, u'/', u'_');
          }
          std::u16string shown = MaskedBy(secret, u"Basic " + digits + u" .");
          ASSERT_NE(shown.find(u"***"), shown.npos) << text::ToUtf8(digits);
          std::erase(shown, u'=');
          // What is left stands for whole bytes of what stands around the secret.
          const std::size_t around = (wide ? 2 : 1) * (before.size() + after.size());
          EXPECT_LE(shown.size(), std::u16string_view(u"Basic *** .").size() + (around * 4 + 2) / 3)
              << text::ToUtf8(shown);
        }
}

TEST(SecretMask, LooksForManyAtOnce) {
  TSecretMask mask;
  std::u16string text;
  std::u16string shown;
  for (int i = 0; i < 100; ++i) {
    const std::u16string secret =
        u"s3cret &" + text::FromInteger(i * 7919) + u"; number " + text::FromInteger(i) + u".";
    mask.Keep(secret);
    text += secret + u"+\\&%'\"^`" + ToBase64(text::ToUtf8(secret)) + u"|";
    shown += u"***+\\&%'\"^`***|";
  }
  mask.Mask(text);
  EXPECT_EQ(text, shown);
  EXPECT_EQ(mask.Masked("\xC3\xB6 s3cret &0; number 0."), "\xC3\xB6 ***");
}

TEST(SecretMask, TakesSecretsWhileItMasks) {
  TSecretMask mask;
  std::thread keeper([&mask] {
    for (int i = 0; i < 200; ++i)
      mask.Keep(u"secret" + text::FromInteger(i));
  });
  for (int i = 0; i < 200; ++i)
    static_cast<void>(mask.Masked("secret0"));
  keeper.join();
  EXPECT_EQ(mask.Masked("secret199"), "***");
}

} // namespace
} // namespace kx
