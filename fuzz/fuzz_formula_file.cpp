// The formula-file loader: the fuzzer's bytes as one file of the library's start sequence (the
// system set, the base set or the user's file, chosen by the first byte), then as an import.
#include <cstdio>

#include "fuzz/fuzz_support.h"
#include "host/files.h"
#include "host/global.h"
#include "model/library.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string& home = fuzz::Installation();
    if (size == 0) return 0;
    g_MySetMessageHook([](const CString&, const CString&, unsigned) { return 1; });
    const CString files[] = {g_MyGetFilePath(NY_FILE_SYSTEM_SET), home + "defineuser/indi/nybase.dat",
                             g_MyGetFilePath(NY_FILE_USER_SET)};
    const CString& path = files[data[0] % 3];
    fuzz::WriteFile(path, data + 1, size - 1);
    g_MyInitIndicator();
    int added = 0;
    ny::ImportFormula(path, &added);
    g_MyRemoveIndicators();
    std::remove(path.c_str());
    ny::ClearProblems();  // the list of problems would grow with every input
    return 0;
}
