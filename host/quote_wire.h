#pragma once
// The two server messages of the data refresh, as bytes: the quote request and reply (command
// 2118, paged) and the 1-minute request and reply (command 2115, one stock). Both the picker's
// refresh and the quote server build and read them here, so the layouts exist once.
//
// Quote request:  255, count (2), count field codes (2 each).
// Quote reply:    1 byte read over, total (2), position (2), stocks in page (2), fields (2), then per
//                 stock its id (4) and one 4-byte float per field.
// 1-minute request: stock id (4), 0 (4), 0 (2).
// 1-minute reply:   stock id (4), two values read over (8), flag (1; 1 = nothing to deliver), read
//                   over (2), bars n (2), per bar m_lTime, open, high, low, close, amount, volume.

#include <string>
#include <vector>

#include "host/hisday.h"

namespace ny {

constexpr short kCommandMinute = 2115;
constexpr short kCommandQuotes = 2118;

// The field codes of the quote request, in the order of the reply. The last one repeats.
const std::vector<short>& QuoteFieldCodes();
// The CStock::GetValue code that holds a field code's value.
short QuoteValueCode(short fieldCode);

constexpr int kQuoteHeaderSize = 9;
constexpr int kMinuteHeaderSize = 17;
constexpr int kMinuteBarSize = 28;
constexpr int kMaxMinuteBars = 241;

// Requests.
std::string EncodeQuoteRequest();
std::string EncodeMinuteRequest(int stockId);
// The field codes of a quote request; false for a malformed one.
bool DecodeQuoteRequest(const std::vector<char>& payload, std::vector<short>* codes);
// The stock of a 1-minute request; false for a malformed one.
bool DecodeMinuteRequest(const std::vector<char>& payload, int* stockId);

// A page of a quote reply as read: the header, and where the records start.
struct QuotePage {
    int total = 0;
    int position = 0;
    int count = 0;
    int fields = 0;
    const char* records = nullptr;
};
// Reads the header of a page; false if the bytes can't hold it or the records it announces.
bool ReadQuotePage(const char* bytes, int length, QuotePage* page);

// One page of a quote reply: `values` holds fields.size() values per stock of `ids`.
std::string EncodeQuotePage(int total, int position, const std::vector<int>& ids, int fields,
                            const std::vector<float>& values);

// A 1-minute reply with every bar given (at most 32767; the reader refuses more than 241); an
// empty list sends the flag "nothing to deliver".
std::string EncodeMinuteReply(int stockId, const std::vector<CHisDay>& bars);
// The stock id of a 1-minute reply; false if it is too short to hold one.
bool ReadMinuteStock(const char* bytes, int length, int* stockId);
// The bars of a 1-minute reply. False for "nothing to deliver", a count outside 1 to 241, or a
// reply shorter than its count says. The fields that the reply does not carry are zero.
bool ReadMinuteBars(const char* bytes, int length, std::vector<CHisDay>* bars);

}  // namespace ny
