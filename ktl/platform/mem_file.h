#pragma once

#include <vector>

#include "ktl/platform/export.h"
#include "ktl/platform/file.h"

/// A file in memory; it grows by `growBytes` at least, 1024 by default. Past-the-end writes fill the gap with zeros.
class KTL_API CMemFile : public CFile {
  public:
    explicit CMemFile(UINT growBytes = 1024) : m_growBytes(growBytes) {}
    /// Starts with a copy of `content`, at position 0.
    CMemFile(const BYTE *content, UINT size, UINT growBytes = 0);

    /// Replaces the content by a copy and goes to position 0.
    void Attach(const BYTE *content, UINT size, UINT growBytes = 0);
    /// Hands the content over and leaves the file empty.
    std::vector<BYTE> Detach();
    /// The content as it is; good until the next change.
    const std::vector<BYTE> &GetContent() const { return m_content; }

    BOOL Open(const char *fileName, UINT openFlags, CFileException *error = nullptr) override;
    void Close() override {}
    void Abort() override {}
    UINT Read(void *buffer, UINT count) override;
    void Write(const void *buffer, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    ULONGLONG GetPosition() const override { return m_position; }
    ULONGLONG GetLength() const override { return m_content.size(); }
    void SetLength(ULONGLONG length) override;
    void Flush() override {}

  private:
    void Grow(std::size_t size);

    std::vector<BYTE> m_content;
    std::size_t m_position = 0;
    UINT m_growBytes = 1024;
};
