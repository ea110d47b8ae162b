#include "host/installation.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <unordered_set>

#include "host/clock.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"
#include "host/text_fields.h"

namespace ny {
namespace {

bool ParseFloat(const std::string& text, float* value) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    const float parsed = std::strtof(text.c_str(), &end);
    if (errno != 0 || end != text.c_str() + text.size()) return false;
    *value = parsed;
    return true;
}

// A text file as lines, with their numbers from 1. Comment lines ("#") and blank lines are left
// out; a byte-order mark is skipped.
struct TextLine {
    int number;
    std::string text;
};

bool ReadTextLines(const std::string& path, std::vector<TextLine>* lines) {
    std::string bytes;
    if (!ReadWholeFile(path, &bytes)) return false;
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
    int number = 0;
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find('\n', start);
        if (end == std::string::npos) end = bytes.size();
        ++number;
        const std::string text = Trim(bytes.substr(start, end - start));
        if (!text.empty() && text[0] != '#') lines->push_back({number, text});
        start = end + 1;
    }
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
    std::vector<TextLine> lines;
    if (!ReadTextLines(path, &lines)) {
        ReportProblem(path + ": can't be read, the market is empty");
        return false;
    }
    std::unordered_set<int> listed;
    for (const TextLine& line : lines) {
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

// The quotes file: a line "date=YYYYMMDD", a header line "code,<column>,...", then one line per
// stock. Returns the date, or 0 if there is none.
int LoadQuotes() {
    const std::string path = QuotesPath();
    std::vector<TextLine> lines;
    if (!ReadTextLines(path, &lines)) return 0;
    int date = 0;
    std::vector<short> codes;  // GetValue code of each column after the first; -1 ignored
    bool haveHeader = false;
    for (const TextLine& line : lines) {
        const std::vector<std::string> fields = SplitFields(line.text);
        if (line.text.compare(0, 5, "date=") == 0) {
            date = std::atoi(line.text.c_str() + 5);
            if (WeekDay(date) == 0) {
                ReportLine(path, line.number, "bad date");
                date = 0;
            }
            continue;
        }
        if (fields[0] == "code") {
            codes.clear();
            for (size_t i = 1; i < fields.size(); ++i) {
                short code = -1;
                for (const QuoteColumn& column : QuoteColumns())
                    if (fields[i] == column.name) code = column.code;
                if (code < 0) ReportProblem(path + ": line " + std::to_string(line.number) +
                                            ": unknown column \"" + fields[i] + "\" ignored");
                codes.push_back(code);
            }
            haveHeader = true;
            continue;
        }
        if (!haveHeader) {
            ReportLine(path, line.number, "no header line before the quotes");
            continue;
        }
        if (fields.size() != codes.size() + 1) {
            ReportLine(path, line.number, "expected " + std::to_string(codes.size() + 1) + " fields");
            continue;
        }
        CStock* stock = g_MyGetStock(ParseStockCode(fields[0]));
        if (stock == nullptr) {
            ReportLine(path, line.number, "unknown stock \"" + fields[0] + "\"");
            continue;
        }
        std::vector<float> values(codes.size());
        bool numbers = true;
        for (size_t i = 0; i < codes.size(); ++i) numbers = numbers && ParseFloat(fields[i + 1], &values[i]);
        if (!numbers) {
            ReportLine(path, line.number, "a value is not a number");
            continue;
        }
        for (size_t i = 0; i < codes.size(); ++i)
            if (codes[i] >= 0) stock->SetValue(codes[i], values[i]);
    }
    return date;
}

}  // namespace

const std::vector<QuoteColumn>& QuoteColumns() {
    static const std::vector<QuoteColumn> kColumns = {
        {"preclose", NY_QUOTE_PRECLOSE}, {"open", NY_QUOTE_OPEN}, {"high", NY_QUOTE_HIGH},
        {"low", NY_QUOTE_LOW}, {"last", NY_QUOTE_LAST}, {"volume", NY_QUOTE_VOLUME},
        {"amount", NY_QUOTE_AMOUNT}, {"extra", NY_QUOTE_EXTRA},
        {"buy1", NY_QUOTE_BUY_PRICE1}, {"buyvol1", NY_QUOTE_BUY_VOLUME1},
        {"buy2", NY_QUOTE_BUY_PRICE2}, {"buyvol2", NY_QUOTE_BUY_VOLUME2},
        {"buy3", NY_QUOTE_BUY_PRICE3}, {"buyvol3", NY_QUOTE_BUY_VOLUME3},
        {"sell1", NY_QUOTE_SELL_PRICE1}, {"sellvol1", NY_QUOTE_SELL_VOLUME1},
        {"sell2", NY_QUOTE_SELL_PRICE2}, {"sellvol2", NY_QUOTE_SELL_VOLUME2},
        {"sell3", NY_QUOTE_SELL_PRICE3}, {"sellvol3", NY_QUOTE_SELL_VOLUME3},
        {"curvol", NY_QUOTE_CUR_VOLUME}, {"inner", NY_QUOTE_INNER}, {"outer", NY_QUOTE_OUTER},
        {"avgprice", NY_QUOTE_AVG_PRICE}, {"volratio", NY_QUOTE_VOLUME_RATIO},
        {"change", NY_QUOTE_CHANGE}, {"risepct", NY_QUOTE_RISE_PERCENT},
        {"orderratio", NY_QUOTE_ORDER_RATIO}, {"orderdiff", NY_QUOTE_ORDER_DIFF},
        {"amplitude", NY_QUOTE_AMPLITUDE}, {"pe", NY_QUOTE_PE}, {"turnover", NY_QUOTE_TURNOVER},
    };
    return kColumns;
}

std::string StockListPath() { return g_MyExePath + "data/stocks.csv"; }
std::string QuotesPath() { return g_MyExePath + "data/quotes.csv"; }

bool OpenInstallation(const std::string& path) {
    CloseInstallation();
    g_MyExePath = path.empty() || path.back() == '/' ? path : path + "/";
    const bool listed = LoadStockList();
    ny::IndexStocks();
    const int quoteDate = LoadQuotes();
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

}  // namespace ny
