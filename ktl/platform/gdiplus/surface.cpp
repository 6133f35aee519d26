#include "ktl/platform/gdiplus/surface.h"

namespace ktl::raster {

PixelView ViewOf(cairo_surface_t *surface) {
    PixelView view;
    if (surface == nullptr || cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE) return view;
    const cairo_format_t format = cairo_image_surface_get_format(surface);
    if (format != CAIRO_FORMAT_ARGB32 && format != CAIRO_FORMAT_RGB24) return view;
    cairo_surface_flush(surface);
    view.pixels = reinterpret_cast<std::uint32_t *>(cairo_image_surface_get_data(surface));
    view.width = cairo_image_surface_get_width(surface);
    view.height = cairo_image_surface_get_height(surface);
    view.strideInPixels = cairo_image_surface_get_stride(surface) / 4;
    view.hasAlpha = format == CAIRO_FORMAT_ARGB32;
    return view;
}

}  // namespace ktl::raster
