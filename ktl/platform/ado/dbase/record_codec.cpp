#include "ktl/platform/ado/dbase/record_codec.h"

#include <limits>

#include "ktl/platform/ado/dbase/cell.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"

namespace ktl::ado::dbase {

namespace {

bool IsBinaryText(const Field &field) {
    return field.type == 'Q' || (field.type == 'C' && (field.flags & kColumnBinary) != 0);
}

bool IsText(const Field &field) {
    return field.type == 'C' || field.type == 'V' || field.type == 'Q';
}

}  // namespace

void RecordCodec::ReadMemo(const Field &field, const char *record, Value &value) const {
    const std::uint32_t block = MemoPointer(field, record);
    if (block == 0 && field.IsTextMemo()) return value.SetText({});
    MemoFile *memo = block == 0 ? nullptr : m_memos.FindMemo();
    std::string &bytes = value.MutableText();
    if (!memo || !memo->Read(block, bytes)) return value.SetNull();
    if (!field.IsTextMemo()) return value.SetBytes(std::string(bytes));
    if (!m_codePage.IsGbk()) bytes = m_codePage.ToGbk(bytes);
}

void RecordCodec::Read(const Field &field, const char *record, Value &value) const {
    if (IsMarkedNull(m_header, field, record)) return value.SetNull();
    if (field.IsMemo()) return ReadMemo(field, record, value);
    if (!IsText(field)) return DecodeCell(m_header, field, record, value);
    const std::string_view text = FieldText(m_header, field, record);
    if (IsBinaryText(field)) return value.SetBytes(text);
    if (m_codePage.IsGbk()) return value.SetText(text);
    value.SetText(m_codePage.ToGbk(text));
}

void RecordCodec::WriteMemo(const Field &field, const Value &value, char *record) const {
    std::uint32_t block = 0;
    if (!value.Bytes().empty()) {
        MemoFile *memo = m_memos.NeedMemo();
        if (!memo) throw Error("The memo file is missing or cannot be used.", error_number::kMemoFile);
        const bool text = field.IsTextMemo();
        if (text && !m_codePage.IsGbk()) {
            block = memo->Append(m_codePage.FromGbk(value.Text(), std::numeric_limits<std::size_t>::max()), true);
        } else {
            block = memo->Append(value.Bytes(), text);
        }
    }
    SetMemoPointer(field, block, record);
}

void RecordCodec::Write(const Field &field, const Value &value, bool lossy, char *record) const {
    if (value.IsNull()) {
        if (m_header.nullField >= 0 && field.nullBit < 0 && !lossy) {
            throw Error("Column \"" + field.name + "\" does not take a null.", error_number::kNullNotAllowed);
        }
        BlankCell(field, record);
        MarkNull(m_header, field, true, record);
        return;
    }
    if (field.IsMemo()) {
        WriteMemo(field, value, record);
    } else if (!IsText(field)) {
        EncodeCell(field, value, lossy, record);
    } else if (IsBinaryText(field)) {
        EncodeText(m_header, field, value.Bytes(), record);
    } else if (m_codePage.IsGbk()) {
        EncodeText(m_header, field, CutText(value.Text(), field.width), record);
    } else {
        EncodeText(m_header, field, m_codePage.FromGbk(value.Text(), field.width), record);
    }
    MarkNull(m_header, field, false, record);
}

}  // namespace ktl::ado::dbase
