#include "ktl/platform/gdiplus/vector_page.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <utility>

#include "ktl/platform/gdiplus/graphics_state.h"
#include "ktl/platform/gdiplus/startup.h"

namespace ktl {

namespace {

constexpr double kDotsPerInch = 96;
constexpr double kPointsPerPixel = 72 / kDotsPerInch;

cairo_status_t Append(void *bytes, const unsigned char *data, unsigned length) {
    try {
        auto &file = *static_cast<std::vector<BYTE> *>(bytes);
        file.insert(file.end(), data, data + length);
        return CAIRO_STATUS_SUCCESS;
    } catch (const std::exception &) {
        return CAIRO_STATUS_WRITE_ERROR;
    }
}

}  // namespace

struct VectorPage::Data {
    std::vector<BYTE> file;
    raster::SurfacePtr surface;
    std::unique_ptr<Gdiplus::Graphics> graphics;
};

VectorPage::VectorPage(Kind kind, int width, int height) : m_data(std::make_unique<Data>()) {
    if (!raster::DrawingStarted() || width < 1 || height < 1) return;
    const auto create = kind == Kind::Pdf ? cairo_pdf_surface_create_for_stream : cairo_svg_surface_create_for_stream;
    m_data->surface.reset(create(Append, &m_data->file, width * kPointsPerPixel, height * kPointsPerPixel));
    cairo_surface_set_device_scale(m_data->surface.get(), kPointsPerPixel, kPointsPerPixel);
    auto state =
        std::make_unique<Gdiplus::Graphics::State>(m_data->surface.get(), raster::Box{0, 0, width, height},
                                                   static_cast<float>(kDotsPerInch), static_cast<float>(kDotsPerInch));
    m_data->graphics = std::make_unique<Gdiplus::Graphics>(std::move(state));
}

VectorPage::~VectorPage() = default;

Gdiplus::Graphics *VectorPage::GetGraphics() const {
    return m_data->graphics.get();
}

std::vector<BYTE> VectorPage::Finish() {
    if (!m_data->graphics) return {};
    m_data->graphics.reset();
    cairo_surface_finish(m_data->surface.get());
    const bool isWritten = cairo_surface_status(m_data->surface.get()) == CAIRO_STATUS_SUCCESS;
    m_data->surface.reset();
    std::vector<BYTE> file = std::exchange(m_data->file, {});
    if (!isWritten) file.clear();
    return file;
}

}  // namespace ktl
