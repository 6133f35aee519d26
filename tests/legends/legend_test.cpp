#include "ktl/legends/legend.h"

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <tuple>

#include "ktl/legends/legend_image.h"
#include "ktl/legends/legend_point.h"
#include "ktl/legends/legend_polygon.h"
#include "ktl/legends/legend_polyline.h"
#include "ktl/legends/legend_text.h"
#include "tests/shapes/canvas.h"

namespace {

using ktl_test::Bytes;
using ktl_test::ExpectEveryPrefixThrows;
using ktl_test::ExpectRoundTrip;
using ktl_test::Load;
using ktl_test::Store;

class LegendTest : public ktl_test::DrawingTest {};

/// A base legend of known values.
void Fill(CLegend &legend) {
    legend.SetForeColor(RGB(100, 0, 255));
    legend.SetBackColor(RGB(10, 20, 30));
    legend.SetAlpha(200);
    legend.SetSize(3);
    legend.LegendID = 7;
}

TEST_F(LegendTest, ColoursMoveByTruncatedShares) {
    struct Case {
        double ratio;
        COLORREF lightened, darkened;
    };
    const Case cases[] = {
        {0.5, RGB(177, 127, 255), RGB(50, 0, 127)},
        {1.0, RGB(255, 255, 255), RGB(0, 0, 0)},
        {0.01, RGB(101, 2, 255), RGB(99, 0, 252)},
        {0.0, 0, 0},
        {1.0000001, 0, 0},
        {std::numeric_limits<double>::quiet_NaN(), 0, 0},
    };
    CLegend legend;
    Fill(legend);
    legend.SetBackColor(RGB(100, 0, 255));
    for (const Case &c : cases) {
        EXPECT_EQ(legend.GetLightenForeColor(c.ratio), c.lightened) << c.ratio;
        EXPECT_EQ(legend.GetDarkenForeColor(c.ratio), c.darkened) << c.ratio;
        EXPECT_EQ(legend.GetLightenBackColor(c.ratio), c.lightened) << c.ratio;
        EXPECT_EQ(legend.GetDarkenBackColor(c.ratio), c.darkened) << c.ratio;
    }
    EXPECT_EQ(legend.GetHoverForeColor(0.5), legend.GetHoverBackColor(0.5));
    EXPECT_EQ(legend.GetDarkenForeColorA(0.5).GetValue(), 0xC832007FU);
    EXPECT_EQ(legend.GetDarkenBackColorA(0.5).GetValue(), 0xC832007FU);
    // Alpha is its low byte: mixed, it is -1.
    CLegend other;
    legend.UnionLegendValue(&other);
    EXPECT_EQ(legend.GetForeColorA().GetAlpha(), 255);
}

TEST_F(LegendTest, SettersHoldTheirRange) {
    CLegend legend;
    for (const auto &[set, size, alpha] : {std::tuple{0, 1, 0}, {-1, 1, 0}, {64, 64, 64}, {300, 64, 255}}) {
        legend.SetSize(static_cast<short>(set));
        legend.SetAlpha(static_cast<short>(set));
        EXPECT_TRUE(legend.GetSize() == size && legend.GetAlpha() == alpha) << set;
    }
}

TEST_F(LegendTest, PensAndBrushesFollowTheState) {
    CLegend legend;
    Fill(legend);
    const auto expect = [](Gdiplus::Pen *pen, float width, Gdiplus::Brush *brush, Gdiplus::ARGB color) {
        const std::unique_ptr<Gdiplus::Pen> ownPen(pen);
        const std::unique_ptr<Gdiplus::Brush> ownBrush(brush);
        EXPECT_EQ(pen->ColorValue().GetValue(), color);
        EXPECT_EQ(pen->GetWidth(), width);
        EXPECT_EQ(dynamic_cast<Gdiplus::SolidBrush &>(*brush).ColorValue().GetValue(), color);
    };
    for (const int state : {0, 1, -4}) {
        SCOPED_TRACE(state);
        expect(legend.GetForePen(state), state ? 5.0F : 3.0F, legend.GetForeBrush(state),
               state ? 0xC8B17FFF : 0xC86400FF);
        expect(legend.GetBackPen(state), 5.0F, legend.GetBackBrush(state), state ? 0xC884898E : 0xC80A141E);
    }
    legend.SetSize(9);
    expect(legend.GetBackPen(0), 11.0F, legend.GetBackBrush(0), 0xC80A141E);
}

/// One change that makes a legend differ from another, and what the union then shows.
struct Difference {
    std::string name;
    void (*apply)(CLegend &);
    bool (*isMixed)(CLegend &);
};

const Difference kBaseDifferences[] = {
    {"fore colour", [](CLegend &l) { l.SetForeColor(9); }, [](CLegend &l) { return l.GetForeColor() == 0xFFFFFFFF; }},
    {"back colour", [](CLegend &l) { l.SetBackColor(9); }, [](CLegend &l) { return l.GetBackColor() == 0xFFFFFFFF; }},
    {"size", [](CLegend &l) { l.SetSize(9); }, [](CLegend &l) { return l.GetSize() == -1; }},
    {"alpha", [](CLegend &l) { l.SetAlpha(9); }, [](CLegend &l) { return l.GetAlpha() == -1; }},
    {"fore by layer", [](CLegend &l) { l.ForeColorByLayer(true); }, [](CLegend &l) { return l.ForeColorIsByLayer(); }},
    {"back by layer", [](CLegend &l) { l.BackColorByLayer(true); }, [](CLegend &l) { return l.BackColorIsByLayer(); }},
    {"size by layer", [](CLegend &l) { l.SizeByLayer(true); }, [](CLegend &l) { return l.SizeIsByLayer(); }},
    {"alpha by layer", [](CLegend &l) { l.AlphaByLayer(true); }, [](CLegend &l) { return l.AlphaIsByLayer(); }},
};

CLegend_Polyline &Line(CLegend &legend) {
    return dynamic_cast<CLegend_Polyline &>(legend);
}
CLegend_Polygon &Area(CLegend &legend) {
    return dynamic_cast<CLegend_Polygon &>(legend);
}
CLegend_Text &Text(CLegend &legend) {
    return dynamic_cast<CLegend_Text &>(legend);
}

void SetDashes(CLegend &legend, float entry, int count = 1) {
    CArray<float, float> pattern;
    for (int i = 0; i < count; ++i) pattern.Add(entry);
    Line(legend).SetDashPattern(pattern);
}

const Difference kLineDifferences[] = {
    {"line style", [](CLegend &l) { Line(l).SetLineStyle(3); }, [](CLegend &l) { return Line(l).GetLineStyle() == 0; }},
    {"dash style", [](CLegend &l) { Line(l).SetDashStyle(2); },
     [](CLegend &l) { return Line(l).GetDashStyle() == -1; }},
    {"dash", [](CLegend &l) { SetDashes(l, 1.5F); }, [](CLegend &l) { return Line(l).GetDashPattern().IsEmpty(); }},
};
const Difference kAreaDifferences[] = {
    {"hatch", [](CLegend &l) { Area(l).SetHatchStyle(4); }, [](CLegend &l) { return Area(l).GetHatchStyle() == -1; }},
};
const Difference kTextDifferences[] = {
    {"bold", [](CLegend &l) { Text(l).SetBold(false); }, [](CLegend &l) { return Text(l).IsBold(); }},
    {"italic", [](CLegend &l) { Text(l).SetItalic(true); }, [](CLegend &l) { return Text(l).IsItalic(); }},
    {"underline", [](CLegend &l) { Text(l).SetUnderline(true); }, [](CLegend &l) { return Text(l).IsUnderline(); }},
    {"strikeout", [](CLegend &l) { Text(l).SetStrikeout(true); }, [](CLegend &l) { return Text(l).IsStrikeout(); }},
    {"font", [](CLegend &l) { Text(l).SetFontName("Arial"); }, [](CLegend &l) { return Text(l).GetFontName() == ""; }},
};

template <class Legend>
std::unique_ptr<CLegend> MakeLike(CLegend &original) {
    auto legend = std::make_unique<Legend>();
    legend->CLegend::Copy(&original);
    return legend;
}

/// Every difference is seen by `Compare`, merged by `UnionLegendValue` and carried by `Copy`.
template <class Legend, std::size_t N>
void ExpectDifferences(const Difference (&differences)[N]) {
    for (const Difference &difference : differences) {
        Legend original;
        Fill(original);
        const auto changed = MakeLike<Legend>(original);
        changed->LegendID = 99;
        EXPECT_EQ(original.Compare(changed.get()), 1) << difference.name;
        difference.apply(*changed);
        EXPECT_EQ(original.Compare(changed.get()), 0) << difference.name;
        Legend copy;
        copy.Copy(changed.get());
        EXPECT_EQ(copy.Compare(changed.get()), 1) << difference.name;
        EXPECT_EQ(copy.LegendID, 99) << difference.name;
        if (difference.name != "dash") {  // which is not merged
            copy.UnionLegendValue(&original);
            EXPECT_TRUE(difference.isMixed(copy)) << difference.name;
        }
        EXPECT_EQ(original.UnionLegendValue(changed.get()), 0) << difference.name;
        EXPECT_TRUE(difference.isMixed(original)) << difference.name;
    }
}

TEST_F(LegendTest, EveryValueIsComparedCopiedAndMerged) {
    ExpectDifferences<CLegend>(kBaseDifferences);
    ExpectDifferences<CLegend_Point>(kBaseDifferences);
    ExpectDifferences<CLegend_Polyline>(kLineDifferences);
    ExpectDifferences<CLegend_Polygon>(kAreaDifferences);
    ExpectDifferences<CLegend_Text>(kTextDifferences);
}

TEST_F(LegendTest, LegendsOfTwoKindsDifferAndMixNothingOfTheirOwn) {
    CLegend_Polyline line;
    Fill(line);
    const auto area = MakeLike<CLegend_Polygon>(line);
    EXPECT_EQ(line.Compare(area.get()), 0);
    EXPECT_EQ(area->Compare(&line), 0);
    EXPECT_EQ(line.Compare(nullptr), 0);
    line.UnionLegendValue(area.get());
    EXPECT_EQ(line.GetLineStyle(), 1);
    const auto dashed = MakeLike<CLegend_Polyline>(line);
    SetDashes(line, 1.0F);
    SetDashes(*dashed, 2.0F);
    EXPECT_EQ(line.Compare(dashed.get()), 0);
}

TEST_F(LegendTest, FormsHaveTheirBytes) {
    CLegend legend;
    Fill(legend);
    legend.BackColorByLayer(true);
    const Bytes form200 = {0, 0, 0, 0, 7, 0, 3, 0, 100, 0, 255, 0, 200, 0, 10, 20, 30, 0, 255, 0};
    const Bytes form201 = {7, 0, 100, 0, 255, 0, 0, 10, 20, 30, 0, 1, 3, 0, 0, 200, 0, 0};
    for (const int version : {0, 199, 200}) EXPECT_EQ(Store(legend, version), form200) << version;
    for (const int version : {201, 203, 999}) EXPECT_EQ(Store(legend, version), form201) << version;
    CLegend current;
    EXPECT_EQ(Load(current, form201, 201), 0U);
    EXPECT_EQ(Store(current, 201), form201);
    CLegend old;
    EXPECT_EQ(Load(old, form200, 0), 0U);
    EXPECT_EQ(old.GetForeColor(), RGB(100, 0, 255));
    EXPECT_FALSE(old.BackColorIsByLayer());
}

template <class Legend>
std::unique_ptr<CLegend> New() {
    return std::make_unique<Legend>();
}

/// A kind of legend, and what it writes behind the base's part before version 201, from there on, and from 207 on.
struct Kind {
    std::unique_ptr<CLegend> (*make)();
    void (*fill)(CLegend &);
    Bytes tail200, tail201, tail207;
};

TEST_F(LegendTest, KindsAreClonedAndWriteWhatTheyReadAtEveryVersion) {
    const Bytes pointTail = {1, 0, 0, 0, 0, 0, 0, 0, 0};
    const Bytes dashes = {5, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0x80, 0x3F};
    const Bytes styled = {4, 0, 0, 0, 5, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0x80, 0x3F};
    const Bytes image = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
    const Kind kinds[] = {
        {New<CLegend_Point>, Fill, pointTail, pointTail, pointTail},
        {New<CLegend_Polyline>,
         [](CLegend &l) {
             Line(l).SetLineStyle(4);
             Line(l).SetDashStyle(5);
             SetDashes(l, 1.0F);
         },
         dashes, styled, styled},
        {New<CLegend_Polygon>, [](CLegend &l) { Area(l).SetHatchStyle(12); }, {12, 0}, {12, 0}, {12, 0}},
        {New<CLegend_Text>,
         [](CLegend &l) {
             Text(l).SetFontName("A");
             Text(l).SetUnderline(true);
         },
         {},
         {},
         {0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 'A'}},
        {New<CLegend_Image>, [](CLegend &l) { dynamic_cast<CLegend_Image &>(l).SetOffset(0.0, 1.0); }, image, image,
         image},
    };
    for (const Kind &kind : kinds) {
        const auto legend = kind.make();
        kind.fill(*legend);
        const bool isImage = legend->GetType() == LEGEND_IMAGE;
        SCOPED_TRACE(legend->GetType());
        for (const int version : {0, 200, 201, 206, 207}) {
            const Bytes bytes = Store(*legend, version);
            const std::ptrdiff_t head = isImage ? 0 : version < 201 ? 20 : 18;
            const Bytes &tail = version < 201 ? kind.tail200 : version < 207 ? kind.tail201 : kind.tail207;
            EXPECT_EQ(Bytes(bytes.begin() + head, bytes.end()), tail) << version;
            ExpectRoundTrip(*legend, std::move(*kind.make()), version);
            ExpectEveryPrefixThrows(bytes, version, kind.make);
        }
        const std::unique_ptr<CLegend> clone(legend->Clone());
        EXPECT_EQ(clone != nullptr && legend->Compare(clone.get()), !isImage);
    }
    EXPECT_EQ(CLegend().Clone(), nullptr);
    EXPECT_TRUE(CLegend_Point().GetSize() == 5 && CLegend_Text().GetSize() == 12);
}

TEST_F(LegendTest, ATextLegendTakesAnyNumberAsTrueAndKeepsItsFontAt206) {
    CLegend_Text text;
    Bytes bytes = Store(text, 207);
    bytes[18] = 2;
    CLegend_Text copy;
    Load(copy, bytes, 207);
    EXPECT_TRUE(copy.IsItalic());
    CLegend_Text old;
    old.SetBold(false);
    Load(old, Store(text, 206), 206);
    EXPECT_FALSE(old.IsBold());
    EXPECT_EQ(old.GetFontName(), text.GetFontName());
}

TEST_F(LegendTest, ACountFromAStreamTakesNoMemory) {
    CLegend_Polyline line;
    Bytes bytes = Store(line, 201);
    for (std::size_t i = 0; i < 4; ++i) bytes[bytes.size() - 4 + i] = i == 3 ? 0x7F : 0xFF;
    bytes.insert(bytes.end(), 40, BYTE{0});
    CLegend_Polyline copy;
    EXPECT_THROW(Load(copy, bytes, 201), CArchiveException);
    EXPECT_EQ(copy.GetDashPattern().GetSize(), 10);

    CLegend_Point point;
    Bytes picture = Store(point, 201);
    picture.resize(19);
    for (const int part : {1, 0x7FFFFFFF}) {
        for (int shift = 0; shift < 32; shift += 8) picture.push_back(static_cast<BYTE>(part >> shift));
    }
    CLegend_Point pointCopy;
    EXPECT_THROW(Load(pointCopy, picture, 201), CArchiveException);
}

TEST_F(LegendTest, LinePensAreStyledByTheLineStyle) {
    struct Case {
        int lineStyle, dashStyle, penStyle, patternCount;
        Gdiplus::ARGB color;
    };
    const Case cases[] = {
        {1, 2, Gdiplus::DashStyleSolid, 0, 0xC86400FF},   {2, 2, Gdiplus::DashStyleSolid, 0, 0xC86400FF},
        {3, 0, Gdiplus::DashStyleCustom, 2, 0xFFFFFFFF},  {4, 0, Gdiplus::DashStyleSolid, 0, 0xC86400FF},
        {4, 3, Gdiplus::DashStyleDashDot, 4, 0xC86400FF}, {4, 5, Gdiplus::DashStyleCustom, 3, 0xC86400FF},
        {0, 5, Gdiplus::DashStyleSolid, 0, 0xC86400FF},
    };
    CLegend_Polyline legend;
    Fill(legend);
    SetDashes(legend, 4.0F, 3);
    for (const Case &c : cases) {
        SCOPED_TRACE(c.lineStyle * 10 + c.dashStyle);
        legend.SetLineStyle(c.lineStyle);
        legend.SetDashStyle(c.dashStyle);
        const std::unique_ptr<Gdiplus::Pen> pen(legend.GetForePen(0));
        EXPECT_EQ(pen->GetDashStyle(), c.penStyle);
        EXPECT_EQ(pen->GetDashPatternCount(), c.patternCount);
        EXPECT_EQ(pen->ColorValue().GetValue(), c.color);
        EXPECT_EQ(pen->GetStartCap(), Gdiplus::LineCapRound);
        const std::unique_ptr<Gdiplus::Pen> hover(legend.GetForePen(1));
        EXPECT_EQ(hover->ColorValue().GetValue(), c.lineStyle == 3 ? 0xFFFFFFFFU : 0xC8B17FFFU);
        const std::unique_ptr<Gdiplus::Pen> casing(legend.GetBackPen(0));
        EXPECT_TRUE(casing->GetDashStyle() == Gdiplus::DashStyleSolid && casing->GetEndCap() == Gdiplus::LineCapRound);
        EXPECT_EQ(casing->GetLineJoin(), Gdiplus::LineJoinRound);
    }
}

TEST_F(LegendTest, AHatchTakesBothColours) {
    CLegend_Polygon legend;
    Fill(legend);
    const std::unique_ptr<Gdiplus::Brush> solid(legend.GetForeBrush(0));
    EXPECT_EQ(solid->GetType(), Gdiplus::BrushTypeSolidColor);
    legend.SetHatchStyle(5);
    for (const int state : {0, 1}) {
        const std::unique_ptr<Gdiplus::Brush> brush(legend.GetForeBrush(state));
        const auto &hatch = dynamic_cast<Gdiplus::HatchBrush &>(*brush);
        EXPECT_EQ(hatch.GetHatchStyle(), 5);
        EXPECT_EQ(hatch.ForegroundValue().GetValue(), state ? 0xC8B17FFFU : 0xC86400FFU);
        EXPECT_EQ(hatch.BackgroundValue().GetValue(), state ? 0xC884898EU : 0xC80A141EU);
        const std::unique_ptr<Gdiplus::Brush> back(legend.GetBackBrush(state));
        EXPECT_EQ(back->GetType(), Gdiplus::BrushTypeSolidColor);
    }
}

}  // namespace
