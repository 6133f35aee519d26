#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "ktl/shapes/shape_polygon.h"
#include "ktl/shapes/shape_polyline.h"

/// \file
/// Geometry as text: "0 0, 1 0, 1 1".

namespace ktl_test {

inline std::vector<CPointD> Points(const std::string &text) {
    std::vector<CPointD> points;
    std::istringstream list(text);
    for (std::string pair; std::getline(list, pair, ',');) {
        std::istringstream numbers(pair);
        double x = 0.0;
        double y = 0.0;
        if (numbers >> x >> y) points.emplace_back(x, y);
    }
    return points;
}

template <class Shape>
Shape Make(const std::string &text) {
    Shape shape;
    for (const CPointD &point : Points(text)) shape.AddPoint(point);
    return shape;
}
inline CShape_Polyline Line(const std::string &text) {
    return Make<CShape_Polyline>(text);
}
inline CShape_Polygon Area(const std::string &text) {
    return Make<CShape_Polygon>(text);
}

inline CExtent Box(double left, double bottom, double right, double top) {
    return CExtent(left, bottom, right, top);
}

template <class Array>
std::string TextOf(const Array &points) {
    std::ostringstream text;
    for (const auto &point : points) text << (text.tellp() > 0 ? ", " : "") << point.x << ' ' << point.y;
    return text.str();
}
inline std::string TextOf(const CExtent &e) {
    std::ostringstream text;
    text << e.left << ' ' << e.bottom << ' ' << e.right << ' ' << e.top;
    return text.str();
}

}  // namespace ktl_test
