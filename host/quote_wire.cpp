#include "host/quote_wire.h"

#include <algorithm>
#include <cstring>

#include "host/comm_data.h"
#include "host/stockdb.h"

namespace ny {
namespace {

constexpr unsigned char kQuoteRequestMark = 255;
constexpr int kMaxRequestedFields = 64;

// Field code of the request and the quote field that holds its value.
struct QuoteField {
    short code;
    short valueCode;
};

const std::vector<QuoteField>& QuoteFields() {
    static const std::vector<QuoteField> kFields = {
        {1, NY_QUOTE_OPEN}, {3, NY_QUOTE_HIGH}, {4, NY_QUOTE_LOW}, {2, NY_QUOTE_LAST},
        {5, NY_QUOTE_VOLUME}, {6, NY_QUOTE_AMOUNT}, {71, NY_QUOTE_TURNOVER}, {67, NY_QUOTE_AMPLITUDE},
        {51, NY_QUOTE_INNER}, {66, NY_QUOTE_OUTER}, {63, NY_QUOTE_RISE_PERCENT}, {70, NY_QUOTE_PE},
        {61, NY_QUOTE_VOLUME_RATIO}, {61, NY_QUOTE_VOLUME_RATIO},
    };
    return kFields;
}

void PutShort(std::string* out, short value) {
    char bytes[2];
    g_MyInt2Buf(bytes, &value, 2);
    out->append(bytes, 2);
}
void PutInt(std::string* out, int value) {
    char bytes[4];
    g_MyInt2Buf(bytes, &value, 4);
    out->append(bytes, 4);
}
void PutFloat(std::string* out, float value) {
    char bytes[4];
    std::memcpy(bytes, &value, 4);
    out->append(bytes, 4);
}
short GetShort(const char* at) {
    short value = 0;
    g_MyBuf2Int(&value, const_cast<char*>(at), 2);
    return value;
}
int GetInt(const char* at) {
    int value = 0;
    g_MyBuf2Int(&value, const_cast<char*>(at), 4);
    return value;
}
float GetFloat(const char* at) {
    float value = 0;
    std::memcpy(&value, at, 4);
    return value;
}

}  // namespace

const std::vector<short>& QuoteFieldCodes() {
    static const std::vector<short> kCodes = [] {
        std::vector<short> codes;
        for (const QuoteField& field : QuoteFields()) codes.push_back(field.code);
        return codes;
    }();
    return kCodes;
}

short QuoteValueCode(short fieldCode) {
    for (const QuoteField& field : QuoteFields())
        if (field.code == fieldCode) return field.valueCode;
    return -1;
}

std::string EncodeQuoteRequest() {
    std::string out(1, static_cast<char>(kQuoteRequestMark));
    PutShort(&out, static_cast<short>(QuoteFieldCodes().size()));
    for (short code : QuoteFieldCodes()) PutShort(&out, code);
    return out;
}

std::string EncodeMinuteRequest(int stockId) {
    std::string out;
    PutInt(&out, stockId);
    PutInt(&out, 0);
    PutShort(&out, 0);
    return out;
}

bool DecodeQuoteRequest(const std::vector<char>& payload, std::vector<short>* codes) {
    if (payload.size() < 3 || static_cast<unsigned char>(payload[0]) != kQuoteRequestMark) return false;
    const short count = GetShort(&payload[1]);
    if (count < 1 || count > kMaxRequestedFields || payload.size() != 3 + 2 * static_cast<size_t>(count))
        return false;
    codes->clear();
    for (short i = 0; i < count; ++i) codes->push_back(GetShort(&payload[3 + 2 * i]));
    return true;
}

bool DecodeMinuteRequest(const std::vector<char>& payload, int* stockId) {
    if (payload.size() != 10) return false;
    *stockId = GetInt(payload.data());
    return true;
}

bool ReadQuotePage(const char* bytes, int length, QuotePage* page) {
    if (length < kQuoteHeaderSize) return false;
    page->total = static_cast<unsigned short>(GetShort(bytes + 1));
    page->position = static_cast<unsigned short>(GetShort(bytes + 3));
    page->count = static_cast<unsigned short>(GetShort(bytes + 5));
    page->fields = static_cast<unsigned short>(GetShort(bytes + 7));
    page->records = bytes + kQuoteHeaderSize;
    const long long needed = kQuoteHeaderSize + static_cast<long long>(page->count) * (4 + 4LL * page->fields);
    return needed <= length;
}

std::string EncodeQuotePage(int total, int position, const std::vector<int>& ids, int fields,
                            const std::vector<float>& values) {
    std::string out(1, '\0');
    PutShort(&out, static_cast<short>(total));
    PutShort(&out, static_cast<short>(position));
    PutShort(&out, static_cast<short>(ids.size()));
    PutShort(&out, static_cast<short>(fields));
    for (size_t i = 0; i < ids.size(); ++i) {
        PutInt(&out, ids[i]);
        for (int f = 0; f < fields; ++f) PutFloat(&out, values[i * fields + f]);
    }
    return out;
}

std::string EncodeMinuteReply(int stockId, const std::vector<CHisDay>& bars) {
    const size_t count = std::min<size_t>(bars.size(), 32767);
    std::string out;
    PutInt(&out, stockId);
    PutInt(&out, 0);
    PutInt(&out, 0);
    out.push_back(count == 0 ? 1 : 0);
    PutShort(&out, 0);
    PutShort(&out, static_cast<short>(count));
    for (size_t i = 0; i < count; ++i) {
        const CHisDay& bar = bars[i];
        PutInt(&out, bar.m_lTime);
        for (float value : {bar.m_fOpen, bar.m_fHigh, bar.m_fLow, bar.m_fClose, bar.m_fAmount, bar.m_fVolume})
            PutFloat(&out, value);
    }
    return out;
}

bool ReadMinuteStock(const char* bytes, int length, int* stockId) {
    if (length < 4) return false;
    *stockId = GetInt(bytes);
    return true;
}

bool ReadMinuteBars(const char* bytes, int length, std::vector<CHisDay>* bars) {
    if (length < kMinuteHeaderSize || bytes[12] == 1) return false;
    const short count = GetShort(bytes + 15);
    if (count < 1 || count > kMaxMinuteBars || kMinuteHeaderSize + count * kMinuteBarSize > length) return false;
    bars->assign(static_cast<size_t>(count), CHisDay{});
    for (short i = 0; i < count; ++i) {
        const char* at = bytes + kMinuteHeaderSize + i * kMinuteBarSize;
        CHisDay& bar = (*bars)[i];
        bar.m_lTime = GetInt(at);
        bar.m_fOpen = GetFloat(at + 4);
        bar.m_fHigh = GetFloat(at + 8);
        bar.m_fLow = GetFloat(at + 12);
        bar.m_fClose = GetFloat(at + 16);
        bar.m_fAmount = GetFloat(at + 20);
        bar.m_fVolume = GetFloat(at + 24);
    }
    return true;
}

}  // namespace ny
