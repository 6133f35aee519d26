#include "ktl/platform/ado/access/table.h"

#include "ktl/platform/ado/access/library.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::access {

namespace {

constexpr int kCharacterBytes = 2;

MdbColumn &ColumnAt(const MdbTableDef *table, std::size_t column) {
    return *static_cast<MdbColumn *>(table->columns->pdata[column]);
}

}  // namespace

Table::Table(std::shared_ptr<Database> database, const CString &name)
    : m_database(std::move(database)), m_name(name), m_table(m_database->ReadTable(name)) {
    if (!m_table) throw Error("Table \"" + name + "\" is not in the database.", error_number::kFileNotFound);
    DescribeColumns();
    Rewind();
}

Table::~Table() {
    ::mdb_free_tabledef(m_table);
}

void Table::Begin() {
    if (!m_quiet) m_quiet.emplace();
}

void Table::DescribeColumns() {
    const int characterBytes = IS_JET3(m_database->GetHandle().mdb) ? 1 : kCharacterBytes;
    for (std::size_t i = 0; i < m_table->num_cols; ++i) {
        const MdbColumn &source = ColumnAt(m_table, i);
        const auto type = static_cast<FieldType>(source.col_type);
        Column column = DescribeField(type, source.col_size, characterBytes, source.col_prec, source.col_scale);
        column.name = FromUtf8(source.name);
        m_columns.push_back(std::move(column));
        m_types.push_back(type);
    }
    m_places.resize(m_columns.size());
}

void Table::Rewind() {
    ::mdb_rewind_table(m_table);
    m_page = 0;
    m_rowCount = 0;
    m_nextRow = 0;
    m_metRows = false;
}

bool Table::Next() {
    if (m_page != 0) RequirePage();
    for (;;) {
        while (m_nextRow < m_rowCount) {
            if (LoadRow(m_nextRow++)) return m_metRows = true;
        }
        if (!NextPage()) return false;
    }
}

bool Table::NextPage() {
    MdbHandle *mdb = m_database->GetHandle().mdb;
    m_nextRow = 0;
    m_rowCount = 0;
    if (::mdb_read_next_dpg(m_table)) {
        m_page = mdb->cur_pg;
        m_rowCount = CountRows();
        return true;
    }
    // The end of the table, unless its map knows of a further page, which then could not be read.
    const auto size = static_cast<unsigned>(m_table->map_sz);
    if (::mdb_map_find_next(mdb, m_table->usage_map, size, m_table->cur_phys_pg) > 0) {
        ThrowDamaged("pages of table \"" + m_name + "\" are missing");
    }
    // A map that got lost names no page at all.
    if (!m_metRows && m_table->num_rows > 0) ThrowDamaged("the rows of table \"" + m_name + "\" are missing");
    return false;
}

std::uint32_t Table::CountRows() const {
    MdbHandle *mdb = m_database->GetHandle().mdb;
    const auto count = static_cast<std::uint32_t>(::mdb_get_int16(mdb->pg_buf, mdb->fmt->row_count_offset));
    if (count > kRowsOfPage) ThrowDamaged("a page of table \"" + m_name + "\" has too many rows");
    return count;
}

/// Another table of the connection may have read a page since; the page that is there already is not read again.
void Table::RequirePage() const {
    if (!::mdb_read_pg(m_database->GetHandle().mdb, m_page)) {
        ThrowDamaged("a page of table \"" + m_name + "\" is missing");
    }
}

bool Table::LoadRow(std::uint32_t row) {
    MdbHandle *mdb = m_database->GetHandle().mdb;
    int start = 0;
    std::size_t size = 0;
    MdbField fields[MDB_MAX_COLS] = {};
    const auto fail = [&] { ThrowDamaged("a row of table \"" + m_name + "\" cannot be read"); };
    if (::mdb_find_row(mdb, static_cast<int>(row), &start, &size) != 0) fail();
    if (size == 0 || (start & kGoneFlag)) return false;
    start &= kOffsetMask;
    if (::mdb_crack_row(m_table, start, size, fields) < 0) fail();
    const std::size_t begin = static_cast<std::size_t>(start);
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const MdbField &field = fields[i];
        m_places[i] = {field.is_null != 0, 0, 0};
        if (field.is_null || m_types[i] == FieldType::Boolean) continue;
        if (field.start < start || field.siz < 0 ||
            static_cast<std::size_t>(field.start) + static_cast<std::size_t>(field.siz) > begin + size) {
            fail();
        }
        m_places[i].start = static_cast<std::uint16_t>(field.start);
        m_places[i].size = static_cast<std::uint16_t>(field.siz);
    }
    m_row = row;
    return true;
}

bool Table::Seek(sql::RowNumber row) {
    m_page = row / kRowsOfPage;
    RequirePage();
    m_rowCount = CountRows();
    m_nextRow = row % kRowsOfPage + 1;
    return m_nextRow <= m_rowCount && LoadRow(m_nextRow - 1);
}

void Table::ReadCell(int column, Value &value) {
    const auto index = static_cast<std::size_t>(column);
    const Place &place = m_places[index];
    const FieldType type = m_types[index];
    // A Boolean's value is its null bit.
    if (type == FieldType::Boolean) return value.SetBool(!place.null);
    if (place.null) return value.SetNull();
    RequirePage();
    const char *page = reinterpret_cast<const char *>(m_database->GetHandle().mdb->pg_buf);
    ReadField(*m_database, type, m_columns[index].scale, {page + place.start, place.size}, value);
}

}  // namespace ktl::ado::access
