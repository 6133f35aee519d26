#include "host/ogr_table.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <cmath>
#include <cstdio>
#include <memory>

#include "host/error.h"
#include "host/ogr_open.h"

namespace ktl::host {

namespace {

ColumnType TypeOf(const OGRFieldDefn &field) {
    switch (field.GetType()) {
        case OFTInteger:
        case OFTInteger64:
            return field.GetSubType() == OFSTBoolean ? ColumnType::kYesNo : ColumnType::kInteger;
        case OFTReal:
            return ColumnType::kNumber;
        case OFTDate:
            return ColumnType::kDate;
        case OFTTime:
            return ColumnType::kTime;
        case OFTDateTime:
            return ColumnType::kDateTime;
        case OFTBinary:
            return ColumnType::kBytes;
        default:
            return ColumnType::kText;
    }
}

std::vector<TableColumn> ColumnsOf(OGRLayer &layer) {
    const OGRFeatureDefn &form = *layer.GetLayerDefn();
    std::vector<TableColumn> columns;
    for (int i = 0; i < form.GetFieldCount(); ++i) {
        const OGRFieldDefn &field = *form.GetFieldDefn(i);
        const ColumnType type = TypeOf(field);
        const bool hasWidth = type == ColumnType::kText || IsNumber(type);
        columns.push_back({field.GetNameRef(), type, hasWidth ? field.GetWidth() : 0, field.GetPrecision(),
                           field.GetType() == OFTInteger64});
    }
    return columns;
}

std::string DateText(const OGRFeature &feature, int index, ColumnType type) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, zone = 0;
    float second = 0;
    feature.GetFieldAsDateTime(index, &year, &month, &day, &hour, &minute, &second, &zone);
    char text[64] = {};
    int length = 0;
    const auto put = [&](const char *format, auto... values) {
        length += std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length), format, values...);
    };
    if (type != ColumnType::kTime) put("%04d-%02d-%02d", year, month, day);
    if (type == ColumnType::kDate) return text;
    put(type == ColumnType::kTime ? "%02d:%02d:" : " %02d:%02d:", hour, minute);
    const int milliseconds = static_cast<int>(std::lround(second * 1000));
    put("%02d", milliseconds / 1000);
    if (milliseconds % 1000 != 0) put(".%03d", milliseconds % 1000);
    // 0 and 1 are no zone and the local one; 100 is Greenwich, and each step a quarter of an hour.
    if (zone > 1) {
        const int minutes = std::abs(zone - 100) * 15;
        put("%c%02d:%02d", zone < 100 ? '-' : '+', minutes / 60, minutes % 60);
    }
    return text;
}

TableCell CellOf(const OGRFeature &feature, int index, ColumnType type) {
    if (!feature.IsFieldSetAndNotNull(index)) return {};
    const OGRFieldDefn &field = *feature.GetFieldDefnRef(index);
    switch (type) {
        case ColumnType::kInteger:
            return {CellKind::kNumber, std::to_string(feature.GetFieldAsInteger64(index))};
        case ColumnType::kYesNo:
            return {CellKind::kYesNo, feature.GetFieldAsInteger(index) != 0 ? "true" : "false"};
        case ColumnType::kNumber: {
            const double value = feature.GetFieldAsDouble(index);
            const bool isShort = field.GetSubType() == OFSTFloat32;
            return {CellKind::kNumber, isShort ? NumberText(static_cast<float>(value)) : NumberText(value)};
        }
        case ColumnType::kBytes: {
            int size = 0;
            const GByte *bytes = const_cast<OGRFeature &>(feature).GetFieldAsBinary(index, &size);
            return {CellKind::kBytes, {reinterpret_cast<const char *>(bytes), static_cast<std::size_t>(size)}};
        }
        case ColumnType::kDate:
        case ColumnType::kTime:
        case ColumnType::kDateTime:
            return {CellKind::kText, DateText(feature, index, type)};
        default:
            break;
    }
    if (field.GetType() == OFTString) return {CellKind::kText, SoundUtf8(feature.GetFieldAsString(index))};
    const std::unique_ptr<char, decltype(&VSIFree)> list(feature.GetFieldAsSerializedJSon(index), VSIFree);
    return {CellKind::kText, SoundUtf8(list ? list.get() : feature.GetFieldAsString(index))};
}

void RequireReadToTheEnd(const TableSource &source, const GdalMessages &messages) {
    if (messages.Failed()) throw Error("cannot read '" + source.path + "' to its end: " + messages.Failure());
}

}  // namespace

TableInfo DescribeOgrTable(const TableSource &source) {
    GdalMessages messages;
    const GdalMessages::Listening listening(messages);
    const GDALDatasetUniquePtr dataset = OpenOgr(source.path, messages);
    OGRLayer &layer = FindLayer(*dataset, source.path, source.layer);
    TableInfo info;
    info.layer = layer.GetName();
    for (OGRLayer *each : PublicLayers(*dataset)) info.layers.emplace_back(each->GetName());
    info.columns = ColumnsOf(layer);
    info.rows = layer.GetFeatureCount();
    RequireReadToTheEnd(source, messages);
    return info;
}

void ReadOgrTable(const TableSource &source, TableSink &sink) {
    GdalMessages messages;
    const GdalMessages::Listening listening(messages);
    const GDALDatasetUniquePtr dataset = OpenOgr(source.path, messages);
    OGRLayer &layer = FindLayer(*dataset, source.path, source.layer);
    const std::vector<TableColumn> columns = ColumnsOf(layer);
    sink.TakeColumns(columns);
    TableRow row(columns.size());
    for (const OGRFeatureUniquePtr &feature : layer) {
        if (messages.Failed()) break;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            row[i] = CellOf(*feature, static_cast<int>(i), columns[i].type);
        }
        if (!sink.TakeRow(row)) return;
    }
    RequireReadToTheEnd(source, messages);
}

}  // namespace ktl::host
