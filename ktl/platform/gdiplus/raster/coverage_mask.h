#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ktl/platform/gdiplus/raster/geometry.h"

namespace ktl::raster {

/// One bit for each pixel of a box: what a line has touched, so that each pixel is blended once. Memory is kept from
/// use to use.
class CoverageMask {
  public:
    /// Clears the mask for `box`, which must not be empty.
    void Begin(const Box &box) {
        m_box = box;
        m_words = (static_cast<std::size_t>(box.Width()) + 63) / 64;
        m_bits.assign(m_words * static_cast<std::size_t>(box.Height()), 0);
    }
    const Box &Area() const { return m_box; }

    /// Bits are numbered row by row; these are for walking along a line.
    std::ptrdiff_t Stride() const { return static_cast<std::ptrdiff_t>(m_words) * 64; }
    std::ptrdiff_t IndexOf(int x, int y) const {
        return static_cast<std::ptrdiff_t>(y - m_box.top) * Stride() + (x - m_box.left);
    }
    void SetAt(std::ptrdiff_t index) {
        m_bits[static_cast<std::size_t>(index >> 6)] |= std::uint64_t{1} << (index & 63);
    }

    /// Pixels x0..x1-1 of row y, within the box.
    void SetRun(int y, int x0, int x1) {
        std::uint64_t *const row = Row(y);
        const auto first = static_cast<unsigned>(x0 - m_box.left);
        const auto last = static_cast<unsigned>(x1 - m_box.left - 1);
        const std::uint64_t from = ~std::uint64_t{0} << (first & 63U);
        const std::uint64_t to = ~std::uint64_t{0} >> (63U - (last & 63U));
        const std::size_t a = first >> 6;
        const std::size_t b = last >> 6;
        if (a == b) {
            row[a] |= from & to;
            return;
        }
        row[a] |= from;
        for (std::size_t i = a + 1; i < b; ++i) row[i] = ~std::uint64_t{0};
        row[b] |= to;
    }

    /// Keeps what both masks, which are of the same box, have.
    void IntersectWith(const CoverageMask &other) {
        for (std::size_t i = 0; i < m_bits.size(); ++i) m_bits[i] &= other.m_bits[i];
    }

    /// Hands the runs of set pixels to `sink(y, x0, x1)`.
    template <class Sink>
    void ForEachRun(Sink &&sink) const {
        for (int y = m_box.top; y < m_box.bottom; ++y) EmitRow(y, sink);
    }

  private:
    std::uint64_t *Row(int y) { return m_bits.data() + static_cast<std::size_t>(y - m_box.top) * m_words; }

    template <class Sink>
    void EmitRow(int y, Sink &sink) const {
        const std::uint64_t *const row = m_bits.data() + static_cast<std::size_t>(y - m_box.top) * m_words;
        int start = -1;
        for (std::size_t i = 0; i < m_words; ++i) {
            const int base = m_box.left + static_cast<int>(i) * 64;
            // The low bits seen so far are shifted out; `at` counts them.
            std::uint64_t word = row[i];
            int at = 0;
            while (at < 64) {
                if (start < 0) {
                    if (word == 0) break;
                    const int zeros = __builtin_ctzll(word);
                    word >>= zeros;
                    at += zeros;
                    start = base + at;
                } else {
                    const int ones = ~word == 0 ? 64 : __builtin_ctzll(~word);
                    if (at + ones >= 64) break;
                    word >>= ones;
                    at += ones;
                    sink(y, start, base + at);
                    start = -1;
                }
            }
        }
        if (start >= 0) sink(y, start, m_box.right);
    }

    Box m_box;
    std::size_t m_words = 0;
    std::vector<std::uint64_t> m_bits;
};

}  // namespace ktl::raster
