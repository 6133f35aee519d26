#include "host/table_transfer.h"

#include <cpl_error.h>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "host/error.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/attributes/table_local_dbf.h"
#include "ktl/platform/encoding.h"

namespace ktl::host {

namespace {

constexpr int kNameBytes = 10;
constexpr int kCharBytes = 254;
/// A number column has 20 characters, 10 of them behind the point: with a sign, 8 digits in front of it.
constexpr double kLargestNumber = 99999999.0;
constexpr int kDecimals = 10;

// Keeps GDAL from the terminal, and the first failure for the message.
class QuietGdal {
  public:
    QuietGdal() { CPLPushErrorHandlerEx(OnMessage, this); }
    QuietGdal(const QuietGdal &) = delete;
    QuietGdal &operator=(const QuietGdal &) = delete;
    ~QuietGdal() { CPLPopErrorHandler(); }

    [[noreturn]] void Throw(const std::string &what, const std::string &path) const {
        throw Error(what + " '" + path + "'" + (m_failure.empty() ? "" : ": " + m_failure));
    }
    bool Failed() const { return !m_failure.empty(); }
    void Forget() { m_failure.clear(); }

  private:
    static void CPL_STDCALL OnMessage(CPLErr kind, CPLErrorNum, const char *text) {
        auto *self = static_cast<QuietGdal *>(CPLGetErrorHandlerUserData());
        if (kind >= CE_Failure && self->m_failure.empty()) self->m_failure = text;
    }

    std::string m_failure;
};

// At most `bytes` of a text, never half a character.
CString CutBetweenCharacters(const CString &text, int bytes) {
    int length = 0;
    while (length < text.GetLength()) {
        const auto step = static_cast<int>(CharLength(text.View(), static_cast<std::size_t>(length)));
        if (length + step > bytes) break;
        length += step;
    }
    return text.Left(length);
}

bool IsNameByte(char c) {
    return c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Letters, digits, underscores and two-byte characters, no digit in front.
CString PlainName(const CString &name) {
    std::string plain;
    const std::string_view text = name.View();
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t step = CharLength(text, i);
        if (step == 2) {
            plain += text.substr(i, 2);
        } else {
            plain += IsNameByte(text[i]) ? text[i] : '_';
        }
        i += step;
    }
    if (plain.empty() || (plain[0] >= '0' && plain[0] <= '9')) plain.insert(0, "_");
    return CutBetweenCharacters(CString(plain), kNameBytes);
}

// The system marks a column of that name as its own.
bool IsTaken(const CFields &fields, const CString &name) {
    return fields.IsExist(name) != 0 || name.CompareNoCase("Update") == 0;
}

CString UniqueName(const CFields &fields, const CString &wanted) {
    CString name = wanted;
    for (int i = 1; IsTaken(fields, name); ++i) {
        CString number;
        number.Format("%d", i);
        name = CutBetweenCharacters(wanted, kNameBytes - number.GetLength()) + number;
    }
    return name;
}

// One column on its way in: what all its values ask for.
struct Incoming {
    int index = 0;
    ENUM_DATA type = DATA_CHAR;
    int longest = 1;
    bool doesNotFit = false;
    std::string note;
};

ENUM_DATA TypeOf(const OGRFieldDefn &field) {
    switch (field.GetType()) {
        case OFTInteger:
            return field.GetSubType() == OFSTBoolean ? DATA_BOOL : DATA_INT;
        case OFTInteger64:
            return DATA_BIGINT;
        case OFTReal:
            return DATA_NUMERIC;
        case OFTBinary:
            return DATA_BINARY;
        default:
            return DATA_CHAR;
    }
}

// Nothing beyond the column's range, and no small number that would become 0.
bool FitsNumber(double value) {
    if (!std::isfinite(value) || std::fabs(value) > kLargestNumber) return false;
    return value == 0.0 || std::strtod(CPLSPrintf("%.*f", kDecimals, value), nullptr) != 0.0;
}

std::string Shortened(std::string number) {
    if (number.find('.') == std::string::npos) return number;
    while (number.back() == '0') number.pop_back();
    if (number.back() == '.') number.pop_back();
    return number;
}

std::string TextOf(const OGRFeature &feature, const Incoming &column) {
    if (!feature.IsFieldSetAndNotNull(column.index)) return {};
    if (column.type == DATA_NUMERIC) {
        return Shortened(CPLSPrintf("%.*f", kDecimals, feature.GetFieldAsDouble(column.index)));
    }
    return feature.GetFieldAsString(column.index);
}

// The first walk: the widths of texts, and the numbers that need to be texts.
void Measure(OGRLayer &layer, std::vector<Incoming> &columns) {
    for (const OGRFeatureUniquePtr &feature : layer) {
        for (Incoming &column : columns) {
            if (!feature->IsFieldSetAndNotNull(column.index)) continue;
            if (column.type == DATA_NUMERIC && !FitsNumber(feature->GetFieldAsDouble(column.index))) {
                column.doesNotFit = true;
            }
            if (column.type == DATA_CHAR || column.type == DATA_NUMERIC) {
                const CString text = FromUtf8(feature->GetFieldAsString(column.index));
                column.longest = std::max(column.longest, text.GetLength());
            }
        }
    }
}

void ChooseType(Incoming &column) {
    if (column.doesNotFit) column.type = DATA_CHAR;
    if (column.type == DATA_CHAR && column.longest > kCharBytes) column.type = DATA_MEMO;
}

std::vector<Incoming> LookAt(OGRLayer &layer, TableReport &report) {
    std::vector<Incoming> columns;
    const OGRFeatureDefn &form = *layer.GetLayerDefn();
    for (int i = 0; i < form.GetFieldCount(); ++i) {
        const OGRFieldDefn &field = *form.GetFieldDefn(i);
        Incoming column;
        column.index = i;
        column.type = TypeOf(field);
        if (column.type == DATA_BINARY) {
            report.notes.push_back(std::string("column '") + field.GetNameRef() + "' holds bytes and is left out");
            continue;
        }
        columns.push_back(column);
    }
    Measure(layer, columns);
    for (Incoming &column : columns) {
        ChooseType(column);
        if (column.doesNotFit) {
            report.notes.push_back(std::string("column '") + form.GetFieldDefn(column.index)->GetNameRef() +
                                   "' holds numbers that a table cannot: kept as text");
        }
    }
    return columns;
}

CField MakeField(const CString &name, ENUM_DATA type, int length) {
    CField field(-1, name, type, 0);
    field.nLength = length;
    return field;
}

std::unique_ptr<CFields> MakeColumns(const OGRFeatureDefn &form, const std::vector<Incoming> &columns,
                                     TableReport &report) {
    constexpr int kNumberWidth = 20;
    auto fields = std::make_unique<CFields>();
    for (const char *name : {"ID", "ShapeID"}) {
        CField field = MakeField(name, DATA_INT, 4);
        field.bReadOnly = field.bSystem = 1;
        fields->AddField(field);
    }
    for (const Incoming &column : columns) {
        const std::string given = form.GetFieldDefn(column.index)->GetNameRef();
        int replaced = 0;
        const CString name = UniqueName(*fields, PlainName(FromUtf8(given, &replaced)));
        report.replacedCharacters += replaced;
        if (ToUtf8(name) != given) {
            report.notes.push_back("column '" + given + "' is called '" + ToUtf8(name) + "' in the table");
        }
        const bool isNumber = column.type == DATA_NUMERIC || column.type == DATA_BIGINT;
        const int length = column.type == DATA_CHAR ? column.longest : isNumber ? kNumberWidth : 4;
        fields->AddField(MakeField(name, column.type, length));
    }
    return fields;
}

void AddRow(const OGRFeature &feature, const std::vector<Incoming> &columns, CXTable &table, TableReport &report) {
    auto record = std::make_unique<CRecord>(static_cast<int>(report.rows));
    CString number;
    number.Format("%d", record->nShapeID);
    record->AddValue(number);
    record->AddValue(number);
    for (const Incoming &column : columns) {
        int replaced = 0;
        CString text = FromUtf8(TextOf(feature, column), &replaced);
        report.replacedCharacters += replaced;
        if (text.IsEmpty() && column.type != DATA_CHAR && column.type != DATA_MEMO) {
            text = "0";
            ++report.emptyNumbers;
        }
        record->AddValue(text);
    }
    table.AddNewRecord(record.release());
    ++report.rows;
}

OGRLayer &LayerOf(GDALDataset &dataset, const TableSource &source) {
    OGRLayer *layer = source.layer.empty() ? dataset.GetLayer(0) : dataset.GetLayerByName(source.layer.c_str());
    if (layer != nullptr) return *layer;
    throw Error(source.layer.empty() ? "no layers in '" + source.path + "'"
                                     : "no layer '" + source.layer + "' in '" + source.path + "'");
}

// The vector format for a file name; null when there is none that can be made.
GDALDriver *DriverFor(const std::string &path) {
    std::string ending = std::filesystem::path(path).extension().string();
    if (ending.size() < 2) return nullptr;
    ending.erase(0, 1);
    if (EQUAL(ending.c_str(), "dbf")) ending = "shp";
    GDALDriverManager &drivers = *GetGDALDriverManager();
    for (int i = 0; i < drivers.GetDriverCount(); ++i) {
        GDALDriver *driver = drivers.GetDriver(i);
        if (driver->GetMetadataItem(GDAL_DCAP_VECTOR) == nullptr) continue;
        if (driver->GetMetadataItem(GDAL_DCAP_CREATE) == nullptr) continue;
        const char *endings = driver->GetMetadataItem(GDAL_DMD_EXTENSIONS);
        const CPLStringList list(CSLTokenizeString(endings == nullptr ? "" : endings));
        if (list.FindString(ending.c_str()) >= 0) return driver;
    }
    return nullptr;
}

CPLStringList LayerOptions(const GDALDriver &driver) {
    CPLStringList options;
    const char *known = const_cast<GDALDriver &>(driver).GetMetadataItem(GDAL_DS_LAYER_CREATIONOPTIONLIST);
    if (known != nullptr && std::string(known).find("'ENCODING'") != std::string::npos) {
        options.SetNameValue("ENCODING", "UTF-8");
    }
    return options;
}

struct Outgoing {
    CString name;
    int position;
};

OGRFieldType OgrType(ENUM_DATA type) {
    switch (type) {
        case DATA_INT:
        case DATA_BOOL:
            return OFTInteger;
        case DATA_BIGINT:
            return OFTInteger64;
        case DATA_NUMERIC:
            return OFTReal;
        case DATA_DATETIME:
            return OFTDateTime;
        default:
            return OFTString;
    }
}

void MakeOgrField(OGRLayer &layer, const CField &field) {
    OGRFieldDefn definition(ToUtf8(field.strName).c_str(), OgrType(field.eType));
    if (field.eType == DATA_CHAR) definition.SetWidth(std::clamp(field.nLength, 1, kCharBytes));
    layer.CreateField(&definition);
}

class Exporter {
  public:
    Exporter(CXTable &table, const std::string &path, OGRLayer &layer, QuietGdal &gdal)
        : m_table(table), m_path(path), m_layer(layer), m_gdal(gdal) {}

    TableReport Run() {
        MakeFields();
        WriteStored();
        for (int i = 0; i < m_table.GetNewRecordCount(); ++i) {
            const CRecord &record = *m_table.GetNewRecordAt(i);
            if (record.bDeleted != 0) continue;
            Write([&](const Outgoing &column) { return record.GetValueAt(column.position); });
        }
        return m_report;
    }

  private:
    void MakeFields() {
        CFields *fields = m_table.GetTableFields();
        if (fields == nullptr) throw Error("the table has no columns");
        for (int i = 0; i < fields->GetFieldCount(); ++i) {
            const CField &field = *fields->GetFieldAt(i);
            if (field.bSystem != 0) continue;
            if (field.eType == DATA_BINARY || field.eType <= DATA_NONE) {
                m_report.notes.push_back("column '" + ToUtf8(field.strName) + "' is left out");
                continue;
            }
            MakeOgrField(m_layer, field);
            if (m_gdal.Failed()) m_gdal.Throw("cannot make the columns of", m_path);
            m_columns.push_back({field.strName, i});
        }
    }

    void WriteStored() {
        CString sql;
        sql.Format("Select * From %s Where ID <> -1", m_table.GetTableName().GetString());
        const ado::RecordsetRef rows = m_table.GetRecordset(sql);
        for (; rows && !rows->IsEOF(); rows->MoveNext()) {
            Write([&](const Outgoing &column) { return m_table.GetItemValue(rows, column.name); });
        }
    }

    template <class Cell>
    void Write(Cell cell) {
        OGRFeature feature(m_layer.GetLayerDefn());
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            const CString text = cell(m_columns[i]);
            const int index = static_cast<int>(i);
            const bool isText = feature.GetFieldDefnRef(index)->GetType() == OFTString;
            if (!text.IsEmpty() || isText) feature.SetField(index, ToUtf8(text).c_str());
        }
        if (m_layer.CreateFeature(&feature) != OGRERR_NONE || m_gdal.Failed()) m_gdal.Throw("cannot write", m_path);
        ++m_report.rows;
    }

    CXTable &m_table;
    const std::string &m_path;
    OGRLayer &m_layer;
    QuietGdal &m_gdal;
    std::vector<Outgoing> m_columns;
    TableReport m_report;
};

TableReport ExportTo(GDALDriver &driver, CXTable &table, const std::string &path, QuietGdal &gdal) {
    // A dataset says only when it closes whether all of it came to the file.
    GDALDatasetUniquePtr dataset(driver.Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    if (!dataset) gdal.Throw("cannot make", path);
    const std::string name = std::filesystem::path(path).stem().string();
    OGRLayer *layer = dataset->CreateLayer(name.c_str(), nullptr, wkbNone, LayerOptions(driver).List());
    if (layer == nullptr) gdal.Throw("cannot make", path);
    gdal.Forget();
    TableReport report = Exporter(table, path, *layer, gdal).Run();
    dataset.reset();
    if (gdal.Failed()) gdal.Throw("cannot write", path);
    return report;
}

}  // namespace

TableReport ImportTable(const TableSource &source, CTable_Local_dbf &table) {
    GDALAllRegister();
    QuietGdal gdal;
    const GDALDatasetUniquePtr dataset(
        GDALDataset::Open(source.path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr, nullptr, nullptr));
    if (!dataset) gdal.Throw("cannot read", source.path);
    OGRLayer &layer = LayerOf(*dataset, source);
    gdal.Forget();
    TableReport report;
    const std::vector<Incoming> columns = LookAt(layer, report);
    const std::unique_ptr<CFields> fields = MakeColumns(*layer.GetLayerDefn(), columns, report);
    if (table.CreateNewLayerTable(fields.get()) == 0) throw Error("cannot make the table (see the error log)");
    layer.ResetReading();
    for (const OGRFeatureUniquePtr &feature : layer) AddRow(*feature, columns, table, report);
    if (gdal.Failed()) gdal.Throw("cannot read", source.path);
    return report;
}

TableReport ExportTable(CXTable &table, const std::string &path) {
    GDALAllRegister();
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored)) throw Error("'" + path + "' is there already");
    GDALDriver *driver = DriverFor(path);
    if (driver == nullptr) throw Error("no format that can be written is known for '" + path + "'");
    QuietGdal gdal;
    try {
        return ExportTo(*driver, table, path, gdal);
    } catch (...) {
        driver->Delete(path.c_str());
        throw;
    }
}

}  // namespace ktl::host
