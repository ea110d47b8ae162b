#pragma once
// The generated sample market: invented stocks, blocks, bars, ex-rights events and quotes written
// as an installation's data folder, so that the system does something real with no data of the
// user's. Deterministic: the same options give the same files, byte for byte.

#include <cstdint>
#include <string>

namespace ny {

struct SampleMarketOptions {
    int stockCount = 300;        // A shares, half on each exchange; bonds, funds, indexes come on top
    int firstDate = 20180102;    // first trading day (weekdays are trading days)
    int lastDate = 20210630;     // last trading day: the day of the quotes and the 1-minute bars
    int minuteDays = 20;         // trading days at the end with 5-minute bars
    int orderFlowDays = 120;     // trading days at the end with order-flow records
    uint64_t seed = 20210630;
};

// Writes the sample market into dir/data/, replacing files of the same names. False with a
// reason if a file can't be written or the options make no sense.
bool MakeSampleMarket(const std::string& dir, const SampleMarketOptions& options, std::string* error);

// The first line of the data folder's README.txt, by which a generated folder is recognised.
extern const char* const kSampleMarketLabel;

}  // namespace ny
