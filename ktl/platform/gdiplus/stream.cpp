#include "ktl/platform/gdiplus/stream.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

namespace {

class MemoryStream final : public IStream {
  public:
    ULONG AddRef() override { return ++m_references; }

    ULONG Release() override {
        const ULONG left = --m_references;
        if (left == 0) delete this;
        return left;
    }

    HRESULT Read(void *data, ULONG size, ULONG *done) override {
        const std::size_t available = m_bytes.size() - std::min<std::size_t>(m_position, m_bytes.size());
        const std::size_t count = std::min<std::size_t>(size, available);
        if (count > 0) {
            if (!data) return STG_E_INVALIDPOINTER;
            std::memcpy(data, m_bytes.data() + m_position, count);
        }
        m_position += count;
        if (done) *done = static_cast<ULONG>(count);
        return S_OK;
    }

    HRESULT Write(const void *data, ULONG size, ULONG *done) override {
        if (done) *done = 0;
        if (size == 0) return S_OK;
        if (!data) return STG_E_INVALIDPOINTER;
        const std::size_t end = m_position + size;
        if (end > m_bytes.size() && FAILED(Resize(end))) return STG_E_MEDIUMFULL;
        std::memcpy(m_bytes.data() + m_position, data, size);
        m_position = end;
        if (done) *done = size;
        return S_OK;
    }

    HRESULT Seek(LARGE_INTEGER offset, DWORD origin, ULARGE_INTEGER *position) override {
        if (origin > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
        const std::size_t bases[] = {0, m_position, m_bytes.size()};
        LONGLONG target = 0;
        const auto base = static_cast<LONGLONG>(bases[origin]);
        if (__builtin_add_overflow(base, offset.QuadPart, &target) || target < 0) return STG_E_INVALIDFUNCTION;
        m_position = static_cast<std::size_t>(target);
        if (position) position->QuadPart = m_position;
        return S_OK;
    }

    HRESULT SetSize(ULARGE_INTEGER size) override { return Resize(size.QuadPart); }

    HRESULT Stat(STATSTG *stat, DWORD) override {
        if (!stat) return STG_E_INVALIDPOINTER;
        stat->cbSize.QuadPart = m_bytes.size();
        return S_OK;
    }

  private:
    HRESULT Resize(ULONGLONG size) {
        if (size > std::numeric_limits<std::uint32_t>::max()) return STG_E_MEDIUMFULL;
        try {
            m_bytes.resize(size);
        } catch (const std::bad_alloc &) {
            return STG_E_MEDIUMFULL;
        }
        return S_OK;
    }

    std::vector<BYTE> m_bytes;
    std::size_t m_position = 0;
    std::atomic<ULONG> m_references{1};
};

}  // namespace

HRESULT CreateStreamOnHGlobal(HGLOBAL memory, BOOL, IStream **stream) {
    if (memory || !stream) return E_INVALIDARG;
    *stream = new (std::nothrow) MemoryStream;
    return *stream ? S_OK : E_OUTOFMEMORY;
}
