#pragma once

#include "ktl/core/extent.h"
#include "ktl/core/point.h"
#include "ktl/platform/array.h"
#include "ktl/platform/critical_section.h"
#include "ktl/platform/gdiplus/forward.h"
#include "ktl/platform/string.h"
#include "ktl/platform/window.h"
#include "ktl/webmap/block_state.h"
#include "ktl/webmap/map_type.h"

class CArchive;
class CLayer;
class CShape_Operate_Cursor;
class CShape_Operate_Snap;

/// Base of every map window. It holds what is shown (extent, scale, level, pan offset) and the back buffers, and
/// decides how a wished extent becomes a level and a scale. It knows neither layers nor shapes and draws nothing: a
/// host derives from it, fills the empty hooks and maps WM_PAINT to a handler of its own. Nothing here repaints but
/// `Offset`.
///
///     class CMapView : public CXMapWnd {
///       public:
///         CMapView() { m_nMapType = kStreets; }
///         void DrawLayers(void) override { roads.Draw(Getpgs(), &legend, GetRatio(), GetCurDataExtent(), 0, 0, 0); }
///     };
///     CMapView view;                              // drawing must have been started
///     view.MoveWindow(0, 0, 1024, 768);           // WM_SIZE makes the buffers
///     view.ZoomToExtent(CExtent(-0.5, -0.5, 0.5, 0.5));
///     view.DrawLayers();
///
/// World coordinates run from -0.5 to 0.5, or are degrees for a map type that is WGS. The view belongs to its window's
/// thread; another thread that draws into the buffers takes `m_csBack`.
class KTL_API CXMapWnd : public CWnd {
  public:
    /// Makes the two overlays of the view.
    CXMapWnd();
    ~CXMapWnd() override;

    static const CRuntimeClass *GetThisClass();
    const CRuntimeClass *GetRuntimeClass() const override;
    using CWnd::Serialize;

    // Hooks for the host; empty unless told otherwise.

    /// A longitude and a latitude in degrees.
    virtual void LocateByLB(double longitude, double latitude);
    /// Pixels.
    virtual void OffsetByAfterPan(int dx, int dy);
    virtual void DrawLayers(void);

  protected:
    /// The layer is borrowed; the keys are those of tiles.
    virtual void DrawPreLevelImage(CLayer *layer, CArray<__int64, __int64> &keys, int level,
                                   CArray<__int64, __int64> &preLevelKeys);

  public:
    virtual void UpdateBlockState(EXTENT extent, ENUM_BLOCK_STATE state);
    /// Shows `extent`, or what of it fits: the scale snaps to the pyramid level whose tile is no larger than wished, so
    /// that the centre is kept and edges may fall outside. With `m_nFixWidth` of 0 or less the scale is free and the
    /// whole extent is shown. Clears the buffers and does not repaint.
    virtual void ZoomToExtent(CExtent extent);
    /// The view is no part of a document: stores nothing.
    virtual void Serialize(CArchive &archive, int version);

    // World and client coordinates. Integer results are cut toward zero, and the client's y starts at the top.

    POINTD Client2World(CPoint const &point) const;
    CPoint World2Client(POINTD const &point) const;
    POINTD Client2WorldF(POINTD const &point) const;
    POINTD World2ClientF(POINTD const &point) const;
    /// Lengths.
    double Client2World(double const &length) const;
    double World2Client(double const &length) const;
    CExtent Client2World(CRect const &rect) const;
    /// In place; the smaller client y goes to `bottom`. The height is that of the extent shown, not the window's.
    void World2Client(CExtent &extent) const;

    CExtent GetCurDataExtent() const { return m_extent; }
    /// Pixels a world unit; 1.0 before the first zoom.
    double GetRatio() const { return m_dRatio; }
    int GetWindowWidth() const { return m_nWidth; }
    int GetWindowHeight() const { return m_nHeight; }
    /// (0, 0, width, height). Hides the operation of `CWnd`.
    CRect GetWindowRect() const { return {0, 0, m_nWidth, m_nHeight}; }
    /// Null until the window has a size; they stay the view's and change with every size.
    Gdiplus::Graphics *Getpgs() const { return m_pgs; }
    Gdiplus::Graphics *Getpgs9() const { return m_pgs9; }

    void SetModifyFlag() { m_bModified = 1; }
    /// Nothing here clears the flag; the host does, on the member.
    int GetModifyFlag() const { return m_bModified; }
    /// Sets the modify flag. The host maps its own message to it.
    LRESULT MsgSetModified(WPARAM wParam, LPARAM lParam);

    /// 1 when the point is good: in the square from -0.5 to 0.5, whatever the map type.
    int InvalidPoint(POINTD const &point) const;
    int InvalidPoint(CPoint const &point) const;

    void EMSetLogo(CString logo) { m_strLogo = logo; }
    void EMShowWorkArea(int show) { m_bShowWorkArea = show; }
    void EMSewImageLayer(int sew) { m_bSewImageLayer = sew; }
    /// Tile width in pixels that zooming snaps to, held in 8 to 256. It counts from the next zoom on.
    void EMSetSingleMapFixWidth(int width);
    void EMSetSnaperColor(COLORREF color);
    void ClearSnapRect();

    /// The place of the map against the window during a pan, in pixels, each held within one window. It replaces the
    /// offset before it and leaves the extent alone. Asks for painting unless it is (0, 0).
    void Offset(int dx, int dy);

  protected:
    const AFX_MSGMAP *GetMessageMap() const override;
    static const AFX_MSGMAP *GetThisMessageMap();

    /// Makes the buffers anew for a size without a zero, filled with the background colour. A buffer that is too large
    /// to be made stays unusable, and drawing on it does nothing. The extent and the scale stay.
    void OnSize(unsigned int type, int cx, int cy);
    /// Empty: the host maps WM_PAINT to its own handler.
    void OnPaint(void);
    /// 1 and nothing erased, so that a resize does not flash.
    int OnEraseBkgnd(CDC *dc);

    /// Fills the large buffer with the background, or both with the page when the work area is shown and the level is
    /// 16 or less. Nothing happens before the first size.
    void ClearBack();

    /// Client size; the last that was not zero.
    int m_nWidth = 0;
    int m_nHeight = 0;
    CString m_strLogo;
    /// 1 shows the map's square as a page.
    int m_bShowWorkArea = 0;
    int m_bSewImageLayer = 1;
    int m_nFixWidth = 256;
    /// Owned: the window's buffer, the one of three by three windows, and what draws on each.
    Gdiplus::Bitmap *m_pBitmap = nullptr;
    Gdiplus::Graphics *m_pgs = nullptr;
    Gdiplus::Bitmap *m_pBitmap9 = nullptr;
    Gdiplus::Graphics *m_pgs9 = nullptr;
    /// 0 until the first zoom.
    short m_nLevel = 0;
    /// Limits of zooming on a map that is not WGS.
    short m_nMinLevel = 1;
    short m_nMaxLevel = 22;
    /// What the window shows, and what the large buffer shows.
    CExtent m_extent{-0.5, -0.5, 0.5, 0.5};
    CExtent m_extent9;
    double m_dRatio = 1.0;
    int m_nOffsetX = 0;
    int m_nOffsetY = 0;
    COLORREF m_colorBack = 0xFAF3F3;
    int m_bModified = 0;
    /// The host gives it a value before the first zoom.
    ENUM_MAP_TYPE m_nMapType{};
    /// Owned: the host's tool overlay or null, and the two overlays of the view.
    CObject *m_pOverlay = nullptr;
    CShape_Operate_Snap *m_pSnap = nullptr;
    CShape_Operate_Cursor *m_pCursor = nullptr;
    /// Held around every use of the buffers.
    CCriticalSection m_csBack;
    /// The host's; nothing here takes it.
    CCriticalSection m_csHost;

    /// State of the host's tools and painting, which the base class only sets up: the tool at work and the one before
    /// it, where the pointer went down in pixels and in the world, and switches.
    int m_nTool = 2;
    int m_nLastTool = 2;
    int m_nDownX = 0;
    int m_nDownY = 0;
    POINTD m_ptDown;
    int m_bMouseDown = 0;
    int m_bPanning = 0;
    int m_bSnapping = 0;
    int m_bShowLabels = 1;
    int m_bShowGrid = 0;
    int m_bRedrawAll = 0;

  private:
    void ZoomToExtentFixWidth(CExtent extent, int fixWidth);
    void ZoomToExtentFixWidthWGS(CExtent extent, int fixWidth);
    void ZoomToExtentFixWidthMEC(CExtent extent, int fixWidth);
    template <class Snap>
    void ZoomToTiles(const CExtent &extent, int fixWidth, Snap snap);
    void DrawPage();
    void DeleteBuffers();
};
