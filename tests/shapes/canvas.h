#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "ktl/platform/archive.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/platform/mem_file.h"
#include "tests/support/drawing_start.h"

/// \file
/// What the tests of legends and shapes share: drawing that is started, a small white surface whose pixels can be
/// asked, and streams in memory.

namespace ktl_test {

/// Drawing is started around each test.
class DrawingTest : public ::testing::Test {
  private:
    ktl::test::DrawingStart m_drawing;
};

constexpr Gdiplus::ARGB kWhite = 0xFFFFFFFF;

/// A white bitmap with a graphics on it.
class Canvas {
  public:
    Canvas(int width, int height)
        : m_width(width),
          m_height(height),
          m_bitmap(width, height, Gdiplus::PixelFormat32bppARGB),
          graphics(&m_bitmap) {
        graphics.Clear(Gdiplus::Color(kWhite));
    }

    Gdiplus::ARGB At(int x, int y) const {
        Gdiplus::Color color;
        m_bitmap.GetPixel(x, y, &color);
        return color.GetValue();
    }
    std::vector<Gdiplus::ARGB> Pixels() const {
        std::vector<Gdiplus::ARGB> pixels;
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) pixels.push_back(At(x, y));
        }
        return pixels;
    }
    /// How many pixels are not white.
    int CountPainted() const {
        int count = 0;
        for (const Gdiplus::ARGB pixel : Pixels()) count += pixel != kWhite;
        return count;
    }

  private:
    int m_width;
    int m_height;
    Gdiplus::Bitmap m_bitmap;

  public:
    Gdiplus::Graphics graphics;
};

using Bytes = std::vector<BYTE>;

/// What `write` puts into an archive.
inline Bytes Stored(const std::function<void(CArchive &)> &write) {
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    write(archive);
    archive.Close();
    return file.Detach();
}

/// Lets `read` read the bytes; how many it left.
inline std::size_t LeftAfter(const Bytes &bytes, const std::function<void(CArchive &)> &read) {
    CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
    CArchive archive(&file, CArchive::load);
    read(archive);
    std::size_t left = 0;
    for (BYTE byte = 0; archive.Read(&byte, 1) == 1;) ++left;
    return left;
}

template <class T>
Bytes Store(T &object, int version) {
    return Stored([&](CArchive &archive) { object.Serialize(archive, version); });
}

/// How many bytes the object left.
template <class T>
std::size_t Load(T &object, const Bytes &bytes, int version) {
    return LeftAfter(bytes, [&](CArchive &archive) { object.Serialize(archive, version); });
}

/// A copy made by way of a stream holds what it was made from, down to the byte, and every part of the stream that is
/// cut short is an error.
template <class T>
void ExpectRoundTrip(T &object, T &&copy, int version) {
    const Bytes bytes = Store(object, version);
    EXPECT_EQ(Load(copy, bytes, version), 0U) << "version " << version;
    EXPECT_EQ(Store(copy, version), bytes) << "version " << version;
}

template <class Make>
void ExpectEveryPrefixThrows(const Bytes &bytes, int version, Make make) {
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        auto object = make();
        const Bytes prefix(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        try {
            Load(*object, prefix, version);
            ADD_FAILURE() << size << " of " << bytes.size() << " bytes were enough at version " << version;
        } catch (const CArchiveException &exception) {
            EXPECT_EQ(exception.m_cause, CArchiveException::endOfFile);
        }
    }
}

}  // namespace ktl_test
