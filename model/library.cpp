#include "model/library.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "host/files.h"
#include "host/global.h"
#include "model/file_stream.h"
#include "model/formula_file.h"

std::vector<CIndicator*> g_MyIndicatorArray;

namespace ny {
const char* const MSG_INIT_BAD_FILE = "非法指标文件，请更新最新版本!";
const char* const MSG_IMPORT_BAD_FILE = "非法指标文件,请检查指标文件!";
const char* const MSG_IMPORT_EXISTS = "%s 在同类型指标中已存在!";
}  // namespace ny

namespace {

CString KeyOf(const CString& name, short mainType) { return name + std::to_string(mainType); }

// Binary search on the key. True if found; `pos` is then the entry, else the insertion place.
bool FindKey(const CString& key, int* pos) {
    int low = 0;
    int high = static_cast<int>(g_MyIndicatorArray.size()) - 1;
    while (low <= high) {
        const int mid = (low + high) / 2;
        const CIndicator* entry = g_MyIndicatorArray[mid];
        const int order = key.compare(KeyOf(entry->m_strName, entry->m_MainType));
        if (order == 0) {
            *pos = mid;
            return true;
        }
        if (order > 0) low = mid + 1;
        else high = mid - 1;
    }
    *pos = low;
    return false;
}

// Adds a formula read from a file; one whose key the library holds already is dropped.
void AdoptOrDrop(CIndicator* formula) {
    const int pos = g_MyAddIndicator(formula);
    if (g_MyIndicatorArray[pos] != formula) delete formula;
}

// A formula set of the installation: every formula is marked as a base-set formula and put in
// the group of special indicators.
void ApplyBaseSet(CIndicator& formula) {
    formula.m_SubType = 6;
    formula.m_nBaseSet = 1;
}

// A customer's set: the same, but only technical indicators change their group.
void ApplyCustomerSet(CIndicator& formula) {
    if (formula.m_MainType == NY_KIND_INDICATOR) formula.m_SubType = 6;
    formula.m_nBaseSet = 1;
}

struct SetFile {
    CString path;
    BOOL bLong = FALSE;
    void (*apply)(CIndicator&) = nullptr;
    long long minimumLength = -1;  // a file of at most this many bytes is not read
};

// The base set of the edition.
SetFile BaseSetFile() {
    const char* name = "nybase.dat";
    switch (g_MySysVerType) {
        case 301: name = "ny2277.dat"; break;
        case 73: name = "nybbeib.dat"; break;
        case 15: case 701: case 702: case 703: case 72: name = "nyqlbase.dat"; break;
        default: break;
    }
    return {g_MyExePath + "defineuser/indi/" + name, TRUE, &ApplyBaseSet};
}

// The sequence of files that builds the library; the file read first wins a shared key.
std::vector<SetFile> StartFiles() {
    std::vector<SetFile> files;
    files.push_back({g_MyGetFilePath(NY_FILE_SYSTEM_SET), FALSE});
    files.push_back(BaseSetFile());
    const CString folder = g_MyExePath + "defineuser/indi/";
    if (g_UseGJSHQ != 0 || g_MySysVerType == 701)
        files.push_back({folder + "lpgjs.dat", TRUE, &ApplyBaseSet});
    else if (g_MySysVerType == 30)
        files.push_back({folder + "rmcustomindi.dat", TRUE, &ApplyCustomerSet});
    else if (g_MySysVerType == 31)
        files.push_back({folder + "wqcustomindi.dat", TRUE, &ApplyCustomerSet});
    // The user's file holds at least one long record when it holds anything at all.
    files.push_back({g_MyGetFilePath(NY_FILE_USER_SET), TRUE, nullptr, ny::LONG_SOURCE_BYTES});
    return files;
}

// What became of the user's file at the last start of the library.
ny::UserFileStatus& UserStatus() {
    static ny::UserFileStatus status;
    return status;
}

// Notes that the user's file could not be read completely, and why.
void MarkUserFileIncomplete(const CString& problem) {
    UserStatus().complete = false;
    UserStatus().problem = problem;
}

// Reads the records a header counts. Returns how many were read whole.
int LoadRecords(ny::MemoryStream& stream, short count, const SetFile& file) {
    int loaded = 0;
    // A count that runs past the end of the file stops at the end of the file.
    for (short i = 0; i < count && stream.Remaining() > 0; ++i) {
        CIndicator* formula = new CIndicator;
        formula->Load(stream, file.bLong);
        if (file.apply != nullptr) file.apply(*formula);
        AdoptOrDrop(formula);
        if (!stream.ShortRead()) ++loaded;
    }
    return loaded;
}

// Checks that the user's file was read to its end and holds what its header counts.
void CheckUserFileRead(const ny::MemoryStream& stream, short count, int loaded) {
    if (count < 0)
        MarkUserFileIncomplete("its header counts " + std::to_string(count) + " formulas");
    else if (loaded < count)
        MarkUserFileIncomplete("it holds " + std::to_string(loaded) + " whole formulas of the " +
                               std::to_string(count) + " its header counts");
    else if (stream.Remaining() > 0)
        MarkUserFileIncomplete("it has " + std::to_string(stream.Remaining()) + " bytes behind the " +
                               std::to_string(count) + " formulas its header counts");
}

bool IsUserFile(const SetFile& file) { return file.minimumLength >= 0; }

// A user's file too short to be read at all is whole only when it is empty or an empty set.
void CheckShortUserFile(ny::MemoryStream& stream) {
    if (stream.GetLength() == 0) return;
    const ny::FormulaFileHeader header = ny::ReadFormulaHeader(stream);
    if (!header.magicOk || header.count != 0 || stream.Remaining() != 0)
        MarkUserFileIncomplete("it holds " + std::to_string(stream.GetLength()) +
                               " bytes, too few for the formulas of its header");
}

// Reads one file of the start sequence. False if its magic is wrong: the sequence stops there.
bool LoadSetFile(const SetFile& file) {
    std::string bytes, error;
    if (!ny::ReadWholeFile(file.path, &bytes, &error)) {
        if (IsUserFile(file) && ::access(file.path.c_str(), F_OK) == 0) MarkUserFileIncomplete(error);
        return true;
    }
    ny::MemoryStream stream(std::vector<unsigned char>(bytes.begin(), bytes.end()));
    if (stream.GetLength() <= file.minimumLength) {
        CheckShortUserFile(stream);
        return true;
    }
    const ny::FormulaFileHeader header = ny::ReadFormulaHeader(stream);
    if (!header.magicOk) {
        if (IsUserFile(file)) MarkUserFileIncomplete("its header is not that of a formula file");
        g_MyMessageBox(ny::MSG_INIT_BAD_FILE);
        return false;
    }
    const int loaded = LoadRecords(stream, header.count, file);
    if (IsUserFile(file)) CheckUserFileRead(stream, header.count, loaded);
    return true;
}

bool IsUserFormula(const CIndicator& formula) {
    return formula.m_IsEditable != 0 && formula.m_SysIndex == 0 && formula.m_nBaseSet == 0;
}

CString FormatWithName(const char* format, const CString& name) {
    std::vector<char> text(std::snprintf(nullptr, 0, format, name.c_str()) + 1);
    std::snprintf(text.data(), text.size(), format, name.c_str());
    return CString(text.data());
}

}  // namespace

int g_MyAddIndicator(CIndicator* p) {
    int pos = 0;
    if (!FindKey(KeyOf(p->m_strName, p->m_MainType), &pos))
        g_MyIndicatorArray.insert(g_MyIndicatorArray.begin() + pos, p);
    return pos;
}

int g_MyGetIndicatorPos(const CString& name, short mainType) {
    int pos = 0;
    return FindKey(KeyOf(name, mainType), &pos) ? pos : -1;
}

CIndicator* g_MyGetIndicator(const CString& name, short mainType) {
    const int pos = g_MyGetIndicatorPos(name, mainType);
    return pos < 0 ? nullptr : g_MyIndicatorArray[pos];
}

void g_MyRemoveIndicatorByPos(const CString& name, short mainType) {
    const int pos = g_MyGetIndicatorPos(name, mainType);
    if (pos < 0) return;
    delete g_MyIndicatorArray[pos];
    g_MyIndicatorArray.erase(g_MyIndicatorArray.begin() + pos);
}

void g_MyRemoveIndicators() {
    for (CIndicator* formula : g_MyIndicatorArray) delete formula;
    g_MyIndicatorArray.clear();
}

void g_MyInitIndicator() {
    // A second start replaces the library rather than leaking it.
    g_MyRemoveIndicators();
    UserStatus() = {};
    for (const SetFile& file : StartFiles()) {
        if (LoadSetFile(file)) continue;
        // The sequence stopped before the user's file: whatever it holds was not read.
        const CString user = g_MyGetFilePath(NY_FILE_USER_SET);
        if (file.path != user && ::access(user.c_str(), F_OK) == 0)
            MarkUserFileIncomplete("it was not read, because " + file.path + " is not a formula file");
        return;
    }
}

void g_MySaveIndicator() { ny::SaveUserFormulas(nullptr); }

namespace ny {

const std::vector<FormulaLabel> kKindLabels = {{"技术指标", 0}, {"条件选股", 1}, {"交易系统", 2}, {"五彩K线", 3}};
const std::vector<FormulaLabel> kIndicatorGroups = {
    {"大盘指标", 0}, {"趋向指标", 1}, {"反趋向指标", 2}, {"能量指标", 3},
    {"量价指标", 4}, {"压力支撑", 5}, {"特色指标", 6}, {"自定指标", 7},
};
const std::vector<FormulaLabel> kConditionGroups = {
    {"指标选股", 20}, {"财务选股", 21}, {"行情选股", 22}, {"K 线选股", 23}, {"综合选股", 24}, {"自定选股", 25},
};

}  // namespace ny

short g_MyGetIndicatorType(const CString& label) {
    for (const auto* table : {&ny::kKindLabels, &ny::kIndicatorGroups, &ny::kConditionGroups})
        for (const ny::FormulaLabel& entry : *table)
            if (label == entry.label) return entry.value;
    return -1;
}

namespace ny {

const UserFileStatus& UserFileLoadStatus() { return UserStatus(); }

bool SaveUserFormulas(std::string* error) {
    const CString path = g_MyGetFilePath(NY_FILE_USER_SET);
    if (!UserStatus().complete) {
        if (error != nullptr)
            *error = path + " was not read completely (" + UserStatus().problem +
                     "); it is left as it is and nothing was saved: repair it or move it away, then try again";
        return false;
    }
    std::vector<const CIndicator*> formulas;
    for (const CIndicator* formula : g_MyIndicatorArray)
        if (IsUserFormula(*formula)) formulas.push_back(formula);
    // The header counts in 16 bits; the file holds exactly the records it counts.
    if (formulas.size() > 32767) formulas.resize(32767);
    return WriteFileAtomically(path, [&](CBinStream& stream) {
        WriteFormulaHeader(stream, 0, static_cast<short>(formulas.size()));
        for (const CIndicator* formula : formulas) formula->Save(stream, TRUE);
    }, error);
}

bool IsLibraryFile(const CString& path) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path folder = fs::path(path).parent_path().empty() ? fs::path(".") : fs::path(path).parent_path();
    if (fs::equivalent(folder, g_MyExePath + "defineuser/indi", ec)) return true;
    for (const SetFile& file : StartFiles())
        if (fs::equivalent(path, file.path, ec)) return true;
    return false;
}

bool ExportFormula(const CIndicator& formula, const CString& path, std::string* error) {
    return WriteFileAtomically(path, [&](CBinStream& stream) {
        WriteFormulaHeader(stream, 1, 1);
        formula.Save(stream, FALSE);
    }, error);
}

ImportStatus ImportFormula(const CString& path, int* added) {
    if (added != nullptr) *added = 0;
    std::string bytes;
    // An exported file holds one short record: anything much longer is not one.
    if (!ReadWholeFile(path, &bytes, nullptr, 1 << 20)) return ImportStatus::CannotOpen;
    MemoryStream stream(std::vector<unsigned char>(bytes.begin(), bytes.end()));
    const FormulaFileHeader header = ReadFormulaHeader(stream);
    if (!header.magicOk || header.count > 1) {
        g_MyMessageBox(MSG_IMPORT_BAD_FILE);
        return ImportStatus::Invalid;
    }
    for (short i = 0; i < header.count && stream.Remaining() > 0; ++i) {
        auto formula = std::make_unique<CIndicator>();
        formula->Load(stream, FALSE);
        if (g_MyGetIndicatorPos(formula->m_strName, formula->m_MainType) >= 0) {
            g_MyMessageBox(FormatWithName(MSG_IMPORT_EXISTS, formula->m_strName));
            continue;
        }
        g_MyAddIndicator(formula.release());
        if (added != nullptr) ++*added;
    }
    return ImportStatus::Ok;
}

}  // namespace ny
