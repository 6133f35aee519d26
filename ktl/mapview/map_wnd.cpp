#include "ktl/mapview/map_wnd.h"

#include <algorithm>
#include <iterator>

#include "ktl/core/transform.h"
#include "ktl/mapview/view_math.h"
#include "ktl/overlays/shape_operate_cursor.h"
#include "ktl/overlays/shape_operate_snap.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/numeric.h"
#include "ktl/platform/system.h"
#include "ktl/webmap/level.h"

namespace {

constexpr int kMinFixWidth = 8;
constexpr int kMaxFixWidth = 256;
/// Above this level a view is so close that it has no page.
constexpr int kMaxPageLevel = 16;
constexpr Gdiplus::REAL kPageShadow = 3.0F;
/// Sides of the large buffer in windows.
constexpr int kBufferWindows = 3;
constexpr double kWorldLimit = 0.5;

Gdiplus::Color Opaque(COLORREF rgb) {
    Gdiplus::Color color;
    color.SetFromCOLORREF(rgb);
    return color;
}

template <class Object>
void DeleteAndClear(Object *&object) {
    delete object;
    object = nullptr;
}

ktl::ViewSize ClientSize(const CWnd &window) {
    CRect rect;
    window.GetClientRect(&rect);
    return {static_cast<double>(rect.Width()), static_cast<double>(rect.Height())};
}

/// A negative size becomes no rectangle that a bitmap could take.
int BufferSide(int windowSide) {
    return ktl::TruncateToInt(static_cast<double>(kBufferWindows) * windowSide);
}

int HeldWithin(int value, int limit) {
    const int largest = std::max(limit, 0);
    return std::clamp(value, -largest, largest);
}

}  // namespace

CXMapWnd::CXMapWnd()
    : m_strLogo("Kartelo Software"), m_pSnap(new CShape_Operate_Snap), m_pCursor(new CShape_Operate_Cursor) {}

CXMapWnd::~CXMapWnd() {
    DeleteBuffers();
    DeleteAndClear(m_pOverlay);
    DeleteAndClear(m_pSnap);
    DeleteAndClear(m_pCursor);
}

const CRuntimeClass *CXMapWnd::GetThisClass() {
    static const CRuntimeClass record = {"CXMapWnd", sizeof(CXMapWnd), 0xFFFF, nullptr, CWnd::GetThisClass()};
    return &record;
}

const CRuntimeClass *CXMapWnd::GetRuntimeClass() const {
    return GetThisClass();
}

const AFX_MSGMAP *CXMapWnd::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {
        ktl::OnSizeEntry<CXMapWnd, &CXMapWnd::OnSize>(),
        ktl::OnPaintEntry<CXMapWnd, &CXMapWnd::OnPaint>(),
        ktl::OnEraseBkgndEntry<CXMapWnd, &CXMapWnd::OnEraseBkgnd>(),
    };
    static const AFX_MSGMAP map = {CWnd::GetThisMessageMap(), entries, std::size(entries)};
    return &map;
}

const AFX_MSGMAP *CXMapWnd::GetMessageMap() const {
    return GetThisMessageMap();
}

void CXMapWnd::LocateByLB(double, double) {}
void CXMapWnd::OffsetByAfterPan(int, int) {}
void CXMapWnd::DrawLayers(void) {}
void CXMapWnd::DrawPreLevelImage(CLayer *, CArray<__int64, __int64> &, int, CArray<__int64, __int64> &) {}
void CXMapWnd::UpdateBlockState(EXTENT, ENUM_BLOCK_STATE) {}

void CXMapWnd::Serialize(CArchive &archive, int) {
    (void)archive.IsStoring();
}

POINTD CXMapWnd::Client2World(CPoint const &point) const {
    return Client2WorldF(POINTD(static_cast<double>(point.x), static_cast<double>(point.y)));
}

CPoint CXMapWnd::World2Client(POINTD const &point) const {
    const POINTD client = World2ClientF(point);
    return {ktl::TruncateToInt(client.x), ktl::TruncateToInt(client.y)};
}

POINTD CXMapWnd::Client2WorldF(POINTD const &point) const {
    return POINTD(point.x / m_dRatio + m_extent.left, (m_nHeight - point.y) / m_dRatio + m_extent.bottom);
}

POINTD CXMapWnd::World2ClientF(POINTD const &point) const {
    return POINTD((point.x - m_extent.left) * m_dRatio, m_nHeight - (point.y - m_extent.bottom) * m_dRatio);
}

double CXMapWnd::Client2World(double const &length) const {
    return length / m_dRatio;
}

double CXMapWnd::World2Client(double const &length) const {
    return length * m_dRatio;
}

CExtent CXMapWnd::Client2World(CRect const &rect) const {
    const POINTD bottomLeft = Client2World(CPoint(rect.left, rect.bottom));
    const POINTD topRight = Client2World(CPoint(rect.right, rect.top));
    return {bottomLeft.x, bottomLeft.y, topRight.x, topRight.y};
}

void CXMapWnd::World2Client(CExtent &extent) const {
    ::World2Client(m_extent, m_dRatio, extent);
}

LRESULT CXMapWnd::MsgSetModified(WPARAM, LPARAM) {
    m_bModified = 1;
    return 0;
}

int CXMapWnd::InvalidPoint(POINTD const &point) const {
    return point.x >= -kWorldLimit && point.x <= kWorldLimit && point.y >= -kWorldLimit && point.y <= kWorldLimit;
}

int CXMapWnd::InvalidPoint(CPoint const &point) const {
    return InvalidPoint(Client2World(point));
}

void CXMapWnd::EMSetSingleMapFixWidth(int width) {
    m_nFixWidth = std::clamp(width, kMinFixWidth, kMaxFixWidth);
}

void CXMapWnd::EMSetSnaperColor(COLORREF color) {
    m_pSnap->SetColor(color);
}

void CXMapWnd::ClearSnapRect() {
    m_pSnap->SetSnap(0);
}

void CXMapWnd::Offset(int dx, int dy) {
    m_nOffsetX = HeldWithin(dx, m_nWidth);
    m_nOffsetY = HeldWithin(dy, m_nHeight);
    if (m_nOffsetX != 0 || m_nOffsetY != 0) Invalidate(TRUE);
}

void CXMapWnd::OnSize(unsigned int type, int cx, int cy) {
    CWnd::OnSize(type, cx, cy);
    if (cx == 0 || cy == 0) return;
    const CSingleLock lock(&m_csBack, TRUE);
    m_nWidth = cx;
    m_nHeight = cy;
    DeleteBuffers();
    m_pBitmap = new Gdiplus::Bitmap(cx, cy, Gdiplus::PixelFormat32bppARGB);
    m_pBitmap9 = new Gdiplus::Bitmap(BufferSide(cx), BufferSide(cy), Gdiplus::PixelFormat32bppARGB);
    m_pgs = new Gdiplus::Graphics(m_pBitmap);
    m_pgs9 = new Gdiplus::Graphics(m_pBitmap9);
    m_pgs->Clear(Opaque(m_colorBack));
    m_pgs9->Clear(Opaque(m_colorBack));
}

void CXMapWnd::DeleteBuffers() {
    DeleteAndClear(m_pgs);
    DeleteAndClear(m_pBitmap);
    DeleteAndClear(m_pgs9);
    DeleteAndClear(m_pBitmap9);
}

void CXMapWnd::OnPaint(void) {}

int CXMapWnd::OnEraseBkgnd(CDC *) {
    return 1;
}

void CXMapWnd::ClearBack() {
    if (!m_pgs9 || !m_pgs) return;
    const CSingleLock lock(&m_csBack, TRUE);
    if (m_bShowWorkArea == 1 && m_nLevel <= kMaxPageLevel) {
        DrawPage();
    } else {
        m_pgs9->Clear(Opaque(m_colorBack));
    }
}

/// The page lies where the view before the zoom under way has it.
void CXMapWnd::DrawPage() {
    const Gdiplus::Color desk = Opaque(GetSysColor(COLOR_BTNSHADOW));
    m_pgs->Clear(desk);
    m_pgs9->Clear(desk);

    CExtent world(-kWorldLimit, -kWorldLimit, kWorldLimit, kWorldLimit);
    World2Client(world);
    Gdiplus::RectF page(static_cast<Gdiplus::REAL>(world.left), static_cast<Gdiplus::REAL>(world.bottom),
                        static_cast<Gdiplus::REAL>(world.Width()), static_cast<Gdiplus::REAL>(world.Height()));
    page.Offset(static_cast<Gdiplus::REAL>(m_nWidth), static_cast<Gdiplus::REAL>(m_nHeight));
    page.Offset(kPageShadow, kPageShadow);
    const Gdiplus::SolidBrush shadow(Gdiplus::Color(255, 0, 0, 0));
    m_pgs9->FillRectangle(&shadow, page);
    page.Offset(-kPageShadow, -kPageShadow);
    const Gdiplus::SolidBrush paper(Opaque(m_colorBack));
    m_pgs9->FillRectangle(&paper, page);
    const Gdiplus::Pen outline(Gdiplus::Color(255, 0, 0, 0), 1.0F);
    m_pgs9->DrawRectangle(&outline, page);
}

void CXMapWnd::ZoomToExtent(CExtent extent) {
    if (m_nFixWidth > 0) {
        ZoomToExtentFixWidth(extent, m_nFixWidth);
        return;
    }
    ClearBack();
    const ktl::ViewSize size = ClientSize(*this);
    m_dRatio = ktl::FittingRatio(size, extent);
    m_extent = ktl::ExtentAtRatio(size, extent, m_dRatio);
    m_nLevel = ktl::LevelOfRatio(m_dRatio);
    m_extent9 = ktl::NineWindows(m_extent);
}

void CXMapWnd::ZoomToExtentFixWidth(CExtent extent, int fixWidth) {
    if (IsWGS(m_nMapType)) {
        ZoomToExtentFixWidthWGS(extent, fixWidth);
    } else {
        ZoomToExtentFixWidthMEC(extent, fixWidth);
    }
}

/// The degree pyramid has fixed limits; those of the view play no part, which is meant.
void CXMapWnd::ZoomToExtentFixWidthWGS(CExtent extent, int fixWidth) {
    ZoomToTiles(extent, fixWidth, [](double &tileSize) { return KtlGetLevelWGS(tileSize); });
}

void CXMapWnd::ZoomToExtentFixWidthMEC(CExtent extent, int fixWidth) {
    ZoomToTiles(extent, fixWidth, [this](double &tileSize) { return KtlGetLevel(tileSize, m_nMinLevel, m_nMaxLevel); });
}

template <class Snap>
void CXMapWnd::ZoomToTiles(const CExtent &extent, int fixWidth, Snap snap) {
    ClearBack();
    const ktl::ViewSize size = ClientSize(*this);
    double tileSize = ktl::FittingTileSize(size, extent, fixWidth);
    m_nLevel = snap(tileSize);
    m_extent = ktl::ExtentOfTiles(size, extent, fixWidth, tileSize);
    m_dRatio = ktl::FittingRatio(size, m_extent);
    m_extent9 = ktl::NineWindows(m_extent);
}
