#include "host/installation.h"

#include <sys/stat.h>

#include <cstdlib>
#include <memory>
#include <unordered_set>

#include "host/clock.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"
#include "host/stock_tables.h"
#include "host/text_fields.h"

namespace ny {
namespace {

bool ReadTextLines(const std::string& path, std::vector<NumberedLine>* lines) {
    std::string bytes;
    if (!ReadWholeFile(path, &bytes)) return false;
    *lines = SplitTextLines(std::move(bytes));
    return true;
}

void ReportLine(const std::string& path, int number, const std::string& what) {
    ReportProblem(path + ": line " + std::to_string(number) + ": " + what + ", line skipped");
}

// The bits of one kind word; false for an unknown word. "A" is the A share of the stock's market,
// "STOCK" a share without further marks (another market's, or a B share).
bool KindBits(const std::string& word, char market, unsigned* bits) {
    static const struct {
        const char* word;
        unsigned bits;
    } kWords[] = {{"INDEX", NY_KIND_INDEX}, {"BOND", NY_KIND_BOND}, {"FUND", NY_KIND_FUND},
                  {"HAND", NY_KIND_HAND_UNIT}, {"STOCK", 0}};
    if (word == "A" && (market == NY_MARKET_SH || market == NY_MARKET_SZ)) {
        *bits = market == NY_MARKET_SH ? NY_KIND_SH_A : NY_KIND_SZ_A;
        return true;
    }
    for (const auto& entry : kWords) {
        if (word != entry.word) continue;
        *bits = entry.bits;
        return true;
    }
    return false;
}

// Kind words of the stock list, joined by '+'.
bool ParseKind(const std::string& text, char market, unsigned* kind) {
    *kind = 0;
    size_t start = 0;
    for (;;) {
        const size_t plus = text.find('+', start);
        unsigned bits = 0;
        if (!KindBits(text.substr(start, plus == std::string::npos ? std::string::npos : plus - start), market, &bits))
            return false;
        *kind |= bits;
        if (plus == std::string::npos) return true;
        start = plus + 1;
    }
}

// One line of the stock list: code, name, pinyin, kind, and optionally circulating and total
// shares in 10,000 shares. Returns null with a reason for a malformed line.
CStock* ParseStockLine(const std::vector<std::string>& fields, std::string* reason) {
    if (fields.size() < 4 || fields.size() > 6) {
        *reason = "expected 4 to 6 fields, found " + std::to_string(fields.size());
        return nullptr;
    }
    auto stock = std::make_unique<CStock>();
    stock->m_lStockID = ParseStockCode(fields[0]);
    if (stock->m_lStockID == 0) {
        *reason = "bad code \"" + fields[0] + "\"";
        return nullptr;
    }
    stock->m_cMarket = static_cast<char>(stock->m_lStockID / 1000000);
    stock->m_strCode = fields[0].substr(2);
    if (!TryUtf8ToGbk(fields[1], &stock->m_strName) || stock->m_strName.empty()) {
        *reason = "name is empty or not UTF-8";
        return nullptr;
    }
    stock->m_strPyCode = fields[2];
    if (!ParseKind(fields[3], stock->m_cMarket, &stock->m_dwKind)) {
        *reason = "unknown kind \"" + fields[3] + "\"";
        return nullptr;
    }
    if ((fields.size() > 4 && !ParseFloat(fields[4], &stock->m_fCapital)) ||
        (fields.size() > 5 && !ParseFloat(fields[5], &stock->m_fTotalCapital))) {
        *reason = "shares are not numbers";
        return nullptr;
    }
    return stock.release();
}

bool LoadStockList() {
    const std::string path = StockListPath();
    std::vector<NumberedLine> lines;
    if (!ReadTextLines(path, &lines)) {
        ReportProblem(path + ": can't be read, the market is empty");
        return false;
    }
    std::unordered_set<int> listed;
    for (const NumberedLine& line : lines) {
        if (line.text.compare(0, 5, "code,") == 0) continue;  // the header line
        std::string reason;
        CStock* stock = ParseStockLine(SplitFields(line.text), &reason);
        if (stock == nullptr) {
            ReportLine(path, line.number, reason);
            continue;
        }
        if (!listed.insert(stock->m_lStockID).second) {
            ReportLine(path, line.number, "stock " + FormatStockCode(stock->m_lStockID) + " listed twice");
            delete stock;
            continue;
        }
        g_MyStocksArray.push_back(stock);
    }
    return true;
}

}  // namespace

std::string StockListPath() { return g_MyExePath + "data/stocks.csv"; }
std::string QuotesPath() { return StockTablePath(QuoteTable()); }

bool OpenInstallation(const std::string& path) {
    CloseInstallation();
    g_MyExePath = path.empty() || path.back() == '/' ? path : path + "/";
    const bool listed = LoadStockList();
    ny::IndexStocks();
    const int quoteDate = LoadStockTable(QuoteTable());
    LoadStockTable(FinanceTable());
    g_MyCurTradeDate = quoteDate != 0 ? quoteDate : LastWeekdayOnOrBefore(CClockModule::m_SystemDate);
    return listed;
}

void CloseInstallation() {
    ClearStocks();
    g_MyIndexSH.Reset();
    g_MyIndexSZ.Reset();
    ClearProblems();
    g_MyCurTradeDate = 0;
}

bool IsDirectory(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string DefaultInstallation(const std::string& installedFromProgram, const std::string& built) {
    const std::string program = ProgramDirectory();
    if (!program.empty() && IsDirectory(program + installedFromProgram)) return program + installedFromProgram;
    return built;
}

}  // namespace ny
