#include <gtest/gtest.h>

#include <cpl_conv.h>
#include <cpl_string.h>
#include <cpl_vsi.h>
#include <gdal.h>

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ktl/platform/filesystem.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "tests/support/drawing_start.h"
#include "tests/support/faulty_filesystem.h"
#include "tests/support/scratch_folder.h"

using namespace Gdiplus;

namespace {

struct ImageCodecTest : testing::Test {
    ktl::test::DrawingStart drawing;
};

struct StreamDeleter {
    void operator()(IStream *stream) const { stream->Release(); }
};
using StreamPtr = std::unique_ptr<IStream, StreamDeleter>;

StreamPtr StreamOf(const std::string &bytes) {
    IStream *stream = nullptr;
    CreateStreamOnHGlobal(nullptr, TRUE, &stream);
    stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
    return StreamPtr(stream);
}

CLSID EncoderOf(const wchar_t *mime) {
    UINT count = 0;
    UINT size = 0;
    GetImageEncodersSize(&count, &size);
    std::vector<ImageCodecInfo> list(count);
    GetImageEncoders(count, size, list.data());
    for (const ImageCodecInfo &codec : list) {
        if (std::wcscmp(codec.MimeType, mime) == 0) return codec.Clsid;
    }
    return {};
}

std::string Encoded(Bitmap &bitmap, const wchar_t *mime, const EncoderParameters *parameters = nullptr) {
    const StreamPtr stream = StreamOf("");
    const CLSID encoder = EncoderOf(mime);
    if (bitmap.Save(stream.get(), &encoder, parameters) != Ok) return {};
    STATSTG stat;
    stream->Stat(&stat, STATFLAG_NONAME);
    std::string bytes(stat.cbSize.QuadPart, '\0');
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    ULONG done = 0;
    stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &done);
    return bytes;
}

std::unique_ptr<Bitmap> Loaded(const std::string &bytes) {
    return std::make_unique<Bitmap>(StreamOf(bytes).get());
}

Color PixelAt(const Bitmap &bitmap, int x, int y) {
    Color color;
    bitmap.GetPixel(x, y, &color);
    return color;
}

/// Smooth in both directions, each pixel another colour.
std::unique_ptr<Bitmap> Gradient(int width, int height, PixelFormat format, BYTE alpha = 255) {
    auto bitmap = std::make_unique<Bitmap>(width, height, format);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            bitmap->SetPixel(x, y,
                             Color(alpha, static_cast<BYTE>(x * 255 / width), static_cast<BYTE>(y * 255 / height), 90));
        }
    }
    return bitmap;
}

int LargestDifference(const Bitmap &a, const Bitmap &b) {
    int largest = 0;
    for (int y = 0; y < static_cast<int>(a.GetHeight()); ++y) {
        for (int x = 0; x < static_cast<int>(a.GetWidth()); ++x) {
            const Color p = PixelAt(a, x, y);
            const Color q = PixelAt(b, x, y);
            largest = std::max({largest, std::abs(p.GetRed() - q.GetRed()), std::abs(p.GetGreen() - q.GetGreen()),
                                std::abs(p.GetBlue() - q.GetBlue()), std::abs(p.GetAlpha() - q.GetAlpha())});
        }
    }
    return largest;
}

const wchar_t *const kMimes[] = {L"image/bmp", L"image/jpeg", L"image/gif", L"image/tiff", L"image/png"};

TEST_F(ImageCodecTest, EncodersAndDecodersStandInTheirOrder) {
    UINT count = 0;
    UINT size = 0;
    ASSERT_EQ(GetImageEncodersSize(&count, &size), Ok);
    ASSERT_EQ(count, 5U);
    std::vector<ImageCodecInfo> encoders(count);
    EXPECT_EQ(GetImageEncoders(count - 1, size, encoders.data()), GenericError);
    EXPECT_EQ(GetImageEncoders(count, size + 1, encoders.data()), GenericError);
    ASSERT_EQ(GetImageEncoders(count, size, encoders.data()), Ok);
    const std::uint32_t numbers[] = {0, 1, 2, 5, 6};
    for (UINT i = 0; i < count; ++i) {
        EXPECT_STREQ(encoders[i].MimeType, kMimes[i]);
        EXPECT_EQ(encoders[i].Clsid.Data1, 0x557CF400U + numbers[i]);
    }
    EXPECT_STREQ(encoders[0].CodecName, L"Built-in BMP Codec");
    EXPECT_STREQ(encoders[1].FilenameExtension, L"*.JPG;*.JPEG;*.JPE;*.JFIF");
    ASSERT_EQ(GetImageDecodersSize(&count, &size), Ok);
    std::vector<ImageCodecInfo> decoders(count);
    ASSERT_EQ(GetImageDecoders(count, size, decoders.data()), Ok);
    std::wstring order;
    for (const ImageCodecInfo &codec : decoders) order += std::wstring(codec.MimeType).substr(6) + L" ";
    EXPECT_EQ(order, L"bmp jpeg gif x-emf x-wmf tiff png x-icon ");
}

TEST_F(ImageCodecTest, ReloadedFormatsAreThePlatforms) {
    constexpr PixelFormat k24 = PixelFormat24bppRGB;
    constexpr PixelFormat k32 = PixelFormat32bppRGB;
    constexpr PixelFormat kA = PixelFormat32bppARGB;
    constexpr PixelFormat k8 = PixelFormat8bppIndexed;
    const PixelFormat formats[] = {k24, k32, kA, PixelFormat32bppPARGB};
    const PixelFormat reloaded[5][4] = {
        {k24, k32, k32, k32}, {k24, k24, k24, k24}, {k8, k8, k8, k8}, {k24, kA, kA, kA}, {k24, kA, kA, kA}};
    for (int m = 0; m < 5; ++m) {
        for (int f = 0; f < 4; ++f) {
            const auto bitmap = Gradient(20, 15, formats[f]);
            const auto again = Loaded(Encoded(*bitmap, kMimes[m]));
            ASSERT_EQ(again->GetLastStatus(), Ok) << m << " " << f;
            EXPECT_EQ(again->GetPixelFormat(), reloaded[m][f]) << m << " " << f;
            const int tolerance[] = {0, 24, 51, 0, 0};
            EXPECT_LE(LargestDifference(*bitmap, *again), tolerance[m]) << m << " " << f;
        }
    }
}

TEST_F(ImageCodecTest, EveryWidthAndHugePicturesComeBackWhole) {
    for (int width = 1; width < 10; ++width) {
        for (const PixelFormat format : {PixelFormat24bppRGB, PixelFormat32bppARGB}) {
            const auto bitmap = Gradient(width, 3, format, format == PixelFormat24bppRGB ? 255 : 77);
            EXPECT_EQ(LargestDifference(*bitmap, *Loaded(Encoded(*bitmap, L"image/png"))), 0) << width;
        }
    }
    // More than is read at once.
    const auto huge = Gradient(2500, 1800, PixelFormat24bppRGB);
    EXPECT_EQ(LargestDifference(*huge, *Loaded(Encoded(*huge, L"image/bmp"))), 0);
}

TEST_F(ImageCodecTest, AlphaIsKeptOrDroppedNeverMixed) {
    const auto bitmap = Gradient(16, 16, PixelFormat32bppARGB, 128);
    for (const wchar_t *mime : {L"image/png", L"image/tiff"}) {
        EXPECT_EQ(LargestDifference(*bitmap, *Loaded(Encoded(*bitmap, mime))), 0);
    }
    const auto opaque = Gradient(16, 16, PixelFormat24bppRGB);
    const auto bmp = Loaded(Encoded(*bitmap, L"image/bmp"));
    EXPECT_LE(LargestDifference(*opaque, *bmp), 1);
    Bitmap clear(16, 16);
    EXPECT_EQ(PixelAt(*Loaded(Encoded(clear, L"image/jpeg")), 5, 5).GetValue(), 0xFF000000U);
}

TEST_F(ImageCodecTest, SmallFilesOfOtherProgramsKeepTheirColours) {
    // 2 by 1 pixels each, left red and right green: as 16-bit PNG, 8-bit palette PNG and 4-bit BMP.
    GDALAllRegister();
    const auto make = [](const char *driver, GDALDataType type, int bands, bool withColors) {
        GDALDatasetH memory = GDALCreate(GDALGetDriverByName("MEM"), "", 2, 1, bands, type, nullptr);
        for (int b = 0; b < bands; ++b) {
            const bool lit[] = {b == 0, b == 1};
            std::uint16_t values[2] = {};
            for (int x = 0; x < 2; ++x) values[x] = static_cast<std::uint16_t>(withColors ? x : lit[x] ? 65535 : 0);
            EXPECT_EQ(
                GDALRasterIO(GDALGetRasterBand(memory, b + 1), GF_Write, 0, 0, 2, 1, values, 2, 1, GDT_UInt16, 0, 0),
                CE_None);
        }
        if (withColors) {
            GDALColorTableH colors = GDALCreateColorTable(GPI_RGB);
            const GDALColorEntry entries[] = {{255, 0, 0, 255}, {0, 255, 0, 255}};
            for (int i = 0; i < 2; ++i) GDALSetColorEntry(colors, i, &entries[i]);
            GDALSetRasterColorTable(GDALGetRasterBand(memory, 1), colors);
            GDALDestroyColorTable(colors);
        }
        GDALClose(
            GDALCreateCopy(GDALGetDriverByName(driver), "/vsimem/made", memory, FALSE, nullptr, nullptr, nullptr));
        GDALClose(memory);
        vsi_l_offset size = 0;
        const GByte *data = VSIGetMemFileBuffer("/vsimem/made", &size, FALSE);
        std::string bytes(reinterpret_cast<const char *>(data), size);
        VSIUnlink("/vsimem/made");
        VSIUnlink("/vsimem/made.aux.xml");
        return bytes;
    };
    const std::pair<std::string, PixelFormat> files[] = {
        {make("PNG", GDT_UInt16, 3, false), PixelFormat24bppRGB},
        {make("PNG", GDT_UInt16, 4, false), PixelFormat32bppARGB},
        {make("PNG", GDT_Byte, 1, true), PixelFormat8bppIndexed},
        {make("GTiff", GDT_Byte, 1, true), PixelFormat8bppIndexed},
        {make("BMP", GDT_Byte, 1, true), PixelFormat8bppIndexed},
    };
    for (const auto &[bytes, format] : files) {
        const auto bitmap = Loaded(bytes);
        ASSERT_EQ(bitmap->GetLastStatus(), Ok);
        EXPECT_EQ(bitmap->GetPixelFormat(), format);
        if (format == PixelFormat32bppARGB) continue;  // Its alpha is 0.
        EXPECT_EQ(PixelAt(*bitmap, 0, 0).GetValue(), 0xFFFF0000U);
        EXPECT_EQ(PixelAt(*bitmap, 1, 0).GetValue(), 0xFF00FF00U);
    }
}

TEST_F(ImageCodecTest, GifHasTheHalftoneColoursAndTransparency) {
    Bitmap bitmap(8, 8);
    bitmap.SetPixel(0, 0, Color(0x80, 0x80, 0x80));
    bitmap.SetPixel(1, 0, Color(0xC0, 0xC0, 0xC0));
    bitmap.SetPixel(2, 0, Color(0x33, 0x66, 0xCC));
    bitmap.SetPixel(3, 0, Color(200, 255, 0, 0));
    const auto gif = Loaded(Encoded(bitmap, L"image/gif"));
    EXPECT_EQ(PixelAt(*gif, 0, 0).GetValue(), 0xFF808080U);
    EXPECT_EQ(PixelAt(*gif, 1, 0).GetValue(), 0xFFC0C0C0U);
    EXPECT_EQ(PixelAt(*gif, 2, 0).GetValue(), 0xFF3366CCU);
    EXPECT_EQ(PixelAt(*gif, 3, 0).GetValue(), 0xFFFF0000U);
    EXPECT_EQ(PixelAt(*gif, 4, 4).GetAlpha(), 0);
    // Saved again unchanged, a picture keeps its own colours and places.
    const auto again = Loaded(Encoded(*gif, L"image/gif"));
    EXPECT_EQ(LargestDifference(*gif, *again), 0);
    // A flat colour between two steps keeps its mean.
    Bitmap gray(64, 64, PixelFormat24bppRGB);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) gray.SetPixel(x, y, Color(115, 115, 115));
    }
    const auto dithered = Loaded(Encoded(gray, L"image/gif"));
    double sum = 0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) sum += PixelAt(*dithered, x, y).GetRed();
    }
    EXPECT_NEAR(sum / 4096, 115, 1.0);
}

TEST_F(ImageCodecTest, ParametersReachTheirEncoders) {
    const auto bitmap = Gradient(64, 64, PixelFormat24bppRGB);
    const auto sizeAt = [&](const GUID &guid, LONG value, const wchar_t *mime, ULONG type) {
        EncoderParameters parameters;
        parameters.Count = 1;
        parameters.Parameter[0] = {guid, 1, type, &value};
        return Encoded(*bitmap, mime, &parameters).size();
    };
    const ULONG kLong = EncoderParameterValueTypeLong;
    const std::size_t usual = Encoded(*bitmap, L"image/jpeg").size();
    EXPECT_EQ(sizeAt(EncoderQuality, 75, L"image/jpeg", kLong), usual);
    EXPECT_LT(sizeAt(EncoderQuality, 20, L"image/jpeg", kLong), usual);
    EXPECT_GT(sizeAt(EncoderQuality, 98, L"image/jpeg", kLong), usual);
    EXPECT_EQ(sizeAt(EncoderQuality, 101, L"image/jpeg", kLong), 0U);
    EXPECT_EQ(sizeAt(EncoderQuality, 20, L"image/jpeg", EncoderParameterValueTypeASCII), usual);
    Bitmap flat(64, 64, PixelFormat24bppRGB);
    EXPECT_LT(Encoded(flat, L"image/tiff").size(), 64U * 64U * 3U);
    EXPECT_GT(sizeAt(EncoderCompression, EncoderValueCompressionNone, L"image/tiff", kLong), 64U * 64U * 3U);
}

TEST_F(ImageCodecTest, TruncatedFilesAreRefusedWhole) {
    for (const wchar_t *mime : kMimes) {
        const auto bitmap = Gradient(24, 16, PixelFormat24bppRGB);
        const std::string bytes = Encoded(*bitmap, mime);
        ASSERT_GT(bytes.size(), 60U);
        std::size_t longestRefused = 0;
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            const auto cut = Loaded(bytes.substr(0, size));
            if (cut->GetLastStatus() != Ok) {
                longestRefused = size;
                continue;
            }
            // Whatever is accepted must be the whole picture: only a trailer without pixels may be missing.
            EXPECT_EQ(LargestDifference(*cut, *Loaded(bytes)), 0) << size << " of " << bytes.size();
        }
        EXPECT_GT(longestRefused + 32, bytes.size());
    }
}

TEST_F(ImageCodecTest, DamagedFilesNeverCrash) {
    unsigned seed = 20240601;
    for (const wchar_t *mime : kMimes) {
        const std::string bytes = Encoded(*Gradient(24, 16, PixelFormat32bppARGB), mime);
        for (int round = 0; round < 300; ++round) {
            std::string damaged = bytes;
            for (int i = 0; i < 3; ++i) {
                seed = seed * 1664525U + 1013904223U;
                damaged[seed / 256 % damaged.size()] = static_cast<char>(seed >> 24);
            }
            const auto bitmap = Loaded(damaged);
            const bool isGood = bitmap->GetLastStatus() == Ok;
            EXPECT_EQ(bitmap->GetWidth() > 0, isGood);
        }
    }
}

TEST_F(ImageCodecTest, NonsenseIsToldApart) {
    const std::string header("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
    const std::string huge = header + std::string("\x00\x00\x75\x30\x00\x00\x75\x30\x08\x06\x00\x00\x00", 13);
    const std::string wide = header + std::string("\x7F\xFF\xFF\xFF\x00\x00\x00\x01\x08\x06\x00\x00\x00", 13);
    const std::string gif =
        std::string("GIF89a\xFF\x7F\xFF\x1F\x80\0\0\0\0\0\xFF\xFF\xFF,\0\0\0\0\xFF\x7F\xFF\x1F\0\2\1\0\0;", 34);
    const std::pair<std::string, Status> cases[] = {
        {"", UnknownImageFormat},
        {std::string(1000, 'x'), UnknownImageFormat},
        {std::string(1000, '\0'), UnknownImageFormat},
        {"BM", UnknownImageFormat},
        {std::string("\1\0\0\0", 4) + std::string(100, '\0'), NotImplemented},
        {std::string("\0\0\1\0\1\0", 6) + std::string(100, '\0'), NotImplemented},
    };
    for (const auto &[bytes, status] : cases) EXPECT_EQ(Loaded(bytes)->GetLastStatus(), status) << bytes.size();
    for (const std::string &bytes : {huge, wide, gif}) EXPECT_NE(Loaded(bytes)->GetLastStatus(), Ok);
    EXPECT_EQ(Bitmap(static_cast<IStream *>(nullptr)).GetLastStatus(), InvalidParameter);
}

TEST_F(ImageCodecTest, FilesAreReplacedWholeOrNotAtAll) {
    const ktl::test::ScratchFolder folder;
    const std::string path = folder.Path("tile.png");
    const std::wstring name(path.begin(), path.end());
    const auto bitmap = Gradient(20, 20, PixelFormat32bppARGB);
    const CLSID png = EncoderOf(L"image/png");
    ASSERT_EQ(bitmap->Save(name.c_str(), &png), Ok);
    std::string before;
    ASSERT_EQ(ktl::ReadWholeFile(path, before), 0);
    const auto other = Gradient(30, 30, PixelFormat24bppRGB);
    for (const int room : {-1, 0, 10}) {
        ktl::test::FaultyFileSystem files;
        if (room < 0) files.FailAfter(0, ENOSPC);
        if (room >= 0) files.LimitWrites(static_cast<std::uint64_t>(room));
        EXPECT_EQ(other->Save(name.c_str(), &png), Win32Error) << room;
    }
    std::string after;
    std::vector<std::string> names;
    ASSERT_EQ(ktl::ReadWholeFile(path, after), 0);
    EXPECT_EQ(after, before);
    const CLSID none{};
    EXPECT_EQ(other->Save(name.c_str(), &none), UnknownImageFormat);
    EXPECT_EQ(other->Save((name + L".dir/x.png").c_str(), &png), FileNotFound);
    for (const wchar_t *mime : kMimes) {
        const CLSID encoder = EncoderOf(mime);
        EXPECT_EQ(bitmap->Save((name + std::wstring(mime + 6)).c_str(), &encoder), Ok);
        EXPECT_EQ(Bitmap((name + std::wstring(mime + 6)).c_str()).GetLastStatus(), Ok);
    }
    // No side-files and no half-written ones.
    ktl::FileSystem::Current().List(folder.Path(""), names);
    EXPECT_EQ(names.size(), 6U);
    EXPECT_EQ(Bitmap((name + L"x").c_str()).GetLastStatus(), FileNotFound);
}

TEST_F(ImageCodecTest, NothingStaysInMemoryAndNothingIsPrinted) {
    testing::internal::CaptureStderr();
    for (const wchar_t *mime : kMimes) {
        const auto bitmap = Gradient(20, 20, PixelFormat32bppARGB);
        const std::string bytes = Encoded(*bitmap, mime);
        Loaded(bytes);
        Loaded(bytes.substr(0, bytes.size() / 2));
        Loaded(bytes.substr(0, 12) + std::string(300, 'q'));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    char **left = VSIReadDir("/vsimem/");
    EXPECT_EQ(CSLCount(left), 0);
    CSLDestroy(left);
}

TEST_F(ImageCodecTest, ThreadsDecodeAtTheSameTime) {
    const std::string bytes = Encoded(*Gradient(64, 64, PixelFormat32bppARGB), L"image/png");
    int good[4] = {};
    std::vector<std::thread> threads;
    for (int &count : good) {
        threads.emplace_back([&bytes, &count] {
            for (int i = 0; i < 50; ++i) {
                const auto bitmap = Loaded(bytes);
                count += bitmap->GetLastStatus() == Ok && !Encoded(*bitmap, L"image/bmp").empty() ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    for (const int count : good) EXPECT_EQ(count, 50);
}

TEST(MemoryStream, PositionsAndGapsAreAFiles) {
    const StreamPtr stream = StreamOf("abc");
    LARGE_INTEGER to;
    ULARGE_INTEGER at;
    to.QuadPart = -4;
    EXPECT_TRUE(FAILED(stream->Seek(to, STREAM_SEEK_END, &at)));
    to.QuadPart = 2;
    EXPECT_EQ(stream->Seek(to, STREAM_SEEK_END, &at), S_OK);
    EXPECT_EQ(at.QuadPart, 5U);
    ULONG done = 9;
    char piece[8] = {};
    EXPECT_EQ(stream->Read(piece, 8, &done), S_OK);
    EXPECT_EQ(done, 0U);
    EXPECT_EQ(stream->Write("z", 1, &done), S_OK);
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    stream->Read(piece, 8, &done);
    EXPECT_EQ(std::string(piece, done), std::string("abc\0\0z", 6));
    at.QuadPart = std::uint64_t{1} << 40;
    EXPECT_TRUE(FAILED(stream->SetSize(at)));
    stream->AddRef();
    EXPECT_EQ(stream->Release(), 1U);
}

}  // namespace
