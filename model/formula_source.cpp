#include "model/formula_source.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <sstream>
#include <vector>

#include "host/encoding.h"
#include "host/text_fields.h"
#include "model/library.h"

namespace ny {
namespace {

constexpr const char* kDrawPositions[] = {"副图", "主图叠加"};

// The groups a formula of this kind may be in: indicators and conditions have their own, trade
// systems and candle rules none.
const std::vector<FormulaLabel>* GroupsOf(short kind) {
    if (kind == NY_KIND_INDICATOR) return &kIndicatorGroups;
    if (kind == NY_KIND_CONDITION) return &kConditionGroups;
    return nullptr;
}

constexpr int kMaxParams = 8;
constexpr int kMaxParamMarks = 10;
constexpr size_t kTitleBytes = 127, kUsageBytes = 1023, kExtraBytes = 511, kAxesBytes = 127;

bool IsGroupOf(short kind, short group) {
    const std::vector<FormulaLabel>* groups = GroupsOf(kind);
    return groups && std::any_of(groups->begin(), groups->end(),
                                 [group](const FormulaLabel& entry) { return entry.value == group; });
}

bool ParseShort(const std::string& text, short* value) {
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(text.data(), end, number);
    if (ec != std::errc() || ptr != end || number < SHRT_MIN || number > SHRT_MAX) return false;
    *value = static_cast<short>(number);
    return true;
}

std::vector<std::string> SplitWords(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

// Reads the lines of a file: header fields, then blocks.
class SourceReader {
public:
    SourceReader(CIndicator* formula, FormulaSourceError* error) : m_f(*formula), m_error(*error) {}

    bool Read(const std::string& utf8) {
        std::string text = utf8;
        if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
        std::istringstream in(text);
        std::string line;
        int number = 0;
        while (std::getline(in, line)) {
            ++number;
            if (!line.empty() && line.back() == '\r') line.pop_back();
            if (!ReadLine(line, number)) return false;
        }
        return FinishBlock() && Validate();
    }

private:
    bool Fail(int line, const std::string& message) {
        m_error.line = line;
        m_error.message = message;
        return false;
    }

    bool ToGbk(const std::string& utf8, int line, CString* gbk) {
        if (TryUtf8ToGbk(utf8, gbk)) return true;
        return Fail(line, "text that is not valid UTF-8 or has no GBK form");
    }

    bool ReadLine(const std::string& line, int number) {
        const std::string trimmed = Trim(line);
        if (trimmed.size() > 2 && trimmed.front() == '[' && trimmed.back() == ']') {
            if (!FinishBlock()) return false;
            m_block = trimmed.substr(1, trimmed.size() - 2);
            if (m_block != "template" && m_block != "usage" && m_block != "source" && m_block != "sentences")
                return Fail(number, "unknown section [" + Utf8ToGbk(m_block) + "]");
            if (m_seenBlocks.find("[" + m_block + "]") != std::string::npos)
                return Fail(number, "section [" + Utf8ToGbk(m_block) + "] given twice");
            m_seenBlocks += "[" + m_block + "]";
            m_blockLine = number;
            m_blockLines.clear();
            return true;
        }
        if (!m_block.empty()) {
            m_blockLines.push_back(line.substr(0, line.find_last_not_of(" \t") + 1));
            return true;
        }
        if (trimmed.empty() || trimmed.front() == '#') return true;
        const size_t colon = trimmed.find(':');
        if (colon == std::string::npos) return Fail(number, "expected \"field: value\"");
        return ReadField(Trim(trimmed.substr(0, colon)), Trim(trimmed.substr(colon + 1)), number);
    }

    bool ReadField(const std::string& key, const std::string& value, int line) {
        if (key == "param") return ReadParam(value, line);
        if (m_seenFields.find("[" + key + "]") != std::string::npos)
            return Fail(line, "field \"" + Utf8ToGbk(key) + "\" given twice");
        m_seenFields += "[" + key + "]";
        CString gbk;
        if (!ToGbk(value, line, &gbk)) return false;
        if (key == "name") return ReadName(gbk, line);
        if (key == "kind") return ReadKind(gbk, line);
        if (key == "group") {
            m_group = gbk;
            m_groupLine = line;
            return true;
        }
        if (key == "title") return SetText(&m_f.m_strTitle, gbk, kTitleBytes, line, "title");
        if (key == "draw") return ReadDraw(gbk, line);
        if (key == "axes") return ReadAxes(gbk, line);
        return Fail(line, "unknown field \"" + Utf8ToGbk(key) + "\"");
    }

    bool SetText(CString* field, const CString& gbk, size_t limit, int line, const char* what) {
        if (gbk.size() > limit)
            return Fail(line, std::string(what) + " longer than " + std::to_string(limit) + " bytes");
        *field = gbk;
        return true;
    }

    bool ReadName(const CString& gbk, int line) {
        if (gbk.empty()) return Fail(line, "empty name");
        if (gbk.find_first_of(" \t.;:,()") != CString::npos)
            return Fail(line, "a name may not hold blanks or the characters . ; : , ( )");
        return SetText(&m_f.m_strName, gbk, NY_NAME_BYTES, line, "name");
    }

    bool ReadKind(const CString& gbk, int line) {
        for (const FormulaLabel& kind : kKindLabels) {
            if (gbk == kind.label) {
                m_f.m_MainType = kind.value;
                m_hasKind = true;
                return true;
            }
        }
        return Fail(line, "unknown kind (技术指标, 条件选股, 交易系统 or 五彩K线)");
    }

    bool ReadDraw(const CString& gbk, int line) {
        for (char pos = 0; pos < 2; ++pos) {
            if (gbk == kDrawPositions[static_cast<int>(pos)]) {
                m_f.m_cDrawPos = pos;
                m_drawLine = line;
                return true;
            }
        }
        return Fail(line, "unknown draw place (副图 or 主图叠加)");
    }

    bool ReadAxes(const CString& gbk, int line) {
        if (!SetText(&m_f.m_strAxes, gbk, kAxesBytes, line, "axes")) return false;
        m_axesLine = line;
        size_t start = 0;
        while (start <= gbk.size()) {
            size_t end = gbk.find(';', start);
            if (end == CString::npos) end = gbk.size();
            const std::string piece = Trim(gbk.substr(start, end - start));
            short value = 0;
            if (!ParseShort(piece, &value)) return Fail(line, "axis \"" + piece + "\" is not a whole number");
            auto* axe = new CAxeValue;
            axe->m_nValue = value;
            m_f.m_arAxes.push_back(axe);
            start = end + 1;
        }
        return true;
    }

    bool ReadParam(const std::string& value, int line) {
        const std::vector<std::string> words = SplitWords(value);
        if (words.size() != 4) return Fail(line, "a parameter is \"NAME SMALLEST LARGEST DEFAULT\"");
        if (m_f.m_arParams.size() >= kMaxParams)
            return Fail(line, "more than " + std::to_string(kMaxParams) + " parameters");
        CString name;
        if (!ToGbk(words[0], line, &name)) return false;
        if (name.size() > NY_NAME_BYTES) return Fail(line, "parameter name too long");
        short numbers[3];
        for (int i = 0; i < 3; ++i)
            if (!ParseShort(words[i + 1], &numbers[i]))
                return Fail(line, "\"" + Utf8ToGbk(words[i + 1]) + "\" is not a whole number of 16 bits");
        auto* param = new CParam;
        param->m_strName = UpperAscii(name);
        param->m_nMin = numbers[0];
        param->m_nMax = numbers[1];
        param->m_nDefault = numbers[2];
        m_f.m_arParams.push_back(param);
        return true;
    }

    bool FinishBlock() {
        if (m_block.empty()) return true;
        while (!m_blockLines.empty() && Trim(m_blockLines.back()).empty()) m_blockLines.pop_back();
        size_t first = 0;
        while (first < m_blockLines.size() && Trim(m_blockLines[first]).empty()) ++first;
        std::string joined;
        for (size_t i = first; i < m_blockLines.size(); ++i) {
            if (i > first) joined += "\r\n";
            joined += m_blockLines[i];
        }
        CString gbk;
        if (!ToGbk(joined, m_blockLine, &gbk)) return false;
        const std::string block = m_block;
        m_block.clear();
        if (block == "sentences") return true;  // derived from the source, written for people only
        if (block == "template") return SetText(&m_f.m_strExtra, gbk, kExtraBytes, m_blockLine, "template");
        if (block == "usage") return SetText(&m_f.m_strUsage, gbk, kUsageBytes, m_blockLine, "usage");
        return SetText(&m_f.m_strSource, gbk, NY_SOURCE_FILE_BYTES, m_blockLine, "source");
    }

    bool Validate() {
        if (m_f.m_strName.empty()) return Fail(0, "no name");
        if (!m_hasKind) return Fail(0, "no kind");
        if (m_f.m_strSource.empty()) return Fail(0, "no [source]");
        if (!ValidateGroup()) return false;
        if (m_f.m_MainType != NY_KIND_INDICATOR && m_drawLine != 0)
            return Fail(m_drawLine, "only technical indicators have a draw place");
        if (m_f.m_MainType != NY_KIND_INDICATOR && m_axesLine != 0)
            return Fail(m_axesLine, "only technical indicators have axis lines");
        const int marks = CountParamMarks(m_f.m_strExtra);
        if (marks > kMaxParamMarks) return Fail(0, "the template has more than 10 Param marks");
        if (!m_f.m_strExtra.empty() && marks != static_cast<int>(m_f.m_arParams.size()))
            return Fail(0, "the template has " + std::to_string(marks) + " Param marks for " +
                               std::to_string(m_f.m_arParams.size()) + " parameters");
        return true;
    }

    bool ValidateGroup() {
        const short kind = m_f.m_MainType;
        if (kind == NY_KIND_TRADE || kind == NY_KIND_CANDLE) {
            if (m_groupLine != 0) return Fail(m_groupLine, "trade systems and candle rules have no group");
            m_f.m_SubType = 0;
            return true;
        }
        if (m_groupLine == 0) {
            // Without a group a formula goes to the user's own group of its kind.
            // The last group of each kind is the user's own (自定指标, 自定选股).
            m_f.m_SubType = GroupsOf(kind)->back().value;
            return true;
        }
        const short group = g_MyGetIndicatorType(m_group);
        if (!IsGroupOf(kind, group) || GroupLabel(group) != m_group) return Fail(m_groupLine, "not a group of this kind");
        m_f.m_SubType = group;
        return true;
    }

    CIndicator& m_f;
    FormulaSourceError& m_error;
    std::string m_block;  // the section being read, empty in the header
    int m_blockLine = 0;
    std::vector<std::string> m_blockLines;
    std::string m_seenBlocks, m_seenFields;
    CString m_group;
    int m_groupLine = 0, m_drawLine = 0, m_axesLine = 0;
    bool m_hasKind = false;
};

std::string Block(const CString& gbk) {
    std::string text = GbkToUtf8(gbk);
    std::string out;
    for (char c : text)
        if (c != '\r') out += c;
    return out + "\n";
}

}  // namespace

bool ParseFormulaSource(const std::string& utf8, CIndicator* formula, FormulaSourceError* error) {
    return SourceReader(formula, error).Read(utf8);
}

CString KindLabel(short mainType) {
    for (const FormulaLabel& kind : kKindLabels)
        if (kind.value == mainType) return kind.label;
    return CString();
}

CString GroupLabel(short subType) {
    for (const auto* groups : {&kIndicatorGroups, &kConditionGroups})
        for (const FormulaLabel& group : *groups)
            if (group.value == subType) return group.label;
    return CString();
}

CString GroupLabelOf(const CIndicator& formula) {
    return IsGroupOf(formula.m_MainType, formula.m_SubType) ? GroupLabel(formula.m_SubType) : CString();
}

int CountParamMarks(const CString& tmpl) {
    int count = 0;
    for (size_t at = tmpl.find("Param"); at != CString::npos; at = tmpl.find("Param", at + 7)) ++count;
    return count;
}

std::string FormatFormulaSource(const CIndicator& f) {
    std::string out;
    out += "name:  " + GbkToUtf8(f.m_strName) + "\n";
    out += "kind:  " + GbkToUtf8(KindLabel(f.m_MainType)) + "\n";
    if (const CString group = GroupLabelOf(f); !group.empty()) out += "group: " + GbkToUtf8(group) + "\n";
    if (!f.m_strTitle.empty()) out += "title: " + GbkToUtf8(f.m_strTitle) + "\n";
    if (f.m_MainType == NY_KIND_INDICATOR && (f.m_cDrawPos == 0 || f.m_cDrawPos == 1))
        out += "draw:  " + GbkToUtf8(kDrawPositions[static_cast<int>(f.m_cDrawPos)]) + "\n";
    for (const CParam* p : f.m_arParams)
        out += "param: " + GbkToUtf8(p->m_strName) + " " + std::to_string(p->m_nMin) + " " +
               std::to_string(p->m_nMax) + " " + std::to_string(p->m_nDefault) + "\n";
    if (f.m_MainType == NY_KIND_INDICATOR && !f.m_strAxes.empty())
        out += "axes:  " + GbkToUtf8(f.m_strAxes) + "\n";
    if (!f.m_strExtra.empty()) out += "\n[template]\n" + Block(f.m_strExtra);
    if (!f.m_strUsage.empty()) out += "\n[usage]\n" + Block(f.m_strUsage);
    out += "\n[source]\n" + Block(f.m_strSource);
    return out;
}

}  // namespace ny
