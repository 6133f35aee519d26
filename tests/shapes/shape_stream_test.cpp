#include <gtest/gtest.h>
#include <ogr_geometry.h>

#include <memory>

#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"
#include "ktl/shapes/shape_null.h"
#include "ktl/shapes/shape_point.h"
#include "ktl/shapes/shape_symbol.h"
#include "ktl/webmap/projection.h"
#include "tests/shapes/canvas.h"
#include "tests/shapes/shape_text.h"

namespace {

using ktl_test::Area;
using ktl_test::Bytes;
using ktl_test::ExpectEveryPrefixThrows;
using ktl_test::ExpectRoundTrip;
using ktl_test::Line;
using ktl_test::Load;
using ktl_test::Store;
using ktl_test::Stored;
using ktl_test::TextOf;

constexpr std::size_t kFrameSize = 4 + 32;

template <class Shape>
void ExpectStream(Shape &shape, int version, std::size_t size) {
    shape.SetShapeID(0x01020304);
    const Bytes bytes = Store(shape, version);
    EXPECT_EQ(bytes.size(), kFrameSize + size) << "version " << version;
    EXPECT_EQ((Bytes{bytes[0], bytes[1], bytes[2], bytes[3]}), (Bytes{4, 3, 2, 1}));
    ExpectRoundTrip(shape, Shape(), version);
    ExpectEveryPrefixThrows(bytes, version, std::make_unique<Shape>);
}

TEST(ShapeStream, EveryKindWritesWhatItReads) {
    for (const int version : {0, 200, 202, 203, 207}) {
        CShape_Point point;
        point.SetPoint(1.5, -2.5);
        ExpectStream(point, version, 16);
        CShape_Polygon area = Area("0 0, 1 0, 1 1");
        ExpectStream(area, version, 4 + 3 * 16);
        CShape_Polyline line = Line("0 0, 1 0");
        line.SetClosed(true);
        ExpectStream(line, version, (version >= 203 ? 1 : 0) + 4 + 2 * 16);
        // The closed mark stands before the vertices.
        EXPECT_EQ(Store(line, version)[kFrameSize], version >= 203 ? 1 : 2);
        CShape_NULL null;
        ExpectStream(null, version, 0);
    }
}

TEST(ShapeStream, ACountTakesNoMemoryBeforeItsVertices) {
    CShape_Polygon area = Area("0 0, 1 0, 1 1");
    Bytes bytes = Store(area, 201);
    for (std::size_t i = 0; i < 4; ++i) bytes[kFrameSize + i] = i == 3 ? 0x7F : 0xFF;
    CShape_Polygon copy;
    EXPECT_THROW(Load(copy, bytes, 201), CArchiveException);
    for (std::size_t i = 0; i < 4; ++i) bytes[kFrameSize + i] = 0xFF;
    CShape_Polygon negative = Area("5 5");
    EXPECT_EQ(Load(negative, bytes, 201), 48U);
    EXPECT_EQ(negative.GetPointCount(), 0);
    CShape_Polyline line;
    for (int i = 0; i < 5000; ++i) line.AddPoint(CPointD(i * 0.1, -i / 3.0));
    ExpectRoundTrip(line, Line("7 7"), 203);
}

/// A symbol's stream: its header, and the shapes with their kinds.
Bytes SymbolBytes(int nestedVersion, int count, std::initializer_list<CShape *> shapes, int lastKind = -2) {
    return Stored([&](CArchive &archive) {
        archive << nestedVersion << count;
        for (CShape *shape : shapes) {
            archive << static_cast<int>(shape->GetShapeType());
            shape->Serialize(archive, nestedVersion);
        }
        if (lastKind != -2) archive << lastKind << 1;
    });
}

TEST(ShapeStream, ASymbolReadsItsShapesAtTheirOwnVersion) {
    CShape_Polyline line = Line("0 0, 1 1");
    CShape_Point point;
    const Bytes bytes = SymbolBytes(203, 2, {&line, &point});
    CShape_Symbol symbol;
    EXPECT_EQ(Load(symbol, bytes, 200), 0U);
    ASSERT_EQ(symbol.GetShapeCount(), 2);
    EXPECT_EQ(symbol.GetShapeAt(0)->GetShapeType(), SHAPE_POLYLINE);
    EXPECT_TRUE(Store(symbol, 203).empty());
    ExpectEveryPrefixThrows(bytes, 203, std::make_unique<CShape_Symbol>);
    const std::unique_ptr<CShape> clone(symbol.Clone());
    EXPECT_EQ(dynamic_cast<CShape_Symbol &>(*clone).GetShapeCount(), 2);
    // A kind that is not known ends a symbol.
    for (const int kind : {0, 12, 99, -1}) {
        EXPECT_EQ(Load(symbol, SymbolBytes(203, 0x7FFFFFFF, {&point, &point, &point}, kind), 203), 4U) << kind;
        EXPECT_EQ(symbol.GetShapeCount(), 3) << kind;
    }
}

std::string RowsOf(CShape &shape) {
    const std::unique_ptr<CFields> fields(shape.GetGeneralFields());
    std::string text;
    for (int i = 0; i < fields->GetFieldCount(); ++i) {
        const CField &field = *fields->GetFieldAt(i);
        text += std::to_string(field.nID) + field.strName.GetString() + std::to_string(field.eType) +
                (field.bReadOnly ? "r " : " ");
    }
    return text;
}

std::string ValuesOf(CShape &shape) {
    const std::unique_ptr<CRecord> record(shape.GetGeneralValue());
    EXPECT_EQ(record->nShapeID, shape.GetShapeID());
    std::string text;
    for (int i = 0; i < record->GetValueCount(); ++i) text += std::string(record->GetValueAt(i)) + " ";
    return text;
}

TEST(ShapeRows, TheGridShowsDegrees) {
    CShape_Point point;
    point.SetShapeID(3);
    point.SetPoint(0.25, 0.0);
    EXPECT_EQ(RowsOf(point), "0ID2r 1X4 2Y4 3MinX4r 4MinY4r 5MaxX4r 6MaxY4r ");
    EXPECT_EQ(ValuesOf(point), "3 90.000000 0.000000 90.000000 0.000000 90.000000 0.000000 ");
    CShape_Polyline line = Line("-0.5 0, 0.5 0.25, 0 0");
    EXPECT_EQ(RowsOf(line), "0ID2r 1PointCount2r 2MinX4r 3MinY4r 4MaxX4r 5MaxY4r ");
    EXPECT_EQ(ValuesOf(line), "-1 3 -180.000000 0.000000 180.000000 66.513260 ");
    CShape_Polygon area = Area("-0.5 0, 0.5 0.25, 0 0, -0.5 0");
    EXPECT_EQ(RowsOf(area), RowsOf(line));
    EXPECT_EQ(ValuesOf(area), "-1 4 -180.000000 0.000000 180.000000 66.513260 ");
    EXPECT_TRUE(!CShape_NULL().GetGeneralFields() && !CShape_NULL().GetGeneralValue());
}

TEST(ShapeRows, APointTakesDegreesWithinTheirLimits) {
    struct Case {
        const char *field, *value;
        double x, y;
    };
    const double y85 = KtlGetY(85.0);
    const Case cases[] = {
        {"X", "90", 0.25, 0.1},    {"X", "180.0", 0.5, 0.1}, {"X", "180.1", 0.2, 0.1},
        {"X", "-180", -0.5, 0.1},  {"X", "-181", 0.2, 0.1},  {"X", "text", 0.0, 0.1},
        {"Y", "85.0", 0.2, y85},   {"Y", "85.1", 0.2, 0.1},  {"Y", "-85", 0.2, KtlGetY(-85.0)},
        {"Y", "-85.01", 0.2, 0.1}, {"MinX", "5", 0.2, 0.1},  {"X", " +90x", 0.25, 0.1},
    };
    for (const Case &c : cases) {
        CShape_Point point;
        point.SetPoint(0.2, 0.1);
        point.UpdateGeneralValue(c.field, c.value);
        EXPECT_NEAR(point.GetPoint().x, c.x, 1e-15) << c.field << '=' << c.value;
        EXPECT_NEAR(point.GetPoint().y, c.y, 1e-15) << c.field << '=' << c.value;
        EXPECT_EQ(point.GetMinX(), point.GetPoint().x) << c.field << '=' << c.value;
    }
}

TEST(ShapeOgr, GeometriesGoOutInDegreesAndAsTheyAreStored) {
    CShape_Point point;
    point.SetPoint(0.25, 0.1);
    CShape_Polyline line = Line("0 0, 0.25 0, 0.25 0.1");
    line.SetClosed(true);
    CShape_Polygon area = Area("0 0, 0.25 0, 0.25 0.1");
    const std::unique_ptr<OGRGeometry> ogrPoint(point.GetOGRShape());
    const std::unique_ptr<OGRGeometry> ogrLine(line.GetOGRShape());
    const std::unique_ptr<OGRGeometry> ogrArea(area.GetOGRShape());
    EXPECT_EQ(ogrPoint->toPoint()->getX(), 90.0);
    EXPECT_EQ(ogrPoint->toPoint()->getY(), KtlGetB(0.1));
    const OGRLinearRing *ring = ogrArea->toPolygon()->getExteriorRing();
    ASSERT_NE(ring, nullptr);
    for (const OGRSimpleCurve *curve :
         {static_cast<const OGRSimpleCurve *>(ogrLine->toLineString()), static_cast<const OGRSimpleCurve *>(ring)}) {
        EXPECT_EQ(curve->getNumPoints(), 3);
        EXPECT_EQ(curve->getX(2), 90.0);
        EXPECT_EQ(curve->getY(2), KtlGetB(0.1));
        EXPECT_EQ(curve->getCoordinateDimension(), 2);
    }
    const std::unique_ptr<OGRGeometry> empty(CShape_Polygon().GetOGRShape());
    EXPECT_TRUE(empty->IsEmpty());
    EXPECT_EQ(CShape_NULL().GetOGRShape(), nullptr);
}

}  // namespace
