#include "host/encoding.h"

#include <gtest/gtest.h>

namespace {

TEST(Encoding, ChineseLiteralHoldsGbkBytes) {
    const std::string literal = "通过测试";
    const std::string expected = "\xCD\xA8\xB9\xFD\xB2\xE2\xCA\xD4";
    EXPECT_EQ(literal, expected);
}

TEST(Encoding, RoundTripBetweenUtf8AndGbk) {
    const std::string utf8 = "\xE9\x80\x9A\xE8\xBF\x87 MA(C,5)";  // "通过 MA(C,5)" in UTF-8
    const std::string gbk = ny::Utf8ToGbk(utf8);
    EXPECT_EQ(gbk, "\xCD\xA8\xB9\xFD MA(C,5)");
    EXPECT_EQ(ny::GbkToUtf8(gbk), utf8);
}

TEST(Encoding, StrictConversionRefusesBrokenUtf8) {
    std::string out;
    EXPECT_FALSE(ny::TryUtf8ToGbk("AB\xE9\x80", &out));
    EXPECT_TRUE(ny::TryUtf8ToGbk("ABC", &out));
    EXPECT_EQ(out, "ABC");
}

TEST(Encoding, LenientConversionMarksBadBytes) {
    EXPECT_EQ(ny::GbkToUtf8("A\xFF" "B"), "A?B");
}

}  // namespace
