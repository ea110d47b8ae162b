// The bar-file and ex-rights readers through the bar pipeline of a pick: the fuzzer's bytes are
// cut into a day file, a 5-minute file and an ex-rights file of one stock, which is then loaded
// in a period and with or without adjustment, both chosen by the first byte.
#include <cstdio>

#include "fuzz/fuzz_support.h"
#include "host/files.h"
#include "host/stockdb.h"
#include "picker/pick_request.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Installation();
    if (size < 3) return 0;
    const CStock* stock = g_MyGetStock(fuzz::kStockId);
    const short period = static_cast<short>(1 + data[0] % 10);
    const bool adjust = (data[0] & 0x80) != 0;
    const size_t rest = size - 3;
    const size_t dayBytes = data[1] * rest / 255;
    const size_t minuteBytes = data[2] * (rest - dayBytes) / 255;
    const uint8_t* at = data + 3;
    const CString paths[] = {stock->GetDayFilePath(), stock->GetMin5FilePath(), stock->GetPowerFilePath()};
    fuzz::WriteFile(paths[0], at, dayBytes);
    fuzz::WriteFile(paths[1], at + dayBytes, minuteBytes);
    fuzz::WriteFile(paths[2], at + dayBytes + minuteBytes, rest - dayBytes - minuteBytes);
    std::vector<CHisDay> bars;
    ny::LoadStockBars(fuzz::kStockId, period, adjust, &bars);
    ny::ClearProblems();  // the list of problems would grow with every input
    return 0;
}
