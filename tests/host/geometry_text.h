#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "host/map_area.h"

/// Geometry as text for tests: "0 0, 10 0, 10 10" is a path; pieces are joined with " | ".
inline ktl::host::Path PathOf(const std::string &text) {
    ktl::host::Path path;
    std::istringstream stream(text);
    ktl::host::LonLat place;
    char comma = 0;
    while (stream >> place.l >> place.b) {
        path.push_back(place);
        stream >> comma;
    }
    return path;
}

inline std::string TextOf(const ktl::host::Path &path) {
    std::ostringstream stream;
    for (std::size_t i = 0; i < path.size(); ++i) stream << (i == 0 ? "" : ", ") << path[i].l << " " << path[i].b;
    return stream.str();
}

inline std::string TextOf(const std::vector<ktl::host::Path> &pieces) {
    std::string text;
    for (const auto &piece : pieces) text += (text.empty() ? "" : " | ") + TextOf(piece);
    return text;
}
