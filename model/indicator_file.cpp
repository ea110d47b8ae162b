// Save and Load of the formula objects: fixed-width little-endian records, text fields in GBK
// terminated by a zero inside the field.
#include <cstring>
#include <vector>

#include "model/formula_file.h"
#include "model/indicator.h"

namespace {

constexpr int NAME_FIELD = 32;
constexpr int TITLE_FIELD = 128;
constexpr int USAGE_FIELD = 1024;
constexpr int EXTRA_FIELD = 512;
constexpr int PASSWORD_FIELD = 128;
constexpr int AXES_FIELD = 128;
constexpr int STATEMENT_TEXT_FIELD = 512;
constexpr int PERIOD_VALUES = 10;
constexpr char MAGIC[8] = {'m', 'y', 'o', 'k', 0, 0, 0, 0};

int SourceField(BOOL bLong) { return bLong ? ny::LONG_SOURCE_BYTES : ny::SHORT_SOURCE_BYTES; }

// Lays out one record field after field.
class RecordWriter {
public:
    void Text(const CString& text, size_t width) {
        const size_t start = m_bytes.size();
        m_bytes.resize(start + width, 0);
        std::memcpy(m_bytes.data() + start, text.data(), ny::FieldTextLength(text, width));
    }
    void Byte(char value) { m_bytes.push_back(static_cast<unsigned char>(value)); }
    void Short(short value) { Little(static_cast<unsigned short>(value), 2); }
    void Int(int value) { Little(static_cast<unsigned int>(value), 4); }
    void WriteTo(CBinStream& stream) const { stream.Write(m_bytes.data(), m_bytes.size()); }

private:
    void Little(unsigned int value, int bytes) {
        for (int i = 0; i < bytes; ++i) m_bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
    std::vector<unsigned char> m_bytes;
};

// Reads one record whole, then takes it apart field after field. Bytes that a short read did not
// deliver stay zero.
class RecordReader {
public:
    explicit RecordReader(size_t bytes) : m_bytes(bytes, 0) {}

    // The number of bytes the stream delivered.
    size_t ReadFrom(CBinStream& stream) { return stream.Read(m_bytes.data(), m_bytes.size()); }

    // The text up to the first zero; the last byte of the field counts as a zero.
    CString Text(size_t width) {
        const char* field = reinterpret_cast<const char*>(m_bytes.data() + Advance(width));
        return CString(field, strnlen(field, width - 1));
    }
    char Byte() { return static_cast<char>(m_bytes[Advance(1)]); }
    short Short() { return static_cast<short>(Little(2)); }
    int Int() { return static_cast<int>(Little(4)); }

private:
    size_t Advance(size_t width) {
        const size_t at = m_offset;
        m_offset += width;
        return at;
    }
    unsigned int Little(int bytes) {
        const size_t at = Advance(bytes);
        unsigned int value = 0;
        for (int i = 0; i < bytes; ++i) value |= static_cast<unsigned int>(m_bytes[at + i]) << (8 * i);
        return value;
    }
    std::vector<unsigned char> m_bytes;
    size_t m_offset = 0;
};

void WriteParam(RecordWriter& out, const CParam& param) {
    out.Text(param.m_strName, NAME_FIELD);
    out.Short(param.m_nMax);
    out.Short(param.m_nMin);
    out.Short(param.m_nDefault);
    for (int period = 1; period <= PERIOD_VALUES; ++period) out.Short(param.m_nPeriodValue[period]);
}

void ReadParam(RecordReader& in, CParam& param) {
    param.m_strName = in.Text(NAME_FIELD);
    param.m_nMax = in.Short();
    param.m_nMin = in.Short();
    param.m_nDefault = in.Short();
    for (int period = 1; period <= PERIOD_VALUES; ++period) param.m_nPeriodValue[period] = in.Short();
}

void WriteAxe(RecordWriter& out, const CAxeValue& axe) { out.Short(axe.m_nValue); }
void ReadAxe(RecordReader& in, CAxeValue& axe) { axe.m_nValue = in.Short(); }

void WriteExpression(RecordWriter& out, const CExpression& expr) {
    out.Text(expr.m_strName, NAME_FIELD);
    out.Text(expr.m_strText, STATEMENT_TEXT_FIELD);
    out.Short(expr.m_nType);
    out.Int(expr.m_lColor);
    out.Short(expr.m_nWidth);
}

void ReadExpression(RecordReader& in, CExpression& expr) {
    expr.m_strName = in.Text(NAME_FIELD);
    expr.m_strText = in.Text(STATEMENT_TEXT_FIELD);
    expr.m_nType = in.Short();
    expr.m_lColor = in.Int();
    expr.m_nWidth = in.Short();
    expr.m_pPoints = nullptr;
}

template <typename T>
void SaveRecord(CBinStream& stream, const T& item, void (*write)(RecordWriter&, const T&)) {
    RecordWriter out;
    write(out, item);
    out.WriteTo(stream);
}

template <typename T>
void LoadRecord(CBinStream& stream, size_t bytes, T& item, void (*read)(RecordReader&, T&)) {
    RecordReader in(bytes);
    in.ReadFrom(stream);
    read(in, item);
}

template <typename T>
void SaveList(CBinStream& stream, const std::vector<T*>& items,
              void (*write)(RecordWriter&, const T&)) {
    RecordWriter count;
    count.Short(static_cast<short>(items.size()));
    count.WriteTo(stream);
    for (const T* item : items) SaveRecord(stream, *item, write);
}

// Appends `count` records to `items`. A record cut short by the end of the stream keeps the
// bytes it has; once the stream delivers nothing more, no further objects are made, so a count
// that runs past the end of the file costs nothing.
template <typename T>
void LoadList(CBinStream& stream, short count, size_t bytes, std::vector<T*>& items,
              void (*read)(RecordReader&, T&)) {
    for (short i = 0; i < count; ++i) {
        RecordReader in(bytes);
        if (in.ReadFrom(stream) == 0) return;
        T* item = new T;
        read(in, *item);
        items.push_back(item);
    }
}

short LoadCount(CBinStream& stream) {
    RecordReader in(2);
    in.ReadFrom(stream);
    return in.Short();
}

}  // namespace

namespace ny {

size_t FieldTextLength(const CString& text, size_t width) {
    size_t length = 0;
    while (length < text.size() && text[length] != 0) {
        const bool lead = static_cast<unsigned char>(text[length]) >= 0x81 && length + 1 < text.size();
        const size_t step = lead ? 2 : 1;
        if (length + step > width - 1) break;
        length += step;
    }
    return length;
}

void WriteFormulaHeader(CBinStream& stream, short reserved, short count) {
    RecordWriter out;
    out.Short(reserved);
    out.Short(count);
    for (char byte : MAGIC) out.Byte(byte);
    out.WriteTo(stream);
}

FormulaFileHeader ReadFormulaHeader(CBinStream& stream) {
    RecordReader in(FORMULA_HEADER_BYTES);
    in.ReadFrom(stream);
    FormulaFileHeader header;
    header.reserved = in.Short();
    header.count = in.Short();
    header.magicOk = true;
    for (int i = 0; i < 4; ++i) header.magicOk = header.magicOk && in.Byte() == MAGIC[i];
    return header;
}

}  // namespace ny

void CParam::Save(CBinStream& stream) const { SaveRecord(stream, *this, &WriteParam); }
void CParam::Load(CBinStream& stream) { LoadRecord(stream, ny::PARAM_RECORD_BYTES, *this, &ReadParam); }

void CAxeValue::Save(CBinStream& stream) const { SaveRecord(stream, *this, &WriteAxe); }
void CAxeValue::Load(CBinStream& stream) { LoadRecord(stream, ny::AXE_RECORD_BYTES, *this, &ReadAxe); }

void CExpression::Save(CBinStream& stream) const { SaveRecord(stream, *this, &WriteExpression); }
void CExpression::Load(CBinStream& stream) {
    LoadRecord(stream, ny::STATEMENT_RECORD_BYTES, *this, &ReadExpression);
}

void CIndicator::Save(CBinStream& stream, BOOL bLong) const {
    RecordWriter head;
    head.Text(m_strName, NAME_FIELD);
    head.Text(m_strTitle, TITLE_FIELD);
    head.Text(m_strSource, SourceField(bLong));
    head.Byte(m_cDrawPos);
    head.Byte(m_cHasPassword);
    head.Text(m_strUsage, USAGE_FIELD);
    head.Text(m_strExtra, EXTRA_FIELD);
    head.Text(m_strPassword, PASSWORD_FIELD);
    head.Text(m_strAxes, AXES_FIELD);
    head.Byte(m_SysIndex);
    head.Short(m_MainType);
    head.Short(m_SubType);
    head.WriteTo(stream);
    SaveList(stream, m_arExpressions, &WriteExpression);
    SaveList(stream, m_arParams, &WriteParam);
    SaveList(stream, m_arAxes, &WriteAxe);
}

void CIndicator::Load(CBinStream& stream, BOOL bLong) {
    const int sourceField = SourceField(bLong);
    RecordReader head(ny::FormulaHeadBytes(sourceField));
    head.ReadFrom(stream);
    m_strName = head.Text(NAME_FIELD);
    m_strTitle = head.Text(TITLE_FIELD);
    m_strSource = head.Text(sourceField);
    m_cDrawPos = head.Byte();
    m_cHasPassword = head.Byte();
    m_strUsage = head.Text(USAGE_FIELD);
    m_strExtra = head.Text(EXTRA_FIELD);
    m_strPassword = head.Text(PASSWORD_FIELD);
    m_strAxes = head.Text(AXES_FIELD);
    m_SysIndex = head.Byte();
    m_MainType = head.Short();
    m_SubType = head.Short();
    LoadList(stream, head.Short(), ny::STATEMENT_RECORD_BYTES, m_arExpressions, &ReadExpression);
    LoadList(stream, LoadCount(stream), ny::PARAM_RECORD_BYTES, m_arParams, &ReadParam);
    LoadList(stream, LoadCount(stream), ny::AXE_RECORD_BYTES, m_arAxes, &ReadAxe);
}
