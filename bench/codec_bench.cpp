// Tiles of 256 by 256 pixels to and from files in memory, against libpng and libjpeg called directly with their default
// settings. Both sides start from and end with 32-bit pixels; ours are premultiplied on the way, which the peers spare.
#include <benchmark/benchmark.h>
#include <png.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

// Needs the names of <cstdio>.
#include <jpeglib.h>

#include "bench/ratio_reporter.h"
#include "ktl/imaging/bitmap_tools.h"
#include "ktl/platform/gdiplus/gdiplus.h"

namespace {

constexpr int kSide = 256;
constexpr int kStride = kSide * 4;
using Pixels = std::vector<unsigned char>;

/// Straight B, G, R, A: a map of few colours with lines; a picture with noise; the map half transparent.
Pixels MakeTile(bool isPhoto, bool isOpaque) {
    Pixels pixels(static_cast<std::size_t>(kStride) * kSide);
    unsigned seed = 7;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            seed = seed * 1664525U + 1013904223U;
            unsigned char *pixel = &pixels[static_cast<std::size_t>(y * kStride + x * 4)];
            const double wave = std::sin(x * 0.05) * std::cos(y * 0.04);
            const bool onLine = (x / 7 + y / 11) % 9 == 0;
            const int level = static_cast<int>(wave * 60) + 128;
            const int noise = isPhoto ? static_cast<int>(seed >> 27) : 0;
            const int step = isPhoto ? level : level & 0xE0;
            pixel[0] = static_cast<unsigned char>(onLine ? 250 : 255 - step);
            pixel[1] = static_cast<unsigned char>(onLine ? 250 : step * 4 / 5 + noise);
            pixel[2] = static_cast<unsigned char>(onLine ? 250 : step + noise);
            pixel[3] = static_cast<unsigned char>(isOpaque || onLine ? 255 : wave > 0 ? 128 : 0);
        }
    }
    return pixels;
}

std::unique_ptr<Gdiplus::Bitmap> BitmapOf(const Pixels &tile, Gdiplus::PixelFormat format) {
    Gdiplus::Bitmap whole(kSide, kSide, kStride, Gdiplus::PixelFormat32bppARGB, tile.data());
    return std::unique_ptr<Gdiplus::Bitmap>(whole.Clone(0, 0, kSide, kSide, format));
}

std::string EncodeOurs(Gdiplus::Bitmap &bitmap, const char *format) {
    unsigned int size = 0;
    unsigned char *buffer = CreateBufferFromBitmap(&bitmap, size, format);
    std::string bytes(reinterpret_cast<char *>(buffer), size);
    std::free(buffer);
    return bytes;
}

std::string EncodePng(const Pixels &tile) {
    std::string bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &bytes,
        [](png_structp p, png_bytep data, std::size_t size) {
            static_cast<std::string *>(png_get_io_ptr(p))->append(reinterpret_cast<char *>(data), size);
        },
        [](png_structp) {});
    png_set_IHDR(png, info, kSide, kSide, 8, PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_set_bgr(png);
    for (int y = 0; y < kSide; ++y) png_write_row(png, tile.data() + static_cast<std::ptrdiff_t>(y) * kStride);
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return bytes;
}

struct Reader {
    const std::string *bytes;
    std::size_t at;
};

void DecodePng(const std::string &bytes, Pixels &tile) {
    Reader reader{&bytes, 0};
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_read_fn(png, &reader, [](png_structp p, png_bytep data, std::size_t size) {
        auto *from = static_cast<Reader *>(png_get_io_ptr(p));
        std::memcpy(data, from->bytes->data() + from->at, size);
        from->at += size;
    });
    png_read_info(png, info);
    png_set_bgr(png);
    for (int y = 0; y < kSide; ++y) png_read_row(png, tile.data() + static_cast<std::ptrdiff_t>(y) * kStride, nullptr);
    png_read_end(png, info);
    png_destroy_read_struct(&png, &info, nullptr);
}

std::string EncodeJpeg(const Pixels &tile) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char *buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &buffer, &size);
    jpeg.image_width = kSide;
    jpeg.image_height = kSide;
    jpeg.input_components = 4;
    jpeg.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 75, TRUE);
    // As our side writes it: smaller files at twice the time.
    jpeg.optimize_coding = TRUE;
    jpeg_start_compress(&jpeg, TRUE);
    for (int y = 0; y < kSide; ++y) {
        auto *row = const_cast<unsigned char *>(tile.data() + static_cast<std::ptrdiff_t>(y) * kStride);
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::string bytes(reinterpret_cast<char *>(buffer), size);
    std::free(buffer);
    return bytes;
}

void DecodeJpeg(const std::string &bytes, Pixels &tile) {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size());
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = JCS_EXT_BGRX;
    jpeg_start_decompress(&jpeg);
    while (jpeg.output_scanline < jpeg.output_height) {
        unsigned char *row = tile.data() + static_cast<std::ptrdiff_t>(jpeg.output_scanline) * kStride;
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
}

void Encode(benchmark::State &state, Pixels tile, Gdiplus::PixelFormat format, const char *name) {
    const auto bitmap = BitmapOf(tile, format);
    for (auto _ : state) benchmark::DoNotOptimize(EncodeOurs(*bitmap, name));
}

void EncodePeer(benchmark::State &state, Pixels tile, std::string (*encode)(const Pixels &)) {
    for (auto _ : state) benchmark::DoNotOptimize(encode(tile));
}

void Decode(benchmark::State &state, std::string bytes) {
    auto *buffer = reinterpret_cast<unsigned char *>(bytes.data());
    for (auto _ : state) {
        const std::unique_ptr<Gdiplus::Bitmap> bitmap(GetBitmapFromBuffer(buffer, static_cast<int>(bytes.size())));
        if (bitmap->GetLastStatus() != Gdiplus::Ok) state.SkipWithError("not decoded");
    }
}

void DecodePeer(benchmark::State &state, std::string bytes, void (*decode)(const std::string &, Pixels &)) {
    for (auto _ : state) {
        Pixels tile(static_cast<std::size_t>(kStride) * kSide);
        decode(bytes, tile);
        benchmark::DoNotOptimize(tile.data());
    }
}

template <class... Args>
void Register(const std::string &name, Args... args) {
    benchmark::RegisterBenchmark(name.c_str(), args...)->Unit(benchmark::kMicrosecond);
}

void RegisterAll() {
    const struct {
        std::string name;
        Pixels pixels;
    } tiles[] = {{"map", MakeTile(false, true)}, {"overlay", MakeTile(false, false)}, {"photo", MakeTile(true, true)}};
    for (const auto &tile : tiles) {
        Register("encode PNG " + tile.name + "/ktl", Encode, tile.pixels, Gdiplus::PixelFormat32bppARGB, "png");
        Register("encode PNG " + tile.name + "/libpng", EncodePeer, tile.pixels, EncodePng);
        const std::string bytes = EncodePng(tile.pixels);
        Register("decode PNG " + tile.name + "/ktl", Decode, bytes);
        Register("decode PNG " + tile.name + "/libpng", DecodePeer, bytes, DecodePng);
    }
    const Pixels &photo = tiles[2].pixels;
    Register("encode JPEG/ktl", Encode, photo, Gdiplus::PixelFormat24bppRGB, "jpeg");
    Register("encode JPEG/libjpeg", EncodePeer, photo, EncodeJpeg);
    Register("decode JPEG/ktl", Decode, EncodeJpeg(photo));
    Register("decode JPEG/libjpeg", DecodePeer, EncodeJpeg(photo), DecodeJpeg);
}

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    ULONG_PTR token = 0;
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
    RegisterAll();
    ktl::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    Gdiplus::GdiplusShutdown(token);
}
