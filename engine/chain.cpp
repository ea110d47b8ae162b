#include "engine/chain.h"

#include <string_view>
#include <unordered_map>

namespace ny {

const std::vector<WordGroup>& BuiltInChain() {
    static const std::vector<WordGroup> chain = {
        {{"REVERSE", "ABS", "SIGN", "SQRT", "NOT", "SIN", "COS", "TAN", "ASIN", "ACOS", "ATAN", "LN",
          "LOG", "EXP", "CEILING", "FLOOR", "INTPART", "FRACPART", "ROUND", "RAND", "DYNAINFO",
          "FINANCE"},
         &CIndicator::ReadMathFunc1, nullptr, false, false},
        {{"MOD", "MAX", "MIN", "POW"}, &CIndicator::ReadMathFunc2, nullptr, false, false},
        {{"RGB", "BETWEEN"}, &CIndicator::ReadMathFunc3, nullptr, false, false},
        {{"PERIOD", "DATE", "TIME", "YEAR", "MONTH", "DAY", "WEEKDAY", "HOUR", "MINUTE", "FROMOPEN"},
         &CIndicator::ReadDATETIME, nullptr, true, false},
        {{"DATETODAY", "DAYTODATE", "TIMETOSEC", "SECTOTIME", "BETA"},
         &CIndicator::ReadDATETODAY, nullptr, true, false},
        {{"HIGH", "H", "OPEN", "O", "LOW", "L", "CLOSE", "C", "VOL", "V", "AMOUNT", "BUYVOL",
          "SELLVOL", "SETCODE", "CAPITAL", "ISINDEX", "INDEXC", "INDEXH", "INDEXL", "INDEXO",
          "INDEXV", "INDEXA", "INDEXADV", "INDEXDEC", "ADVANCE", "DECLINE", "CURRBARSCOUNT",
          "TOTALBARSCOUNT", "INLASTBAR", "ISLASTBAR", "POS", "INFUND", "SUPERFUND", "BIGFUND",
          "MIDFUND", "SMALLFUND", "DDX", "DDX1", "DDX2", "DDX3"},
         &CIndicator::ReadMarketWord, nullptr, true, true},
        {{"MA", "SUM", "HHV", "LLV", "REF", "STD", "STDP", "AVEDEV", "DEVSQ", "FORCAST", "SLOPE",
          "VAR", "VARP", "EMA", "EXPMA", "MEMA", "EXPMEMA", "DMA", "UPNDAY", "DOWNNDAY", "HHVBARS",
          "LLVBARS", "REFDATE", "SUMBARS"},
         &CIndicator::ReadMA, nullptr, true, true},
        {{"BARSCOUNT", "CONST", "TOPRANGE", "LOWRANGE"}, &CIndicator::ReadBARSCOUNT, nullptr, true, false},
        {{"IF", "IFF", "IFN"}, &CIndicator::ReadIf, nullptr, false, false},
        {{"SMA", "RANGE"}, &CIndicator::ReadSMA, nullptr, true, false},
        {{"CROSS"}, &CIndicator::ReadCROSS, nullptr, true, false},
        {{"LONGCROSS", "NDAY", "COVAR", "RELATE", "BETAEX"},
         &CIndicator::ReadLONGCROSS, nullptr, true, false},
        {{"BARSLAST", "BARSSINCE", "BARSLASTCOUNT"},
         &CIndicator::ReadLogicalFun, nullptr, true, false},
        {{"EXIST", "EVERY", "COUNT", "BACKSET", "BARSSINCEN", "FILTER"},
         &CIndicator::ReadCOUNT, nullptr, true, false},
        {{"LAST"}, &CIndicator::ReadLAST, nullptr, true, false},
        {{"FINDHIGH", "FINDLOW"}, &CIndicator::ReadFINDHIGH, nullptr, true, false},
        {{"FORCAL"}, &CIndicator::ReadForCla, nullptr, true, false},
        {{"PLOYLINE", "DRAWLINE", "DRAWKLINE", "STICKLINE", "DRAWICON", "DRAWTEXT", "DRAWBAND",
          "FILLRGN", "DRAWNULL", "DRAWHITTIP", "DRAWBMP", "DRAWGBK", "DRAWTEXT_FIX",
          "DRAWTEXT_OFFSET", "DRAWNUMBER", "DRAWSIGN"},
         nullptr, &CIndicator::ReadDrawFunc, true, false},
        {{"WINNER", "COST"}, &CIndicator::ReadWINNER, nullptr, true, false},
        {{"ZIG"}, &CIndicator::ReadZIG, nullptr, true, false},
        {{"PEAK", "PEAKBARS", "TROUGH", "TROUGHBARS"}, &CIndicator::ReadPEAK, nullptr, true, false},
        {{"SAR", "SARTURN"}, &CIndicator::ReadSAR, nullptr, true, false},
        {{"INMODULE", "MODULESETNUM"}, nullptr, &CIndicator::ReadINModule, false, false},
        {{"MODULESORT"}, nullptr, &CIndicator::ReadModuleSORT, false, false},
        {{"MFLOW"}, &CIndicator::ReadMFlow, nullptr, true, false},
        {{"HYBLOCK", "GNBLOCK", "FGBLOCK", "DYBLOCK"}, nullptr, &CIndicator::ReadINDUSTRY, false, false},
        {{"STRCAT"}, nullptr, &CIndicator::ReadSTRCAT, false, false},
        {{"CON2STR"}, nullptr, &CIndicator::ReadCON2STR, false, false},
        {{"INFOFILE"}, nullptr, &CIndicator::ReadINFOFILE, false, false},
        {{"STRING"}, nullptr, &CIndicator::ReadSTRING, false, false},
    };
    return chain;
}

const std::vector<const char*>& WordsOutsideTheChain() {
    // TFILT filters by trading time, the others are futures figures the bars do not carry.
    static const std::vector<const char*> words = {"TFILT", "VOLINSTK", "ISBUYORDER", "LONGNUM",
                                                   "SHORTNUM", "LONGPROPORTION"};
    return words;
}

const WordGroup* FindBuiltInWord(const char* word) {
    // The chain is searched in order; a map from each word to the first group holding it gives
    // the same answer without a string comparison per built-in word.
    static const std::unordered_map<std::string_view, const WordGroup*> index = [] {
        std::unordered_map<std::string_view, const WordGroup*> map;
        for (const WordGroup& group : BuiltInChain())
            for (const char* w : group.words) map.emplace(w, &group);
        return map;
    }();
    const auto found = index.find(word);
    return found == index.end() ? nullptr : found->second;
}

}  // namespace ny
