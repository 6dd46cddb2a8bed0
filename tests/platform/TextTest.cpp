#include "quenwick/platform/Text.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "quenwick/platform/Redaction.h"

namespace quenwick::platform {
namespace {

using namespace std::string_literals;

TEST(Text, ControlCharactersCannotForgeALine) {
  EXPECT_EQ(escapedControls("a\nb\r\tc\x1b[31m\x7fü€"), "a\\nb\\r\\tc\\u{1b}[31m\\u{7f}ü€");
  EXPECT_EQ(escapedControls("a\0b\xc2\x9b\xffz"s), "a\\0b\\u{9b}\\xFFz");
  EXPECT_EQ(escapedControls("cut \xe2\x82"), "cut \\xE2\\x82");
  EXPECT_EQ(debugQuoted("say \"hi\" \\ \n"), R"("say \"hi\" \\ \n")");
}

TEST(Text, PercentDecodingKeepsWhatIsNoEscape) {
  EXPECT_EQ(percentDecoded("a%20b%2Fc"), "a b/c");
  EXPECT_EQ(percentDecoded("50%"), "50%");
  EXPECT_EQ(percentDecoded("%4"), "%4");
  EXPECT_EQ(percentDecoded("%41%"), "A%");
  EXPECT_EQ(percentDecoded("%00"), "\0"s);
  EXPECT_EQ(percentDecoded("%ff%41"), "%ff%41") << "not UTF-8: as it was";
}

TEST(Text, SecretsAreHiddenInEverySpellingOfJSON) {
  const std::vector<std::string> secrets = {"", "kü/\"\\\n😀", "ab"};
  for (auto spelling : {"kü/\"\\\n😀", R"(kü\/\"\\\n😀)",
                        R"(k\u00fc\u002F\u0022\u005c\u000A\ud83d\uDE00)", "ab", R"(a\u0062)"}) {
    EXPECT_EQ(redacted("to " + std::string(spelling) + " be", secrets, 100), "to … be") << spelling;
  }
  for (auto other : {"a b", "kü/", R"(a\u006)", R"(a\u00zz)", "a\\", R"(k\u00fd/)", "😀", ""}) {
    EXPECT_EQ(redacted(other, secrets, 100), other);
  }
  EXPECT_EQ(redacted("abab", secrets, 100), "……");
  EXPECT_EQ(redacted("xab", secrets, 3), "x") << "neither the mark nor the secret is cut in two";
  EXPECT_EQ(redacted("xüy", secrets, 2), "x");
  EXPECT_EQ(shown("xüy", 2), "x");
  EXPECT_EQ(shown("x\x80\x80\x80\x80\x80", 5), "x\\x80\\x80\\x80\\x80") << "what is no character";
}

TEST(Text, UTF8IsCheckedBeyondAZeroByte) {
  EXPECT_TRUE(isUTF8("ü\0€"s));
  EXPECT_FALSE(isUTF8("ü\0\xff"s));
  EXPECT_FALSE(isUTF8("\xed\xa0\x80")) << "a surrogate";
  EXPECT_FALSE(isUTF8("\xc0\xaf")) << "overlong";
}

TEST(Text, WhatIsNoUTF8BecomesAReplacementCharacterAndTheRestStays) {
  for (const auto& [given, made] : {std::pair("a\0b"s, "a\0b"s),
                                    {"\xff\0ü\xe2\x82\0"s, "\ufffd\0ü\ufffd\ufffd\0"s},
                                    {"", ""}}) {
    EXPECT_EQ(madeUTF8(given), made);
  }
}

TEST(Text, NumbersReadBackAsTheyWere) {
  for (double number : {1.0, 0.9, 1.0 - 0.1 * 3, 1e21, 5e-324, 1.7976931348623157e308, -0.1}) {
    EXPECT_EQ(std::strtod(shortestDecimal(number).c_str(), nullptr), number);
  }
  EXPECT_EQ(shortestDecimal(3), "3.0");
  EXPECT_EQ(shortestDecimal(-1.5), "-1.5");
}

}  // namespace
}  // namespace quenwick::platform
