#include <array>
#include <cstring>
#include <new>
#include <unordered_map>
#include <vector>

#include "ktl/platform/gdiplus/gdal_memory.h"
#include "ktl/platform/gdiplus/image_codec.h"

namespace ktl::raster {

namespace {

using namespace Gdiplus;

std::size_t PixelCount(const Picture &picture) {
    return static_cast<std::size_t>(picture.Width()) * static_cast<std::size_t>(picture.Height());
}

void PutSamples(const std::uint32_t *row, int width, bool hasAlpha, int bands, std::uint8_t *out) {
    for (int x = 0; x < width; ++x, out += bands) {
        const ARGB color = ColorOf(row[x], hasAlpha);
        out[0] = static_cast<std::uint8_t>(color >> 16);
        out[1] = static_cast<std::uint8_t>(color >> 8);
        out[2] = static_cast<std::uint8_t>(color);
        if (bands == 4) out[3] = static_cast<std::uint8_t>(color >> 24);
    }
}

/// Straight colours as `bands` samples a pixel, R, G, B and, with four, A. Without alpha the colour bytes stay as they
/// are: nothing is mixed in.
std::vector<std::uint8_t> Samples(const Picture &picture, int bands) {
    const int width = picture.Width();
    const std::size_t rowBytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(bands);
    std::vector<std::uint8_t> samples(PixelCount(picture) * static_cast<std::size_t>(bands));
    std::uint8_t *out = samples.data();
    for (int y = 0; y < picture.Height(); ++y, out += rowBytes) {
        PutSamples(picture.Row(y), width, picture.HasAlpha(), bands, out);
    }
    return samples;
}

/// Indexes into a palette.
struct Indexed {
    std::vector<std::uint8_t> indexes;
    std::vector<ARGB> palette;
};

/// By the picture's own palette; false when it has none, or a pixel is not in it.
bool IndexByOwnPalette(const Picture &picture, Indexed &indexed) {
    if (picture.palette.empty()) return false;
    std::unordered_map<std::uint32_t, std::uint8_t> places;
    for (std::size_t i = 0; i < picture.palette.size(); ++i) {
        places.emplace(Premultiply(picture.palette[i]), static_cast<std::uint8_t>(i));
    }
    indexed.palette = picture.palette;
    indexed.indexes.reserve(PixelCount(picture));
    for (int y = 0; y < picture.Height(); ++y) {
        const std::uint32_t *row = picture.Row(y);
        for (int x = 0; x < picture.Width(); ++x) {
            const auto place = places.find(row[x]);
            if (place == places.end()) return false;
            indexed.indexes.push_back(place->second);
        }
    }
    return true;
}

/// The order in which the pixels of an 8 by 8 cell go up to the next step.
constexpr std::array<std::array<std::uint8_t, 8>, 8> kDither = {{{0, 32, 8, 40, 2, 34, 10, 42},
                                                                 {48, 16, 56, 24, 50, 18, 58, 26},
                                                                 {12, 44, 4, 36, 14, 46, 6, 38},
                                                                 {60, 28, 52, 20, 62, 30, 54, 22},
                                                                 {3, 35, 11, 43, 1, 33, 9, 41},
                                                                 {51, 19, 59, 27, 49, 17, 57, 25},
                                                                 {15, 47, 7, 39, 13, 45, 5, 37},
                                                                 {63, 31, 55, 23, 61, 29, 53, 21}}};
constexpr std::uint8_t kHalftoneTransparent = 16;
constexpr std::size_t kHalftoneBasic = 16;
constexpr unsigned kHalftoneCube = 40;

/// The step of the cube, 0 to 5, that stands for a channel's value at a pixel; a value that is a step keeps it.
unsigned DitheredStep(unsigned value, int x, int y) {
    const unsigned place = kDither[static_cast<std::size_t>(y & 7)][static_cast<std::size_t>(x & 7)];
    return value / 51 + (value % 51 * 64 > place * 51 + 25 ? 1 : 0);
}

std::uint8_t HalftoneIndex(ARGB color, int x, int y, const std::vector<ARGB> &palette) {
    if (color >> 24 < 128) return kHalftoneTransparent;
    for (std::size_t i = 0; i < kHalftoneBasic; ++i) {
        if ((palette[i] & 0xFFFFFFU) == (color & 0xFFFFFFU)) return static_cast<std::uint8_t>(i);
    }
    const unsigned red = DitheredStep(color >> 16 & 0xFF, x, y);
    const unsigned green = DitheredStep(color >> 8 & 0xFF, x, y);
    const unsigned blue = DitheredStep(color & 0xFF, x, y);
    return static_cast<std::uint8_t>(kHalftoneCube + red * 36 + green * 6 + blue);
}

void IndexByHalftone(const Picture &picture, Indexed &indexed) {
    indexed.palette = DefaultPalette(PixelFormat8bppIndexed);
    indexed.indexes.clear();
    indexed.indexes.reserve(PixelCount(picture));
    for (int y = 0; y < picture.Height(); ++y) {
        const std::uint32_t *row = picture.Row(y);
        for (int x = 0; x < picture.Width(); ++x) {
            const ARGB color = ColorOf(row[x], picture.HasAlpha());
            indexed.indexes.push_back(HalftoneIndex(color, x, y, indexed.palette));
        }
    }
}

/// The first colour of a palette that is fully transparent, of those that are used; -1 when there is none.
int TransparentIndex(const Indexed &indexed) {
    std::array<bool, 256> used{};
    for (const std::uint8_t index : indexed.indexes) used[index] = true;
    for (std::size_t i = 0; i < indexed.palette.size(); ++i) {
        if (used[i] && indexed.palette[i] >> 24 == 0) return static_cast<int>(i);
    }
    return -1;
}

bool WriteFile(const CodecFacts &codec, GDALDatasetH dataset, const CPLStringList &options, std::string &bytes) {
    GDALDriverH driver = NeedDriver(codec.driver);
    if (!driver || !dataset) return false;
    const MemoryFile file;
    {
        const Dataset written(
            GDALCreateCopy(driver, file.Name().c_str(), dataset, FALSE, options.List(), nullptr, nullptr));
        if (!written) return false;
    }
    bytes.assign(file.Content());
    return !bytes.empty();
}

bool WriteIndexed(const Picture &picture, const CodecFacts &codec, const CPLStringList &options, Indexed &indexed,
                  std::string &bytes) {
    const Dataset dataset(WrapPixels(indexed.indexes.data(), picture.Width(), picture.Height(), 1, 1));
    if (!dataset) return false;
    GDALRasterBandH band = GDALGetRasterBand(dataset.Get(), 1);
    GDALColorTableH colors = GDALCreateColorTable(GPI_RGB);
    for (std::size_t i = 0; i < indexed.palette.size(); ++i) {
        const Color color(indexed.palette[i]);
        const GDALColorEntry entry = {color.GetRed(), color.GetGreen(), color.GetBlue(), color.GetAlpha()};
        GDALSetColorEntry(colors, static_cast<int>(i), &entry);
    }
    GDALSetRasterColorTable(band, colors);
    GDALDestroyColorTable(colors);
    const int transparent = TransparentIndex(indexed);
    if (codec.format == ImageFormatGIF && transparent >= 0) GDALSetRasterNoDataValue(band, transparent);
    return WriteFile(codec, dataset.Get(), options, bytes);
}

bool WriteColor(const Picture &picture, const CodecFacts &codec, const CPLStringList &options, int bands,
                std::string &bytes) {
    std::vector<std::uint8_t> samples = Samples(picture, bands);
    const Dataset dataset(WrapPixels(samples.data(), picture.Width(), picture.Height(), bands, bands));
    if (!dataset) return false;
    constexpr GDALColorInterp kMeanings[] = {GCI_RedBand, GCI_GreenBand, GCI_BlueBand, GCI_AlphaBand};
    for (int i = 0; i < bands; ++i) {
        GDALSetRasterColorInterpretation(GDALGetRasterBand(dataset.Get(), i + 1), kMeanings[i]);
    }
    return WriteFile(codec, dataset.Get(), options, bytes);
}

void Append(std::string &bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

/// A bitmap file of 32 bits a pixel, which the driver can't write: two headers, then the rows from the lowest up.
void WriteBmp32(const Picture &picture, std::string &bytes) {
    constexpr std::uint32_t kHeaders = 54;
    constexpr std::uint32_t kPixelsPerMeter = 3780;
    const auto pixelBytes = static_cast<std::uint32_t>(PixelCount(picture) * 4);
    bytes = "BM";
    bytes.reserve(kHeaders + pixelBytes);
    for (const std::uint32_t value : {kHeaders + pixelBytes, 0U, kHeaders, 40U}) Append(bytes, value, 4);
    Append(bytes, static_cast<std::uint32_t>(picture.Width()), 4);
    Append(bytes, static_cast<std::uint32_t>(picture.Height()), 4);
    Append(bytes, 1, 2);
    Append(bytes, 32, 2);
    for (const std::uint32_t value : {0U, pixelBytes, kPixelsPerMeter, kPixelsPerMeter, 0U, 0U})
        Append(bytes, value, 4);
    for (int y = picture.Height() - 1; y >= 0; --y) {
        const std::uint32_t *row = picture.Row(y);
        for (int x = 0; x < picture.Width(); ++x) Append(bytes, ColorOf(row[x], picture.HasAlpha()), 4);
    }
}

CPLStringList OptionsOf(const CodecFacts &codec, const EncodeSettings &settings) {
    CPLStringList options;
    if (codec.format == ImageFormatJPEG) {
        options.SetNameValue("QUALITY", std::to_string(settings.jpegQuality).c_str());
    } else if (codec.format == ImageFormatTIFF && settings.tiffLzw) {
        options.SetNameValue("COMPRESS", "LZW");
    }
    return options;
}

bool Encode(const Picture &picture, const CodecFacts &codec, const EncodeSettings &settings, std::string &bytes) {
    const CPLStringList options = OptionsOf(codec, settings);
    Indexed indexed;
    if (codec.format == ImageFormatJPEG) return WriteColor(picture, codec, options, 3, bytes);
    if (IndexByOwnPalette(picture, indexed)) return WriteIndexed(picture, codec, options, indexed, bytes);
    if (codec.format == ImageFormatGIF) {
        IndexByHalftone(picture, indexed);
        return WriteIndexed(picture, codec, options, indexed, bytes);
    }
    const bool is32 = GetPixelFormatSize(picture.format) == 32 || picture.HasAlpha();
    if (is32 && codec.format == ImageFormatBMP) {
        WriteBmp32(picture, bytes);
        return true;
    }
    return WriteColor(picture, codec, options, is32 ? 4 : 3, bytes);
}

}  // namespace

Status EncodeImage(const Picture &picture, const CodecFacts &codec, const EncodeSettings &settings,
                   std::string &bytes) {
    const QuietGdal quiet;
    try {
        cairo_surface_flush(picture.surface.get());
        return Encode(picture, codec, settings, bytes) ? Ok : GenericError;
    } catch (const std::bad_alloc &) {
        return OutOfMemory;
    }
}

}  // namespace ktl::raster
