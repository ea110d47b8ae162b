// The token sink that the clients of the lexer hand to it.

#include "check/lexical.h"

int CMyLexicalAnaly::GetTokenCount() { return static_cast<int>(m_arTokens.size()); }

void CMyLexicalAnaly::AddToken(short nType, short nPos, short nLen) {
    m_arTokens.push_back(LEX_TOKEN{nType, nPos, nLen});
}

LEX_TOKEN* CMyLexicalAnaly::GetTokenPtr(unsigned index) { return &m_arTokens[index]; }

int CMyLexicalAnaly::RemoveToken(unsigned index) {
    if (index < m_arTokens.size()) m_arTokens.erase(m_arTokens.begin() + index);
    return 1;
}

void CMyLexicalAnaly::Finish() {}

LEX_TOKEN CMyLexicalAnaly::GetToken(unsigned index) const { return m_arTokens[index]; }
