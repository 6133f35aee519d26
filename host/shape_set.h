#pragma once

#include <memory>
#include <vector>

#include "host/ogr_source.h"
#include "host/style.h"
#include "ktl/core/extent.h"
#include "ktl/layers/tree.h"
#include "ktl/platform/gdiplus/forward.h"

class CShape_Object;

namespace ktl::host {

/// World coordinates of a map: normalised or degrees.
enum class WorldUnits { kNormalised, kDegrees };

/// What the map of these units can show.
const MapArea &AreaOf(WorldUnits units);
/// World coordinates of a place and of an extent given by its west, south, east and north, and back.
CPointD WorldFromDegrees(LonLat place, WorldUnits units);
CExtent WorldFromDegrees(const CExtent &degrees, WorldUnits units);
CExtent DegreesFromWorld(const CExtent &world, WorldUnits units);
/// Web Mercator metres from normalised coordinates, as exported world files have them.
CExtent MetresFromWorld(const CExtent &world);

/// The shapes of one source with the legends that draw them. Areas lie under lines, lines under points; within a kind
/// the source's order holds. Fill it as a sink, call `BuildIndex`, then draw it as often as wanted.
///
/// A shape has one ring. An area with holes becomes one ring that runs from hole to hole along bridges of no width,
/// which the even-odd fill leaves no trace of, and its outline is drawn ring by ring as shapes without fill.
class ShapeSet : public GeometrySink {
  public:
    ShapeSet(const Style &style, WorldUnits units);
    ShapeSet(const ShapeSet &) = delete;
    ShapeSet &operator=(const ShapeSet &) = delete;
    ~ShapeSet() override;

    void AddPoint(LonLat point) override;
    void AddLine(Path &&line) override;
    void AddArea(std::vector<Path> &&rings) override;
    /// Puts the shapes in their order and indexes them. Called once, after the last shape.
    void BuildIndex();

    bool IsEmpty() const { return m_items.empty(); }
    /// The extent of all shapes; all 0 while there are none.
    const CExtent &GetExtent() const { return m_extent; }

    /// Draws what meets the view and returns the number of shapes drawn; an area with holes counts as one. Stops with
    /// `Interrupted` when the callback says so.
    long long Draw(Gdiplus::Graphics &graphics, double ratio, const CExtent &view, const ProgressCallback &progress);

  private:
    enum Kind { kAreas, kLines, kPoints, kKindCount };
    struct Item {
        std::unique_ptr<CShape_Object> shape;
        CLegend *legend;
        bool counts;
    };

    void AddItem(Kind kind, std::unique_ptr<CShape_Object> shape, CLegend &legend, bool counts = true);
    CPointD World(LonLat place) const { return WorldFromDegrees(place, m_units); }
    std::unique_ptr<CShape_Object> MakePolygon(const Path &ring) const;
    double MarginPixels();

    const Style m_style;
    const WorldUnits m_units;
    StyleLegends m_legends;
    std::vector<Item> m_byKind[kKindCount];
    std::vector<Item> m_items;
    CExtent m_extent;
    CTree m_tree;
};

}  // namespace ktl::host
