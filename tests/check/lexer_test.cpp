// The lexer module at the edges of its input, and the token sink. The tokens of texts are the
// table of texts_test.cpp.

#include <cstring>

#include "tests/check/check_fixture.h"

namespace {

using nytest::CheckTest;

TEST_F(CheckTest, PaintModeZeroLeavesWhiteSpaceOut) {
    CMyLexicalAnaly sink;
    editor.m_pfnPaintLexical(" A ", &sink, 0);
    ASSERT_EQ(sink.GetTokenCount(), 1);
    EXPECT_EQ(sink.GetToken(0).nPos, 1);
}

TEST_F(CheckTest, LexerIgnoresMissingArgumentsAndStopsAtTheLimit) {
    CMyLexicalAnaly sink;
    editor.m_pfnLexical(nullptr, &sink);
    editor.m_pfnLexical("A", nullptr);
    editor.m_pfnPaintLexical(nullptr, &sink, 1);
    EXPECT_EQ(sink.GetTokenCount(), 0);

    // Positions must fit 16 bits: a longer text is read up to the limit only.
    const std::string text(40000, 'A');
    editor.m_pfnPaintLexical((std::string(NY_LEXICAL_MAX_TEXT - 1, ' ') + text).c_str(), &sink, 1);
    ASSERT_EQ(sink.GetTokenCount(), 2);
    EXPECT_EQ(sink.GetToken(1).nPos, NY_LEXICAL_MAX_TEXT - 1);
    EXPECT_EQ(sink.GetToken(1).nLen, 1);
}

TEST(LexicalSink, KeepsTokensAsGivenAndRemovesByIndex) {
    CMyLexicalAnaly sink;
    IMyLexicalAnalysis& face = sink;
    face.AddToken(22, 0, 3);
    face.AddToken(-7, 300, 32767);
    face.AddToken(5, 4, 1);
    EXPECT_EQ(face.GetTokenCount(), 3);
    EXPECT_EQ(face.GetTokenPtr(1)->nType, -7);
    EXPECT_EQ(face.GetTokenPtr(1)->nLen, 32767);
    EXPECT_EQ(face.RemoveToken(1), 1);
    EXPECT_EQ(face.RemoveToken(9), 1);
    ASSERT_EQ(face.GetTokenCount(), 2);
    EXPECT_EQ(sink.GetToken(1).nPos, 4);
}

}  // namespace
