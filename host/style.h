#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ktl/legends/legend_point.h"
#include "ktl/legends/legend_polygon.h"
#include "ktl/legends/legend_polyline.h"
#include "ktl/platform/types.h"

namespace ktl::host {

/// How the shapes of one source look. An empty colour draws nothing.
struct Style {
    std::optional<COLORREF> fill = RGB(0xEF, 0xEB, 0xE1);
    std::optional<COLORREF> line = RGB(0x5B, 0x6F, 0x85);
    std::optional<COLORREF> point = RGB(0xC0, 0x39, 0x2B);
    std::optional<COLORREF> pointLine = RGB(0xFF, 0xFF, 0xFF);
    std::optional<COLORREF> casing;              ///< around cased lines; without one white, or `line` for style 3
    COLORREF hatchBack = RGB(0xFF, 0xFF, 0xFF);  ///< between the lines of a hatch
    short alpha = 255;                           ///< 0 to 255, for all of the above
    short lineWidth = 1;                         ///< 1 to 64 pixels
    short pointSize = 5;                         ///< 1 to 64 pixels
    int lineStyle = 1;                           ///< 1 plain, 2 cased, 3 white dashes in a casing, 4 dashed
    int dashStyle = 0;                           ///< the pen's dash style under line style 4; 5 takes `dashes`
    std::vector<float> dashes;                   ///< dash and gap lengths in line widths
    short hatch = -1;                            ///< -1 solid, or a hatch number of the drawing layer, 0 to 52
    std::string symbol;                          ///< a .png or .gif file (UTF-8) drawn at points instead of a disc
};

/// The hatch's number from its name ("Cross", "DiagonalBrick", in any case) or number; empty for neither.
std::optional<short> ParseHatch(std::string_view text);
/// All hatch names in the order of their numbers.
const std::vector<std::string_view> &HatchNames();
/// Sets line style and dash style from a name: "solid", "cased", "rail", "dash", "dot", "dashdot", "dashdotdot". False
/// for any other.
bool SetLineStyleByName(Style &style, std::string_view name);

/// Symbology of areas whose outline has a colour and width of its own and can be left out, as can the fill.
class AreaLegend : public CLegend_Polygon {
  public:
    AreaLegend(const Style &style, bool filled, bool outlined);

    Gdiplus::Pen *GetBackPen(int state) override;
    Gdiplus::Brush *GetForeBrush(int state) override;

  private:
    bool m_filled;
    std::optional<COLORREF> m_line;
};

/// The legends that draw one style.
class StyleLegends {
  public:
    /// Throws `Error` for a symbol that can't be loaded.
    explicit StyleLegends(const Style &style);

    CLegend_Point point;
    CLegend_Polyline line;
    AreaLegend area;         ///< fill and outline
    AreaLegend fillOnly;     ///< for an area with holes, whose one ring runs along bridges
    AreaLegend outlineOnly;  ///< for each ring of such an area
};

}  // namespace ktl::host
