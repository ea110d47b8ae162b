#pragma once
// The host's global settings: where the installation is, which edition runs, and the paths of
// the files that the module reads and writes. Also the hook through which the module shows a
// message to the user.

#include <functional>
#include <vector>

#include "host/pinyin.h"
#include "host/types.h"

// Directory of the installation, with a trailing '/'.
extern CString g_MyExePath;
// Number of the edition; 0 is the default edition.
extern int g_MySysVerType;
// Non-zero adds one further formula set at start.
extern int g_UseGJSHQ;

// File kinds of g_MyGetFilePath.
enum : int {
    NY_FILE_BLOCKS = 3,        // folder of the block files, with a trailing '/'
    NY_FILE_SYSTEM_SET = 10,   // defineuser/indi/nysys.dat, short form
    NY_FILE_USER_SET = 11,     // defineuser/indi/nyuser.dat, long form
};

// Full path of a file kind under g_MyExePath; empty for an unknown kind.
CString g_MyGetFilePath(int kind);

// Shows a message box with GBK text. The default hook records the message and shows nothing, so
// that a headless run and the tests can read what would have been shown.
using NyMessageHook = std::function<int(const CString& text, const CString& caption, unsigned type)>;
int g_MyMessageBox(const CString& text, const CString& caption = CString(), unsigned type = 0);
void g_MySetMessageHook(NyMessageHook hook);

namespace ny {
// Messages shown through the default hook since the last ClearMessages, oldest first.
const std::vector<CString>& RecordedMessages();
void ClearMessages();
}  // namespace ny
