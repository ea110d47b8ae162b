// The rows of the catalog: counts, order and texts. The expected values are typed from the
// function reference the catalog must reproduce, independently of the data file.

#include <set>
#include <string>

#include "tests/catalog/loaded_catalog.h"

namespace {

struct ClassExpectation {
    int nClass;
    int count;
    const char* first;
    const char* last;
};

constexpr ClassExpectation kClasses[] = {
    {1, 15, "HIGH", "SELLVOL"},          {2, 15, "PERIOD", "SECTOTIME"},
    {3, 35, "BACKSET", "FORCAL"},        {4, 8, "CROSS", "LAST"},
    {5, 6, "NOT", "MIN"},                {6, 21, "ACOS", "RAND"},
    {7, 12, "AVEDEV", "BETAEX"},         {8, 12, "MODULESETNUM", "INFOFILE"},
    {9, 9, "PEAK", "ZIG"},               {10, 9, "INDEXA", "ISINDEX"},
    {11, 16, "PLOYLINE", "DRAWGBK"},     {12, 15, "FINANCE(1)", "FINANCE(41)"},
    {13, 34, "MFLOW(1)", "MFLOW(36)"},   {14, 33, "DYNAINFO(3)", "DYNAINFO(39)"},
    {15, 29, "COLORBACK", "PXDN"},
};

TEST(CatalogTable, CategoriesFollowEachOtherWithTheirCountsFirstAndLastRows) {
    CFunctionManager& catalog = LoadedCatalog();
    ASSERT_EQ(catalog.GetCount(), 269);
    int index = 0;
    for (const ClassExpectation& cls : kClasses) {
        SCOPED_TRACE(cls.nClass);
        EXPECT_EQ(catalog.GetFun(index)->m_strName, cls.first);
        for (int i = 0; i < cls.count; ++i) EXPECT_EQ(catalog.GetFun(index + i)->m_cClass, cls.nClass);
        index += cls.count;
        EXPECT_EQ(catalog.GetFun(index - 1)->m_strName, cls.last);
    }
    EXPECT_EQ(index, 269);
}

TEST(CatalogTable, LoadOperationsEachAppendOneCategory) {
    CFunctionManager catalog;
    catalog.LoadDrawFun();
    ASSERT_EQ(catalog.GetCount(), 16);
    EXPECT_EQ(catalog.GetFun(0)->m_strName, "PLOYLINE");
    catalog.LoadHQFun();
    ASSERT_EQ(catalog.GetCount(), 31);
    EXPECT_EQ(catalog.GetFun(16)->m_strName, "HIGH");
    EXPECT_EQ(catalog.GetFun(16)->m_cClass, 1);
}

TEST(CatalogTable, EveryWordStandsOnceAndFindsItsOwnRow) {
    CFunctionManager& catalog = LoadedCatalog();
    std::set<CString> words;
    for (int i = 0; i < catalog.GetCount(); ++i) {
        FUN_ITEM* item = catalog.GetFun(i);
        EXPECT_TRUE(words.insert(item->m_strName).second) << "twice: " << item->m_strName;
        EXPECT_EQ(catalog.FindFun(item->m_strName.c_str(), 0), item) << item->m_strName;
    }
}

TEST(CatalogTable, RowInvariantsHoldForEveryRow) {
    CFunctionManager& catalog = LoadedCatalog();
    int patterned = 0;
    for (int i = 0; i < catalog.GetCount(); ++i) {
        const FUN_ITEM& item = *catalog.GetFun(i);
        SCOPED_TRACE(item.m_strName);
        // The argument order is a permutation of the arguments, plain beyond them.
        std::set<int> ranks;
        for (int a = 0; a < item.m_cArgCount; ++a) ranks.insert(item.m_nArgOrder[a]);
        EXPECT_EQ(static_cast<int>(ranks.size()), item.m_cArgCount);
        if (!ranks.empty()) {
            EXPECT_EQ(*ranks.rbegin(), item.m_cArgCount - 1);
        }
        for (int a = item.m_cArgCount; a < NY_FUN_MAX_ARGS; ++a) EXPECT_EQ(item.m_nArgOrder[a], a);
        const int expectedKind = !item.m_strPattern.empty() ? 2 : item.m_strName == "NOT" ? 1 : 0;
        EXPECT_EQ(item.m_cTransKind, expectedKind);
        patterned += item.m_cTransKind == 2;
        if (item.m_cClass == 15) {
            EXPECT_EQ(item.m_cArgCount, 0);
            EXPECT_TRUE(item.m_strUsage.empty() && item.m_strExample.empty());
        } else {
            EXPECT_EQ(item.m_cAttrKind, 0);
            EXPECT_FALSE(item.m_strUsage.empty());
        }
    }
    EXPECT_EQ(patterned, 94);
}

TEST(CatalogTable, OnlyTheZigZagFamilyCarriesATranslatorCode) {
    CFunctionManager& catalog = LoadedCatalog();
    int coded = 0;
    for (int i = 0; i < catalog.GetCount(); ++i) coded += catalog.GetFun(i)->m_nCode != 0;
    EXPECT_EQ(coded, 5);
    EXPECT_EQ(Row("PEAK").m_nCode, 101);
    EXPECT_EQ(Row("PEAKBARS").m_nCode, 102);
    EXPECT_EQ(Row("TROUGH").m_nCode, 103);
    EXPECT_EQ(Row("TROUGHBARS").m_nCode, 104);
    EXPECT_EQ(Row("ZIG").m_nCode, 105);
}

void ExpectOrder(const char* word, std::initializer_list<int> leading) {
    SCOPED_TRACE(word);
    const FUN_ITEM& item = Row(word);
    int a = 0;
    for (int rank : leading) EXPECT_EQ(item.m_nArgOrder[a++], rank);
    EXPECT_EQ(a, item.m_cArgCount);
}

TEST(CatalogTable, ArgumentOrdersOutOfThePlainOrder) {
    for (const char* word : {"HHV", "HHVBARS", "LLV", "LLVBARS", "REF", "REFDATE", "EXIST", "EVERY"})
        ExpectOrder(word, {1, 0});
    ExpectOrder("NDAY", {2, 1, 0});
    ExpectOrder("LAST", {2, 0, 1});
    ExpectOrder("IFN", {0, 2, 1});
    ExpectOrder("IF", {0, 1, 2});
    ExpectOrder("SMA", {0, 1, 2});
    ExpectOrder("DRAWGBK", {0, 1, 2, 3, 4, 5});
}

TEST(CatalogTable, QuoteAndTimeTexts) {
    EXPECT_TEXT(Row("HIGH").m_strShort, "\xD7\xEE\xB8\xDF\xBC\xDB");  // "最高价" in GBK
    EXPECT_TEXT(Row("HIGH").m_strUsage, "HIGH");
    EXPECT_TEXT(Row("VOL").m_strDesc, "返回该周期成交量，单位手.");
    EXPECT_TEXT(Row("BUYVOL").m_strDesc, "返回主动性买盘,即外盘。单位手.");
    EXPECT_TEXT(Row("AMOUNT").m_strShort, "成交额(元)");
    EXPECT_TEXT(Row("DECLINE").m_strUsage, "DECLINE(仅对大盘有效)");

    EXPECT_TEXT(Row("PERIOD").m_strUsage, "范围值为0～9，依次表示1/5/15/30/60分钟，日/周/月/季/年");
    EXPECT_TEXT(Row("DATE").m_strUsage,
                "DATE\r\n函数返回1000101,表示2000年1月1日,DATE返回值+19000000后才是真正的日期\r\n值");
    EXPECT_TEXT(Row("YEAR").m_strUsage, "YEARE");
    EXPECT_TEXT(Row("TFILT").m_strUsage,
                "TFILT(X,D1,M1,D2,M2)\r\nTFILT(CLOSE,1040101,1025,1040101,1345)表示在2004年1月1日的10:25到\r\n"
                "2004年1月1日的13:45的收盘价是有效的.\r\n周期以日为基本单位的,分时为0有效.");
    const FUN_ITEM& sectotime = Row("SECTOTIME");
    EXPECT_EQ(sectotime.m_cArgCount, 1);
    EXPECT_TEXT(sectotime.m_strPattern, "?对应的转换时间");
    EXPECT_TEXT(sectotime.m_strUsage, "TIMETOSEC(N)\r\n返回0时后N秒是什么时间.有效秒数为(0-86399)");
    EXPECT_TEXT(sectotime.m_strExample, "SECTOTIME(34200)返回93000.");
    EXPECT_TEXT(Row("DATETODAY").m_strDesc, "上指纪元，指定日期到1990.12.19的天数.");
}

TEST(CatalogTable, ReferenceTexts) {
    const FUN_ITEM& sma = Row("SMA");
    EXPECT_EQ(sma.m_cArgCount, 3);
    EXPECT_TEXT(sma.m_strPattern, "?的?日[?日权重]移动平均");
    EXPECT_TEXT(sma.m_strUsage, "SMA(X,N,M)\r\nXX的N日移动平均,M为权重,如Y=(X*M+Y'*(N-M))/N.");
    EXPECT_TEXT(Row("CONST").m_strDesc, "CONST(A):取A最后的值为常量..");
    EXPECT_TEXT(Row("LOWRANGE").m_strDesc, "当前值是近多少周期内的最小值..");
    EXPECT_TEXT(Row("FINDLOW").m_strUsage, "FINDLOW (VAR,N,M,T):VAR在N日前的M天内第T个最低价");
    EXPECT_TEXT(Row("FORCAL").m_strShort, "4个参数for循环运算贵金属专用");
    EXPECT_EQ(Row("FINDHIGH").m_cArgCount, 4);
    EXPECT_TRUE(Row("FINDHIGH").m_strPattern.empty());
    EXPECT_TEXT(Row("BARSSINCEN").m_strUsage,
                "BARSSINCEN(X,N)\r\n最近N周期内第一个条件成立到当前的周期数.\r\n用法\r\nBARSSINCEN(X,N)\r\n"
                "最近N周期内,第一次X不为0到现在的周期数.\r\nBARSSINCEN(HIGH>10,5)表示最近5周期内股价第一次"
                "超过10元时到当前的周期数");
    EXPECT_TEXT(Row("REFDATE").m_strExample, "REFDATE(CLOSE,1011208)表示2001年12月08日的收盘价");
    EXPECT_TEXT(Row("REF").m_strPattern, "?日前的?");
    EXPECT_TEXT(Row("DMA").m_strUsage,
                "DMA(X,A),求X的动态移动平均.\r\n算法: 若Y=DMA(X,A)则 Y=A*X+(1-A)*Y',其中Y'表示上一周期Y值,"
                "A必须小于1.\r\nDMA(CLOSE,VOL/CAPITAL)   表示求以换手率作平滑因子的平均价");
}

TEST(CatalogTable, LogicArithmeticMathAndStatisticsTexts) {
    EXPECT_TEXT(Row("UPNDAY").m_strDesc, "两条线维持一定周期后交叉.");
    EXPECT_TEXT(Row("EVERY").m_strDesc, "返回是否连涨周期数.");
    EXPECT_TEXT(Row("LONGCROSS").m_strPattern, "?小于?保持?个交易日后交叉上穿");
    EXPECT_TEXT(Row("LAST").m_strExample, "LAST(CLOSE>OPEN,10,5)\r\n 表示从前10日到前5日内一直阳线");

    const FUN_ITEM& negation = Row("NOT");
    EXPECT_EQ(negation.m_cArgCount, 0);
    EXPECT_EQ(negation.m_cTransKind, 1);
    EXPECT_TEXT(negation.m_strExample, "NOT(ISUP)表示平盘或收阴");
    EXPECT_TEXT(Row("IFN").m_strUsage, "IFN(X,A,B)若X不为0则返回B,否则返回A");
    EXPECT_TEXT(Row("MAX").m_strExample, "MAX(CLOSE-OPEN,0)表示若收盘价大于今开价返回它们的差值,否则返\r\n回0");

    const FUN_ITEM& rand = Row("RAND");
    EXPECT_EQ(rand.m_cArgCount, 1);
    EXPECT_EQ(rand.m_cTransKind, 0);
    EXPECT_TEXT(rand.m_strUsage, "RAND(N),返回一个范围在1-N的随机整数");
    EXPECT_TEXT(Row("ROUND").m_strPattern, "对?(进行)四舍五入");
    EXPECT_TEXT(Row("BETWEEN").m_strExample,
                "BETWEEN(CLOSE,MA(CLOSE,10),MA(CLOSE,5))表示收盘价介于5日均线\r\n和10日均线之间");
    EXPECT_TEXT(Row("FLOOR").m_strExample, "FLOOR(12.3)求得12,FLOOR(-3.5)求得-4");

    EXPECT_TEXT(Row("BETA").m_strShort, "β(Beta)系数");
    EXPECT_EQ(Row("BETA").m_cArgCount, 1);
    EXPECT_TEXT(Row("BETAEX").m_strPattern, "?相对于?的?周期相关放大系数");
    EXPECT_TEXT(Row("COVAR").m_strUsage, "COVAR(X,Y,N) 返回X和Y的N周期的协方差");
}

TEST(CatalogTable, CrossSectionPatternAndMarketTexts) {
    EXPECT_TEXT(Row("INFOFILE").m_strShort, "读取本地文件数据信息,本地文件夹(data\\infofile)");
    EXPECT_TEXT(Row("INFOFILE").m_strDesc,
                "INFOFILE('股东人数',stockid);读取本地文件:data\\infofile\\股东人数\\sz\\000002.data的文件,"
                "负1表示当前股票代码");
    EXPECT_TEXT(Row("MODULESORT").m_strExample,
                "MODULESORT('行业','房地产',14,0)表示该股涨幅值在行业/房地产板块中的排名,\r\n"
                "最后一个参数为0表示降序排名, 1表示升序 动态行情序号 与 DYNAINFO函数中的定义一致. \r\n"
                "当板块名称为空，则从板块分类下属的所有板块中查找，从找到的第一个板块里做排序");
    EXPECT_TEXT(Row("STRCAT").m_strDesc, "STRCAT(A,B);将两个字符串A,B相加成一个字符串C.");
    EXPECT_TEXT(Row("SETCODE").m_strUsage, "返回该股所在的交易所代号\r\n0:上海,1:深圳,2:香港");

    EXPECT_TEXT(Row("PEAK").m_strPattern, "??%之字转向的前?个波峰值");
    EXPECT_TEXT(Row("TROUGHBARS").m_strExample, "TROUGH(2,5,2)表示%5最低价ZIG转向的前2个波谷到当前的周期数");
    EXPECT_TEXT(Row("ZIG").m_strPattern, "??%的之字转向");
    EXPECT_EQ(Row("ZIG").m_cArgCount, 2);
    EXPECT_TEXT(Row("COST").m_strPattern, "以?%比例计算的获利盘价格");

    EXPECT_TEXT(Row("INDEXA").m_strDesc, "大盘成交额");
    EXPECT_TEXT(Row("INDEXADV").m_strDesc, "上涨家数.");
    EXPECT_TEXT(Row("INDEXV").m_strUsage, "INDEXV");
}

TEST(CatalogTable, DrawTexts) {
    EXPECT_TEXT(Row("DRAWLINE").m_strPattern,
                "当满足条件?时,在?位置画直线起点，当满足条件?时,在?位置画直线终点,?表示是否延长.");
    EXPECT_TEXT(Row("DRAWBMP").m_strUsage,
                "用法:DRAWBMP(COND,PRICE,'Bmp文件名'),当条件COND满足时,在PRICE位置画defineuser目录下面的"
                "picture目录下面的\"Bmp文件名\";");
    EXPECT_TEXT(Row("FILLRGN").m_strUsage, "FILLRGN(COND,VAL1,VAL2,COLOR1),当条件COND满足时,在VAL1和VAL2之间填充COLOR1\r\n");
    EXPECT_TEXT(Row("FILLRGN").m_strExample, "FILLRGN(OPEN,LOW,HIGHT,COLOR1);");
    EXPECT_EQ(Row("DRAWHITTIP").m_cArgCount, 3);
    EXPECT_TEXT(Row("DRAWHITTIP").m_strPattern, "绘制文件信息");
    EXPECT_EQ(Row("DRAWGBK").m_cArgCount, 6);
    EXPECT_TRUE(Row("RGB").m_strPattern.empty());
    EXPECT_TEXT(Row("RGB").m_strExample, "RGB(0,0,255)输出结果为16进制的0XFF0000");
    EXPECT_TEXT(Row("STICKLINE").m_strUsage,
                "STICKLINE(COND,PRICE1,PRICE2,WIDTH,EMPTY),当COND条件满足时,\r\n在PRICE1和PRICE2位置之间画柱状线"
                "，宽度为WIDTH(10为标准间距),EMPTH为0\r\n画实心柱,-1画虚线空心柱,否则画实线空心柱。");
}

TEST(CatalogTable, FinanceFundFlowAndDynamicRowsCarryTheirArgument) {
    CFunctionManager& catalog = LoadedCatalog();
    const FUN_ITEM* capital = catalog.GetFun(15 + 15 + 35 + 8 + 6 + 21 + 12 + 12 + 9 + 9 + 16 + 2);
    EXPECT_EQ(capital->m_strName, "CAPITAL");
    EXPECT_TEXT(capital->m_strShort, "当前流通股本(手)");
    EXPECT_TEXT(capital->m_strDesc, "CAPITAL  当前流通股本");
    EXPECT_TEXT(Row("FINANCE(7)").m_strDesc, "FINANCE(7) 流通股本(随时间可能有变化)");
    EXPECT_TEXT(Row("FINANCE(32)").m_strShort, "每股未分配利润(元)");
    EXPECT_TEXT(Row("FINANCE(41)").m_strUsage, "FINANCE(41)");

    EXPECT_TEXT(Row("MFLOW(24)").m_strShort, "特大卖单");
    EXPECT_EQ(catalog.FindFun("MFLOW(25)", 0), nullptr);  // the family skips 25 and 28
    EXPECT_TEXT(Row("MFLOW(36)").m_strDesc, "MFLOW(36)散户总卖单");
    EXPECT_TEXT(Row("DYNAINFO(23)").m_strShort, "外盘");
    EXPECT_TEXT(Row("DYNAINFO(39)").m_strDesc, "DYNAINFO(39) 市盈率 即时行情数据");

    // Within each family the description is built from the word and the short name.
    for (int i = 0; i < catalog.GetCount(); ++i) {
        const FUN_ITEM& item = *catalog.GetFun(i);
        if (item.m_cClass < 12 || item.m_cClass > 14) continue;
        SCOPED_TRACE(item.m_strName);
        EXPECT_EQ(item.m_cArgCount, 0);
        EXPECT_EQ(item.m_strUsage, item.m_strName);
        if (item.m_cClass == 13) {
            EXPECT_EQ(item.m_strDesc, item.m_strName + item.m_strShort);
        } else if (item.m_cClass == 14) {
            EXPECT_EQ(item.m_strDesc, item.m_strName + " " + item.m_strShort + " 即时行情数据");
        }
    }
}

}  // namespace
