#include "ktl/legends/legend_point.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "ktl/core/utility.h"
#include "ktl/imaging/bitmap_tools.h"
#include "ktl/legends/sample.h"
#include "ktl/platform/archive.h"

namespace {

constexpr short kDefaultSize = 5;
constexpr int kIconSide = 16;
constexpr Gdiplus::ARGB kShapeSymbolColor = 0xFFFF0000;

std::unique_ptr<Gdiplus::Bitmap> CopyOf(Gdiplus::Bitmap &source) {
    const auto width = static_cast<int>(source.GetWidth());
    const auto height = static_cast<int>(source.GetHeight());
    auto copy = std::make_unique<Gdiplus::Bitmap>(width, height, Gdiplus::PixelFormat32bppARGB);
    Gdiplus::Graphics graphics(copy.get());
    graphics.DrawImage(&source, 0, 0, width, height);
    return copy;
}

void StoreBitmap(CArchive &archive, Gdiplus::Bitmap &bitmap) {
    struct Release {
        void operator()(unsigned char *memory) const { std::free(memory); }
    };
    unsigned int size = 0;
    const std::unique_ptr<unsigned char, Release> buffer(CreateBufferFromBitmap(&bitmap, size, "png"));
    if (!buffer) size = 0;
    archive << static_cast<int>(size);
    if (size > 0) archive.Write(buffer.get(), size);
}

/// The bytes behind a length. Memory is taken as they arrive, whatever the length says.
std::vector<unsigned char> LoadBytes(CArchive &archive) {
    constexpr int kBlock = 1 << 16;
    int length = 0;
    archive >> length;
    std::vector<unsigned char> bytes;
    for (int left = length; left > 0;) {
        const auto block = static_cast<UINT>(std::min(left, kBlock));
        const std::size_t start = bytes.size();
        bytes.resize(start + block);
        if (archive.Read(bytes.data() + start, block) < block) throw CArchiveException(CArchiveException::endOfFile);
        left -= static_cast<int>(block);
    }
    return bytes;
}

std::unique_ptr<Gdiplus::Bitmap> LoadBitmap(CArchive &archive) {
    std::vector<unsigned char> bytes = LoadBytes(archive);
    Gdiplus::Bitmap *bitmap = GetBitmapFromBuffer(bytes.data(), static_cast<int>(bytes.size()));
    return std::unique_ptr<Gdiplus::Bitmap>(IsValidBitmap(bitmap) ? bitmap : nullptr);
}

}  // namespace

CLegend_Point::CLegend_Point() {
    Type = LEGEND_POINT;
    Size = kDefaultSize;
}

CLegend_Point::~CLegend_Point() = default;

int CLegend_Point::GetSize() {
    if (!UsesBitmap()) return Size;
    return static_cast<int>(std::max(BitmapSymbol->GetWidth(), BitmapSymbol->GetHeight()));
}

HBITMAP__ *CLegend_Point::GetIcon() {
    const int diameter = std::min<int>(Size, kIconSide);
    return DrawSample(kIconSide, static_cast<float>(kIconSide - diameter) / 2.0F, static_cast<float>(diameter));
}

HBITMAP__ *CLegend_Point::GetOverView() {
    return DrawSample(GetSize() + 1, 0.0F, static_cast<float>(GetSize()));
}

HBITMAP__ *CLegend_Point::DrawSample(int side, float left, float diameter) {
    return ktl::MakeSample(side, side, [&](Gdiplus::Graphics &graphics) {
        if (UsesBitmap()) {
            graphics.DrawImage(BitmapSymbol.get(), 0, 0, side, side);
        } else if (ShapeSymbol && ShapeSymbolObject) {
            graphics.Clear(Gdiplus::Color(kShapeSymbolColor));
        } else {
            const Gdiplus::SolidBrush brush(GetForeColorA());
            const Gdiplus::Pen pen(GetBackColorA(), 1.0F);
            graphics.FillEllipse(&brush, left, left, diameter, diameter);
            graphics.DrawEllipse(&pen, left, left, diameter, diameter);
        }
    });
}

CLegend *CLegend_Point::Clone() {
    auto copy = std::make_unique<CLegend_Point>();
    copy->Copy(this);
    return copy.release();
}

int CLegend_Point::Compare(CLegend *other) {
    if (!CLegend::Compare(other)) return 0;
    const auto *point = dynamic_cast<const CLegend_Point *>(other);
    return point && ShapeSymbol == point->ShapeSymbol && SymbolName == point->SymbolName;
}

void CLegend_Point::Copy(CLegend *other) {
    CLegend::Copy(other);
    auto *point = dynamic_cast<CLegend_Point *>(other);
    if (!point || point == this) return;
    ShapeSymbol = point->ShapeSymbol;
    SymbolName = point->SymbolName;
    BitmapSymbol = point->BitmapSymbol ? CopyOf(*point->BitmapSymbol) : nullptr;
    ShapeSymbolObject.reset(point->ShapeSymbolObject ? ktl::CloneSymbol(*point->ShapeSymbolObject) : nullptr);
}

int CLegend_Point::UnionLegendValue(CLegend *other) {
    CLegend::UnionLegendValue(other);
    if (const auto *point = dynamic_cast<const CLegend_Point *>(other)) {
        if (ShapeSymbol != point->ShapeSymbol) ShapeSymbol = true;
        if (!(SymbolName == point->SymbolName)) SymbolName.Empty();
    }
    return 0;
}

int CLegend_Point::Serialize(CArchive &archive, int version) {
    CLegend::Serialize(archive, version);
    if (archive.IsStoring()) {
        StoreSymbols(archive, version);
    } else {
        LoadSymbols(archive);
    }
    return 1;
}

void CLegend_Point::StoreSymbols(CArchive &archive, int version) {
    archive << ShapeSymbol << static_cast<int>(BitmapSymbol != nullptr);
    if (BitmapSymbol) StoreBitmap(archive, *BitmapSymbol);
    archive << static_cast<int>(ShapeSymbolObject != nullptr);
    if (ShapeSymbolObject) ktl::SerializeSymbol(*ShapeSymbolObject, archive, version);
}

void CLegend_Point::LoadSymbols(CArchive &archive) {
    BitmapSymbol.reset();
    ShapeSymbolObject.reset();
    int hasBitmap = 0;
    archive >> ShapeSymbol >> hasBitmap;
    if (hasBitmap == 1) BitmapSymbol = LoadBitmap(archive);
    // The symbol that follows a set flag is not read back.
    int hasShapeSymbol = 0;
    archive >> hasShapeSymbol;
}

void CLegend_Point::SetSymbolFilePath(CString path) {
    if (!KtlIsValidFilePath(path)) {
        BitmapSymbol.reset();
        ShapeSymbolObject.reset();
        SymbolName.Empty();
        return;
    }
    const CString extension = path.Right(4).MakeLower();
    if (extension == ".sbl") {
        ShapeSymbol = true;
    } else if (extension == ".gif" || extension == ".png") {
        ShapeSymbol = false;
        BitmapSymbol.reset(GetBitmapWithoutPath(path, 0));
    }
    SymbolName = KtlGetFileNameByPath(path, 1);
}
