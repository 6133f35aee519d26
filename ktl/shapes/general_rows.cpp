#include "ktl/shapes/general_rows.h"

#include "ktl/webmap/projection.h"

namespace ktl {

namespace {

constexpr GeneralRow kIdentifier{"ID", DATA_INT, true};
constexpr GeneralRow kSides[] = {
    {"MinX", DATA_NUMERIC, true},
    {"MinY", DATA_NUMERIC, true},
    {"MaxX", DATA_NUMERIC, true},
    {"MaxY", DATA_NUMERIC, true},
};

void AddRow(CFields &fields, int index, const GeneralRow &row) {
    fields.AddField(CField(index, row.name, row.type, row.isReadOnly));
}

}  // namespace

std::unique_ptr<CFields> MakeGeneralFields(std::span<const GeneralRow> rows, int firstSide) {
    auto fields = std::make_unique<CFields>();
    int index = 0;
    AddRow(*fields, index++, kIdentifier);
    for (const GeneralRow &row : rows) AddRow(*fields, index++, row);
    for (const GeneralRow &side : kSides) AddRow(*fields, firstSide++, side);
    return fields;
}

GeneralValues::GeneralValues(int shapeID) : m_record(std::make_unique<CRecord>(shapeID)) {
    AddInteger(shapeID);
}

void GeneralValues::AddInteger(int value) {
    CString text;
    text.Format("%d", value);
    m_record->AddValue(text);
}

void GeneralValues::AddReal(double value) {
    CString text;
    text.Format("%f", value);
    m_record->AddValue(text);
}

void GeneralValues::AddDegrees(double x, double y) {
    double longitude = 0.0;
    double latitude = 0.0;
    KtlGetLB(x, y, longitude, latitude);
    AddReal(longitude);
    AddReal(latitude);
}

void GeneralValues::AddSides(const CExtent &extent) {
    AddDegrees(extent.left, extent.bottom);
    AddDegrees(extent.right, extent.top);
}

}  // namespace ktl
