// The lexer module's two entry points over any text: tokens must lie inside the text, in order.
#include <dlfcn.h>

#include <cstdlib>

#include "check/lexical.h"
#include "fuzz/fuzz_support.h"

namespace {

struct Entries {
    NyLexicalAnalysisFn lexical = nullptr;
    NyPaintLexicalAnalysisFn paint = nullptr;
};

Entries OpenModule() {
    void* module = dlopen(NY_LEXICAL_BUILD_PATH, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) std::abort();
    return {reinterpret_cast<NyLexicalAnalysisFn>(dlsym(module, NY_LEXICAL_ENTRY)),
            reinterpret_cast<NyPaintLexicalAnalysisFn>(dlsym(module, NY_PAINT_LEXICAL_ENTRY))};
}

void CheckTokens(const CMyLexicalAnaly& sink, size_t length) {
    int end = 0;
    for (int i = 0; i < const_cast<CMyLexicalAnaly&>(sink).GetTokenCount(); ++i) {
        const LEX_TOKEN token = sink.GetToken(static_cast<unsigned>(i));
        if (token.nPos < end || token.nLen < 0 || static_cast<size_t>(token.nPos + token.nLen) > length)
            std::abort();
        end = token.nPos;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Entries entries = OpenModule();
    if (size == 0) return 0;
    const std::string text = fuzz::Text(data + 1, size - 1, NY_LEXICAL_MAX_TEXT + 100);
    CMyLexicalAnaly tokens;
    entries.lexical(text.c_str(), &tokens);
    CheckTokens(tokens, text.size());
    CMyLexicalAnaly painted;
    entries.paint(text.c_str(), &painted, data[0] % 3);
    CheckTokens(painted, text.size());
    return 0;
}
