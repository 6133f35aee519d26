#pragma once

#include <string>
#include <vector>

#include "host/ogr_source.h"
#include "tests/host/geometry_text.h"

/// Keeps what a source hands out, as text: "point 1 2", "line 0 0, 1 1", "area RING | RING".
class RecordingSink : public ktl::host::GeometrySink {
  public:
    void AddPoint(ktl::host::LonLat point) override { pieces.push_back("point " + TextOf(ktl::host::Path{point})); }
    void AddLine(ktl::host::Path &&line) override { pieces.push_back("line " + TextOf(line)); }
    void AddArea(std::vector<ktl::host::Path> &&rings) override { pieces.push_back("area " + TextOf(rings)); }

    std::vector<std::string> pieces;
};
