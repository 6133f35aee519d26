#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <vector>

#include "ktl/platform/gdiplus/gdal_memory.h"
#include "ktl/platform/gdiplus/image_codec.h"

namespace ktl::raster {

namespace {

using namespace Gdiplus;

/// What the samples of a pixel mean, in their order.
enum class Layout { Index, Gray, GrayAlpha, Rgb, Rgba, Cmyk };

/// An opened file and how its samples become pixels.
struct Source {
    GDALDatasetH dataset = nullptr;
    int width = 0;
    int height = 0;
    int samples = 0;
    Layout layout = Layout::Rgb;
    /// 16 bits a sample, of which the upper 8 are used.
    bool isWide = false;
    /// The colours are multiplied by alpha already.
    bool isPremultiplied = false;
    PixelFormat format = PixelFormat24bppRGB;
    std::vector<ARGB> palette;
    /// Pixels by index, or by grey value.
    std::array<std::uint32_t, 256> table{};
};

/// A byte of a header; 0 past the end.
unsigned HeaderByte(std::string_view bytes, std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

const char *StructureItem(GDALMajorObjectH object, const char *name) {
    const char *value = GDALGetMetadataItem(object, name, "IMAGE_STRUCTURE");
    return value ? value : "";
}

/// Bits a pixel of the indexed, grey and BMP forms, where the driver shows bytes whatever the file has.
int BitsPerPixel(const CodecFacts &codec, std::string_view bytes, GDALDatasetH dataset) {
    if (codec.format == ImageFormatPNG) return static_cast<int>(HeaderByte(bytes, 24));
    if (codec.format == ImageFormatBMP) return static_cast<int>(HeaderByte(bytes, 28));
    const int bits = std::atoi(StructureItem(GDALGetRasterBand(dataset, 1), "NBITS"));
    return codec.format == ImageFormatTIFF && bits > 0 ? bits : 8;
}

PixelFormat IndexedFormat(int bits) {
    if (bits == 1) return PixelFormat1bppIndexed;
    return bits <= 4 ? PixelFormat4bppIndexed : PixelFormat8bppIndexed;
}

void ReadColorTable(GDALColorTableH colors, Source &source) {
    const int count = std::min(GDALGetColorEntryCount(colors), 256);
    for (int i = 0; i < count; ++i) {
        const GDALColorEntry *entry = GDALGetColorEntry(colors, i);
        const auto byte = [](short value) { return static_cast<BYTE>(std::clamp<int>(value, 0, 255)); };
        source.palette.push_back(Color::MakeARGB(byte(entry->c4), byte(entry->c1), byte(entry->c2), byte(entry->c3)));
    }
    for (std::size_t i = 0; i < source.palette.size(); ++i) source.table[i] = Premultiply(source.palette[i]);
}

bool HasTransparency(const std::vector<ARGB> &palette) {
    return std::any_of(palette.begin(), palette.end(), [](ARGB color) { return color >> 24 != 255; });
}

void SetGrayTable(int bits, Source &source) {
    const unsigned top = bits >= 8 ? 255U : (1U << bits) - 1;
    for (unsigned value = 0; value < 256; ++value) {
        source.table[value] = 0xFF000000U | std::min(255U, value * 255 / top) * 0x010101U;
    }
}

/// One sample a pixel: an index into colours, or a grey value. Grey PNG files are told as 32-bit ones.
void DescribeSingle(const CodecFacts &codec, int bits, Source &source) {
    GDALRasterBandH band = GDALGetRasterBand(source.dataset, 1);
    if (GDALColorTableH colors = GDALGetRasterColorTable(band)) {
        source.layout = Layout::Index;
        ReadColorTable(colors, source);
        const bool asArgb = codec.format == ImageFormatPNG && HasTransparency(source.palette);
        source.format = asArgb ? PixelFormat32bppARGB : IndexedFormat(bits);
    } else {
        source.layout = Layout::Gray;
        SetGrayTable(bits, source);
        const bool asArgb = codec.format == ImageFormatPNG && bits != 1;
        source.format = asArgb ? PixelFormat32bppARGB : IndexedFormat(bits);
        if (!asArgb) source.palette.assign(source.table.begin(), source.table.begin() + (bits == 1 ? 2 : 256));
    }
    if (!IsIndexedPixelFormat(source.format)) source.palette.clear();
}

void DescribeColor(int bits, bool isBmp, Source &source) {
    const GDALColorInterp first = GDALGetRasterColorInterpretation(GDALGetRasterBand(source.dataset, 1));
    if (source.samples >= 4 && first == GCI_CyanBand) {
        source.layout = Layout::Cmyk;
    } else if (source.samples >= 4) {
        source.layout = Layout::Rgba;
        source.format = PixelFormat32bppARGB;
        const char *alpha = StructureItem(GDALGetRasterBand(source.dataset, 4), "ALPHA");
        source.isPremultiplied = std::strcmp(alpha, "PREMULTIPLIED") == 0;
    } else if (source.samples == 2) {
        source.layout = Layout::GrayAlpha;
        source.format = PixelFormat32bppARGB;
    }
    if (isBmp && bits == 32) source.format = PixelFormat32bppRGB;
    if (isBmp && bits == 16) source.format = PixelFormat16bppRGB555;
    source.samples = std::min(source.samples, 4);
}

/// False for what is no picture of one to four samples a pixel.
bool Describe(const CodecFacts &codec, std::string_view bytes, Source &source) {
    source.width = GDALGetRasterXSize(source.dataset);
    source.height = GDALGetRasterYSize(source.dataset);
    source.samples = GDALGetRasterCount(source.dataset);
    if (source.samples < 1) return false;
    source.isWide = GDALGetRasterDataType(GDALGetRasterBand(source.dataset, 1)) == GDT_UInt16;
    const int bits = BitsPerPixel(codec, bytes, source.dataset);
    if (source.samples == 1) {
        DescribeSingle(codec, source.isWide ? 8 : bits, source);
    } else {
        DescribeColor(bits, codec.format == ImageFormatBMP, source);
    }
    return true;
}

constexpr std::uint32_t Pack(unsigned a, unsigned r, unsigned g, unsigned b) {
    return a << 24 | r << 16 | g << 8 | b;
}

/// Four samples R, G, B, A in place to pixels.
void PutRgbaRow(const Source &source, std::uint32_t *row) {
    if (source.isPremultiplied) {
        ReorderSamples(row, source.width);
    } else {
        PremultiplySamples(row, source.width);
    }
}

/// Three samples R, G, B to opaque pixels. Each is loaded with the byte behind it, but for the last.
void PutRgbRow(const std::uint8_t *in, std::uint32_t *out, int width) {
    for (int x = 0; x + 1 < width; ++x, in += 3) {
        std::uint32_t samples = 0;
        std::memcpy(&samples, in, sizeof(samples));
        out[x] = __builtin_bswap32(samples) >> 8 | 0xFF000000U;
    }
    out[width - 1] = Pack(255, in[0], in[1], in[2]);
}

void PutCmykRow(const std::uint8_t *in, std::uint32_t *out, int width) {
    for (int x = 0; x < width; ++x, in += 4) {
        const auto channel = [&](int i) { return MultiplyByte(255U - in[i], 255U - in[3]); };
        out[x] = Pack(255, channel(0), channel(1), channel(2));
    }
}

/// A row of samples to pixels, from left to right: the samples may lie in the same memory from the pixels' begin on.
void PutRow(const Source &source, const std::uint8_t *in, std::uint32_t *out) {
    switch (source.layout) {
        case Layout::Index:
        case Layout::Gray:
            for (int x = 0; x < source.width; ++x) out[x] = source.table[in[x]];
            break;
        case Layout::GrayAlpha:
            for (int x = 0; x < source.width; ++x, in += 2) out[x] = Premultiply(Pack(in[1], in[0], in[0], in[0]));
            break;
        case Layout::Rgb:
            PutRgbRow(in, out, source.width);
            break;
        case Layout::Rgba:
            std::memmove(out, in, static_cast<std::size_t>(source.width) * 4);
            PutRgbaRow(source, out);
            break;
        case Layout::Cmyk:
            PutCmykRow(in, out, source.width);
            break;
    }
}

/// Reads `rows` rows from `y` on, sample by sample as they lie in most files.
bool ReadSamples(const Source &source, int y, int rows, void *samples) {
    const int bytes = source.isWide ? 2 : 1;
    std::array<int, 4> bands = {1, 2, 3, 4};
    const GSpacing pixel = static_cast<GSpacing>(source.samples) * bytes;
    return GDALDatasetRasterIOEx(source.dataset, GF_Read, 0, y, source.width, rows, samples, source.width, rows,
                                 source.isWide ? GDT_UInt16 : GDT_Byte, source.samples, bands.data(), pixel,
                                 pixel * source.width, bytes, nullptr) == CE_None;
}

/// 16-bit samples in place to 8-bit ones.
void Narrow(std::vector<std::uint8_t> &samples) {
    for (std::size_t i = 0; i < samples.size() / 2; ++i) {
        std::uint16_t wide = 0;
        std::memcpy(&wide, samples.data() + 2 * i, 2);
        samples[i] = static_cast<std::uint8_t>((wide * 255U + 32767U) / 65535U);
    }
}

/// Most bytes of samples that are read at once. A whole picture at once is the drivers' fastest way.
constexpr std::size_t kStripBytes = std::size_t{16} << 20;

bool ReadByStrips(const Source &source, Picture &picture) {
    const std::size_t rowBytes = static_cast<std::size_t>(source.width) * static_cast<std::size_t>(source.samples);
    const std::size_t sampleBytes = source.isWide ? 2 : 1;
    const int most = static_cast<int>(std::max<std::size_t>(1, kStripBytes / (rowBytes * sampleBytes)));
    const int strip = std::min(most, source.height);
    std::vector<std::uint8_t> samples(rowBytes * sampleBytes * static_cast<std::size_t>(strip));
    for (int y = 0; y < source.height; y += strip) {
        const int rows = std::min(strip, source.height - y);
        if (!ReadSamples(source, y, rows, samples.data())) return false;
        if (source.isWide) Narrow(samples);
        for (int i = 0; i < rows; ++i) {
            PutRow(source, samples.data() + rowBytes * static_cast<std::size_t>(i), picture.Row(y + i));
        }
    }
    return true;
}

/// Without memory for the samples: they are read into the end of the picture's own, and pixels made of them from the
/// begin on never reach a sample that is still needed.
bool ReadInPlace(const Source &source, Picture &picture) {
    const std::size_t rowBytes = static_cast<std::size_t>(source.width) * static_cast<std::size_t>(source.samples);
    const auto pixels = static_cast<std::size_t>(source.width) * static_cast<std::size_t>(source.height);
    auto *samples = reinterpret_cast<std::uint8_t *>(picture.Row(0)) + pixels * 4 -
                    rowBytes * static_cast<std::size_t>(source.height);
    if (!ReadSamples(source, 0, source.height, samples)) return false;
    for (int y = 0; y < source.height; ++y, samples += rowBytes) PutRow(source, samples, picture.Row(y));
    return true;
}

bool ReadPixels(const Source &source, Picture &picture) {
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(picture.surface.get()));
    const bool inPlace = !source.isWide && stride == static_cast<std::size_t>(source.width) * 4 &&
                         stride * static_cast<std::size_t>(source.height) <= kStripBytes;
    cairo_surface_flush(picture.surface.get());
    const bool done = inPlace ? ReadInPlace(source, picture) : ReadByStrips(source, picture);
    cairo_surface_mark_dirty(picture.surface.get());
    return done;
}

/// Whether a file of that many bytes can hold that many pixels: no packing of PNG, JPEG, GIF and BMP goes further than
/// about 1 to 5000. (A blank facsimile in TIFF does.)
bool IsPlausible(const CodecFacts &codec, std::size_t fileBytes, const Source &source) {
    constexpr std::uint64_t kUnchecked = std::uint64_t{16} << 20;
    constexpr std::uint64_t kBestRatio = 8192;
    const auto bytes = static_cast<std::uint64_t>(source.width) * static_cast<std::uint64_t>(source.height) * 4;
    return codec.format == ImageFormatTIFF || bytes <= kUnchecked || bytes / kBestRatio <= fileBytes;
}

Status Decode(const CodecFacts &codec, std::string_view bytes, std::unique_ptr<Picture> &picture) {
    const QuietGdal quiet;
    const MemoryFile file(bytes);
    const char *const drivers[] = {codec.driver, codec.format == ImageFormatGIF ? "BIGGIF" : nullptr, nullptr};
    for (const char *const *driver = drivers; *driver; ++driver) NeedDriver(*driver);
    const char *const noSiblings[] = {nullptr};
    const Dataset dataset(
        GDALOpenEx(file.Name().c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, drivers, nullptr, noSiblings));
    Source source;
    source.dataset = dataset.Get();
    if (!dataset || !Describe(codec, bytes, source)) return UnknownImageFormat;
    if (!IsPlausible(codec, bytes.size(), source)) return OutOfMemory;
    std::unique_ptr<Picture> made;
    const Status status = MakePicture(source.width, source.height, source.format, made);
    if (status != Ok) return status;
    if (!ReadPixels(source, *made) || quiet.SawEarlyEnd()) return UnknownImageFormat;
    made->rawFormat = codec.format;
    made->palette = std::move(source.palette);
    picture = std::move(made);
    return Ok;
}

}  // namespace

Status DecodeImage(std::string_view bytes, std::unique_ptr<Picture> &picture) {
    const auto codecs = AllCodecs();
    const auto codec =
        std::find_if(codecs.begin(), codecs.end(), [&](const CodecFacts &c) { return c.Matches(bytes); });
    if (codec == codecs.end()) return UnknownImageFormat;
    if (!codec->driver) return NotImplemented;
    try {
        return Decode(*codec, bytes, picture);
    } catch (const std::bad_alloc &) {
        return OutOfMemory;
    }
}

}  // namespace ktl::raster
