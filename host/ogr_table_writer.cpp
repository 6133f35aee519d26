#include "host/ogr_table_writer.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <filesystem>

#include "host/error.h"
#include "host/ogr_open.h"
#include "host/text_number.h"

namespace ktl::host {

namespace {

namespace fs = std::filesystem;

bool Lists(GDALDriver &driver, const char *item, const char *word) {
    const char *list = driver.GetMetadataItem(item);
    return list != nullptr && CPLStringList(CSLTokenizeString(list)).FindString(word) >= 0;
}

// The vector format for a file name.
GDALDriver &DriverFor(const std::string &path) {
    GDALAllRegister();
    std::string ending = LowerAscii(fs::path(path).extension().string());
    if (ending == ".shp")
        throw Error("'" + path + "' would be without shapes: a name that ends in .dbf takes the table");
    ending.erase(0, 1);
    GDALDriverManager &drivers = *GetGDALDriverManager();
    for (int i = 0; i < drivers.GetDriverCount() && !ending.empty(); ++i) {
        GDALDriver &driver = *drivers.GetDriver(i);
        const bool writesTables = driver.GetMetadataItem(GDAL_DCAP_VECTOR) &&
                                  driver.GetMetadataItem(GDAL_DCAP_CREATE) &&
                                  driver.GetMetadataItem(GDAL_DMD_CREATIONFIELDDATATYPES);
        if (writesTables && Lists(driver, GDAL_DMD_EXTENSIONS, ending.c_str())) return driver;
    }
    throw Error("no format that can be written is known for '" + path + "'");
}

CPLStringList FileOptions(const GDALDriver &driver) {
    CPLStringList options;
    // With these tables about shapes, a table without any would not be listed.
    if (EQUAL(driver.GetDescription(), "SQLite")) options.SetNameValue("METADATA", "NO");
    return options;
}

CPLStringList LayerOptions(GDALDriver &driver) {
    CPLStringList options;
    const char *known = driver.GetMetadataItem(GDAL_DS_LAYER_CREATIONOPTIONLIST);
    const std::string list = known == nullptr ? "" : known;
    if (list.find("'ENCODING'") != std::string::npos) options.SetNameValue("ENCODING", "UTF-8");
    // The usual way puts quotes around whole numbers.
    if (EQUAL(driver.GetDescription(), "CSV")) options.SetNameValue("STRING_QUOTING", "IF_NEEDED");
    return options;
}

OGRFieldType OgrType(const TableColumn &column) {
    switch (column.type) {
        case ColumnType::kInteger:
            return column.isLong ? OFTInteger64 : OFTInteger;
        case ColumnType::kYesNo:
            return OFTInteger;
        case ColumnType::kNumber:
            return OFTReal;
        case ColumnType::kDate:
            return OFTDate;
        case ColumnType::kTime:
            return OFTTime;
        case ColumnType::kDateTime:
            return OFTDateTime;
        case ColumnType::kBytes:
            return OFTBinary;
        default:
            return OFTString;
    }
}

// A type that the format has; text where it has not the column's own, or a wider number.
OGRFieldType TypeIn(GDALDriver &driver, const TableColumn &column) {
    const OGRFieldType type = OgrType(column);
    const auto has = [&](OGRFieldType wanted) {
        return Lists(driver, GDAL_DMD_CREATIONFIELDDATATYPES, OGRFieldDefn::GetFieldTypeName(wanted));
    };
    if (has(type)) return type;
    if (type == OFTInteger64 && has(OFTReal)) return OFTReal;
    return OFTString;
}

void Describe(GDALDriver &driver, const TableColumn &column, OGRFieldDefn &field) {
    constexpr int kMostTextBytes = 254;
    if (column.type == ColumnType::kYesNo && Lists(driver, GDAL_DMD_CREATIONFIELDDATASUBTYPES, "Boolean")) {
        field.SetSubType(OFSTBoolean);
    }
    // MapInfo counts bytes of its own encoding, and would cut.
    const bool hasWidth = column.type == ColumnType::kText && column.width > 0 && column.width <= kMostTextBytes;
    if (hasWidth && !EQUAL(driver.GetDescription(), "MapInfo File")) field.SetWidth(column.width);
}

void SetField(OGRFeature &feature, int index, const TableCell &cell) {
    const OGRFieldType type = feature.GetFieldDefnRef(index)->GetType();
    if (cell.kind == CellKind::kNull) {
        feature.SetFieldNull(index);
    } else if (cell.kind == CellKind::kBytes) {
        feature.SetField(index, static_cast<int>(cell.text.size()), cell.text.data());
    } else if (cell.kind == CellKind::kYesNo && type != OFTString) {
        feature.SetField(index, cell.text == "true" ? 1 : 0);
    } else if (type != OFTString && cell.text.empty()) {
        feature.SetFieldNull(index);
    } else {
        feature.SetField(index, cell.text.c_str());
    }
}

}  // namespace

OgrTableWriter::OgrTableWriter(const std::string &target, bool overwrite)
    : m_target(target), m_driver(&DriverFor(target)), m_files(target, overwrite) {
    try {
        MakeLayer();
    } catch (...) {
        Close();
        throw;
    }
}

OgrTableWriter::~OgrTableWriter() {
    const GdalMessages::Listening listening(m_messages);
    Close();
}

void OgrTableWriter::Close() {
    if (m_dataset != nullptr) GDALClose(m_dataset);
    m_dataset = nullptr;
}

void OgrTableWriter::MakeLayer() {
    const GdalMessages::Listening listening(m_messages);
    m_dataset = m_driver->Create(m_files.Path().c_str(), 0, 0, 0, GDT_Unknown, FileOptions(*m_driver).List());
    if (m_dataset == nullptr) Fail("cannot make");
    const std::string name = fs::path(m_target).stem().string();
    m_layer = m_dataset->CreateLayer(name.c_str(), nullptr, wkbNone, LayerOptions(*m_driver).List());
    if (m_layer == nullptr) Fail("cannot make");
    // Some drivers know one transaction a file at best, and one for each row is slow.
    if (m_dataset->TestCapability(ODsCTransactions)) m_dataset->StartTransaction();
    m_messages.Forget();
}

void OgrTableWriter::Fail(const char *what) {
    throw Error(what + (" '" + m_target + "'") + ": " +
                (m_messages.Failed() ? m_messages.Failure() : "the file would not take it"));
}

void OgrTableWriter::MakeColumns(const std::vector<TableColumn> &columns) {
    const GdalMessages::Listening listening(m_messages);
    for (const TableColumn &column : columns) MakeColumn(column);
    if (m_layer->GetLayerDefn()->GetFieldCount() == 0) throw Error("no columns to write to '" + m_target + "'");
}

void OgrTableWriter::MakeColumn(const TableColumn &column) {
    OGRFieldDefn field(column.name.c_str(), TypeIn(*m_driver, column));
    Describe(*m_driver, column, field);
    if (column.type == ColumnType::kBytes && field.GetType() != OFTBinary) {
        m_report.notes.push_back("column '" + column.name + "' holds bytes and is left out");
        m_fields.push_back(-1);
        return;
    }
    const int index = m_layer->GetLayerDefn()->GetFieldCount();
    if (m_layer->CreateField(&field) != OGRERR_NONE || m_messages.Failed()) Fail("cannot make the columns of");
    m_fields.push_back(index);
}

void OgrTableWriter::Write(const TableRow &row) {
    const GdalMessages::Listening listening(m_messages);
    OGRFeature feature(m_layer->GetLayerDefn());
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (m_fields[i] >= 0) SetField(feature, m_fields[i], row[i]);
    }
    if (m_layer->CreateFeature(&feature) != OGRERR_NONE || m_messages.Failed()) Fail("cannot write");
    ++m_report.rows;
}

long long OgrTableWriter::CountMadeRows() {
    try {
        const GDALDatasetUniquePtr made = OpenOgr(m_files.Path(), m_messages);
        return FindLayer(*made, m_target, {}).GetFeatureCount();
    } catch (const Error &) {
        return 0;
    }
}

// Some formats drop rows without a shape, and some drivers don't tell of a full disk.
void OgrTableWriter::RequireAllRows() {
    const long long rows = m_report.rows == 0 ? 0 : CountMadeRows();
    if (rows == m_report.rows) return;
    throw Error("cannot write '" + m_target + "': only " + std::to_string(rows) + " of " +
                std::to_string(m_report.rows) + " rows are in it; " + m_driver->GetDescription() +
                " drops rows without a shape, or the disk is full");
}

// A dataset says only when it closes whether all of it came to the file.
TableReport OgrTableWriter::Finish() {
    const GdalMessages::Listening listening(m_messages);
    if (m_dataset->TestCapability(ODsCTransactions)) m_dataset->CommitTransaction();
    Close();
    if (m_messages.Failed()) Fail("cannot write");
    m_report.notes.insert(m_report.notes.end(), m_messages.Warnings().begin(), m_messages.Warnings().end());
    RequireAllRows();
    m_files.Commit();
    return m_report;
}

}  // namespace ktl::host
