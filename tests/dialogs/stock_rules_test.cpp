// Rule files: written and read back, and every cut or damaged form refused without a read past
// the end.

#include <gtest/gtest.h>

#include "dialogs/stock_rules.h"

namespace {

TEST(StockRules, RoundTripKeepsOrderAndLogicAndCutFormsAreRefused) {
    const ny::StockRule rule{{"MACD金叉", std::string(300, 'N')}, 2};
    const std::string bytes = ny::EncodeStockRule(rule);
    ASSERT_EQ(bytes.size(), 4u + 2 * 256 + 1);
    ny::StockRule back;
    ASSERT_TRUE(ny::DecodeStockRule(bytes, &back));
    EXPECT_EQ(back.names[0], "MACD金叉");
    EXPECT_EQ(back.names[1], std::string(255, 'N'));
    EXPECT_EQ(back.logic, 2);
    const struct {
        const char* what;
        std::string bytes;
        bool ok;
    } rows[] = {
        {"empty", "", false},
        {"count only", bytes.substr(0, 4), false},
        {"without the logic byte", bytes.substr(0, bytes.size() - 1), false},
        {"one field short", bytes.substr(0, 4 + 256), false},
        {"negative count", std::string("\xFF\xFF\xFF\xFF\x01", 5), false},
        {"huge count", std::string("\xFF\xFF\xFF\x7F\x01", 5), false},
        {"no conditions", std::string("\0\0\0\0\x01", 5), true},
        {"trailing bytes", bytes + "xyz", true},
    };
    for (const auto& row : rows) EXPECT_EQ(ny::DecodeStockRule(row.bytes, &back), row.ok) << row.what;
}

}  // namespace
