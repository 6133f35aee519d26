#include "ktl/platform/ado/dbase/memo_file.h"

#include <algorithm>
#include <limits>

#include "ktl/platform/ado/dbase/layout.h"
#include "ktl/platform/ado/error.h"

namespace ktl::ado::dbase {

namespace {

/// What one statement may read: this much and the file's size so many times.
constexpr std::uint64_t kFreeBudget = 16U << 20U;
constexpr std::uint64_t kBudgetFactor = 16;

std::uint32_t BlockSizeOf(const std::string &header, MemoKind kind) {
    std::uint32_t size = dbase::kDbaseBlockSize;
    if (kind == MemoKind::Fpt) size = LoadBig16(header.data() + kMemoBlockSizeAt);
    if (kind == MemoKind::Dbase4) size = LoadLittle16(header.data() + kDbase4BlockSizeAt);
    if (kind == MemoKind::Dbase4 && size == 0) size = dbase::kDbaseBlockSize;
    return std::max(size, 1U);
}

}  // namespace

MemoFile::MemoFile(const std::string &systemPath, MemoKind kind) : m_kind(kind) {
    m_file.Open(systemPath);
    std::string header(kMemoHeaderSize, '\0');
    m_file.Read(0, header.data(), header.size());
    m_blockSize = BlockSizeOf(header, kind);
    BeginStatement();
}

void MemoFile::BeginStatement() {
    m_size = m_file.Stat().size;
    RenewBudget();
}

void MemoFile::RenewBudget() {
    m_budget = kFreeBudget + m_size * kBudgetFactor;
}

void MemoFile::Spend(std::uint64_t bytes) {
    if (bytes > m_budget) {
        throw Error("The memo file is damaged: its blocks overlap.", error_number::kMemoFile);
    }
    m_budget -= bytes;
}

bool MemoFile::ReadSized(std::uint64_t offset, std::uint64_t size, std::string &value) {
    size = std::min(size, m_size - offset);
    Spend(size);
    value.resize(size);
    value.resize(m_file.Read(offset, value.data(), size));
    return true;
}

/// Text up to the end mark, a block at a time.
bool MemoFile::ReadDbase3(std::uint64_t offset, std::string &value) {
    value.clear();
    for (std::string block(m_blockSize, '\0'); offset < m_size; offset += m_blockSize) {
        const std::size_t size = m_file.Read(offset, block.data(), block.size());
        const std::size_t end = std::string_view(block.data(), size).find(kEndMark);
        Spend(size);
        value.append(block, 0, std::min(end, size));
        if (end != std::string_view::npos || size < block.size()) break;
    }
    return true;
}

bool MemoFile::Read(std::uint32_t block, std::string &value) {
    const std::uint64_t offset = static_cast<std::uint64_t>(block) * m_blockSize;
    if (block == 0 || offset >= m_size) return false;
    if (m_kind == MemoKind::Dbase3) return ReadDbase3(offset, value);
    char head[kMemoBlockHeader] = {};
    if (m_file.Read(offset, head, sizeof head) < sizeof head) return false;
    if (m_kind == MemoKind::Fpt) return ReadSized(offset + sizeof head, LoadBig32(head + 4), value);
    // A dBASE IV file may hold blocks of the older kind, without a mark.
    if (LoadLittle32(head) != kDbase4Mark) return ReadDbase3(offset, value);
    const std::uint32_t length = LoadLittle32(head + 4);
    return ReadSized(offset + sizeof head, length < sizeof head ? 0 : length - sizeof head, value);
}

std::uint32_t MemoFile::Append(std::string_view value, bool text) {
    if (!m_file.IsWritable()) throw Error("The memo file can only be read.", error_number::kReadOnly);
    // Behind everything that is there, whatever the header says: no old block is ever written over.
    const std::uint64_t start = std::max<std::uint64_t>(m_file.Stat().size, kMemoHeaderSize);
    const std::uint64_t block = (start + m_blockSize - 1) / m_blockSize;
    const std::uint64_t length = value.size() + kMemoBlockHeader;
    if (block + length / m_blockSize + 1 > std::numeric_limits<std::uint32_t>::max() ||
        length > std::numeric_limits<std::int32_t>::max()) {
        throw Error("The memo file is full.", error_number::kMemoFile);
    }
    std::string bytes;
    if (m_kind != MemoKind::Dbase3) {
        bytes.resize(kMemoBlockHeader);
        if (m_kind == MemoKind::Fpt) {
            StoreBig32(bytes.data(), text ? kMemoIsText : kMemoIsBinary);
            StoreBig32(&bytes[4], static_cast<std::uint32_t>(value.size()));
        } else {
            StoreLittle32(bytes.data(), kDbase4Mark);
            StoreLittle32(&bytes[4], static_cast<std::uint32_t>(length));
        }
    }
    bytes += value;
    if (m_kind == MemoKind::Dbase3) bytes.append(2, kEndMark);
    bytes.resize((bytes.size() + m_blockSize - 1) / m_blockSize * m_blockSize, '\0');
    m_file.Write(block * m_blockSize, bytes);
    m_size = block * m_blockSize + bytes.size();
    m_headerStale = true;
    return static_cast<std::uint32_t>(block);
}

void MemoFile::FlushHeader() {
    if (!m_headerStale) return;
    char free[4];
    const auto next = static_cast<std::uint32_t>((m_size + m_blockSize - 1) / m_blockSize);
    if (m_kind == MemoKind::Fpt) {
        StoreBig32(free, next);
    } else {
        StoreLittle32(free, next);
    }
    m_file.Write(0, {free, sizeof free});
    m_headerStale = false;
}

void MemoFile::Create(const std::string &systemPath, std::uint32_t lostBlock) {
    const std::uint64_t firstBlock = std::max<std::uint64_t>(kMemoHeaderSize / kNewBlockSize, lostBlock + 1ULL);
    std::string header(kMemoHeaderSize, '\0');
    StoreBig32(header.data(), static_cast<std::uint32_t>(firstBlock));
    StoreBig16(&header[kMemoBlockSizeAt], kNewBlockSize);
    DataFile file;
    file.Create(systemPath);
    file.Write(0, header);
    const std::uint64_t size = firstBlock * kNewBlockSize;
    if (size > kMemoHeaderSize) file.Write(size - 1, std::string_view("", 1));
    file.Flush();
}

}  // namespace ktl::ado::dbase
