// The CSV readers: bars of a user's file (merged into a stored series, as an import does) and,
// when the first byte is odd, the installation's stock list.
#include "fuzz/fuzz_support.h"
#include "host/files.h"
#include "host/bar_csv.h"
#include "host/installation.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string& home = fuzz::Installation();
    if (size == 0) return 0;
    const std::string text = fuzz::Text(data + 1, size - 1, 1 << 16);
    if (data[0] % 2 == 1) {
        static const std::string stocks = home + "stocks-fuzz/";
        fuzz::WriteFile(stocks + "data/stocks.csv", text);
        ny::OpenInstallation(stocks);
        ny::OpenInstallation(home);
        return 0;
    }
    const ny::BarCsv csv = ny::ParseBarCsv(text);
    ny::MergeBars(fuzz::FixedBars(), csv.bars);
    ny::ClearProblems();  // the list of problems would grow with every input
    return 0;
}
