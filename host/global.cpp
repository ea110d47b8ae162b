#include "host/global.h"

CString g_MyExePath = "./";
int g_MySysVerType = 0;
int g_UseGJSHQ = 0;

CString g_MyGetFilePath(int kind) {
    switch (kind) {
        case NY_FILE_BLOCKS: return g_MyExePath + "data/blocks/";
        case NY_FILE_SYSTEM_SET: return g_MyExePath + "defineuser/indi/nysys.dat";
        case NY_FILE_USER_SET: return g_MyExePath + "defineuser/indi/nyuser.dat";
        default: return CString();
    }
}

namespace {
std::vector<CString>& Recorded() {
    static std::vector<CString> messages;
    return messages;
}
NyMessageHook& Hook() {
    static NyMessageHook hook;
    return hook;
}
}  // namespace

int g_MyMessageBox(const CString& text, const CString& caption, unsigned type) {
    if (Hook()) return Hook()(text, caption, type);
    Recorded().push_back(text);
    return 1;
}

void g_MySetMessageHook(NyMessageHook hook) { Hook() = std::move(hook); }

namespace ny {
const std::vector<CString>& RecordedMessages() { return Recorded(); }
void ClearMessages() { Recorded().clear(); }
}  // namespace ny
