// A first map: an island and its chief town in a window off the screen, saved as a picture.
#include <ktl/ktl.h>

struct Drawing {
    ULONG_PTR token = 0;
    Gdiplus::GdiplusStartupInput input;
    Drawing() { Gdiplus::GdiplusStartup(&token, &input, nullptr); }
    ~Drawing() { Gdiplus::GdiplusShutdown(token); }
};

struct FirstMap : CXMapWnd {
    CShape_Polygon island;
    CLegend_Polygon land;
    CShape_Point town;
    CLegend_Point dot;
    FirstMap() { m_nMapType = ENUM_MAP_TYPE(0); }
    void DrawLayers() override {
        island.Draw(Getpgs(), &land, GetRatio(), GetCurDataExtent(), 0, 0, 0);
        town.Draw(Getpgs(), &dot, GetRatio(), GetCurDataExtent(), 0, 0, 0);
    }
    void Save(const char *file) { SaveBitmapToPng(m_pBitmap, file); }
};

int main() {
    constexpr double kHainan[][2] = {{108.7, 19.2}, {109.2, 19.9}, {109.7, 20.0}, {110.5, 20.1}, {111.0, 19.7},
                                     {110.5, 18.8}, {110.0, 18.4}, {109.5, 18.2}, {108.7, 18.5}};
    Drawing drawing;
    FirstMap map;
    for (const auto &[l, b] : kHainan) map.island.AddPoint(CPointD(KtlGetX(l), KtlGetY(b)));
    map.land.SetForeColor(RGB(200, 220, 190));
    map.town.SetPoint(KtlGetX(110.33), KtlGetY(20.03));
    map.dot.SetForeColor(RGB(200, 40, 40));
    map.dot.SetSize(12);
    map.MoveWindow(0, 0, 800, 600);
    map.ZoomToExtent(map.island.GetExtent() + CExtent(KtlGetX(108), KtlGetY(17.5), KtlGetX(111.7), KtlGetY(20.7)));
    map.DrawLayers();
    map.Save("first_map.png");
}
