#include "ktl/webmap/georeference.h"

#include <string_view>

#include "ktl/core/log.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/file.h"
#include "ktl/platform/stdio_file.h"
#include "ktl/webmap/projection.h"
#include "ktl/webmap/sidecar.h"

namespace {

constexpr UINT kReplaceFile = CFile::modeCreate | CFile::modeWrite;
constexpr const char *kJpegSidecar = "jpg.aux.xml";
constexpr const char *kTiffSidecar = "tif.aux.xml";

void WriteText(const CString &path, const CString &text) {
    CStdioFile file(path, kReplaceFile);
    file.WriteString(text);
    file.Close();
}

/// A line for each corner, in one of the orders and forms of the summaries; `format` takes the name and two doubles.
CString Corners(const EXTENT &extent, const char *format, const char *const (&names)[4]) {
    const CExtent e(extent);
    const CPointD corners[] = {e.BottomLeft(), e.TopLeft(), e.TopRight(), e.BottomRight()};
    CString text;
    for (int i = 0; i < 4; ++i) {
        text.AppendFormat(format, ktl::FromUtf8(names[i]).GetString(), corners[i].x, corners[i].y);
    }
    return text;
}

constexpr const char *kEnglishCorners[] = {"BottomLeft", "TopLeft", "TopRight", "BottomRight"};
constexpr const char *kChineseCorners[] = {"左下角", "左上角", "右上角", "右下角"};

CString ChineseHeader(int width, int height) {
    CString text;
    text.Format(ktl::FromUtf8("图片宽度(像素):%d\n图片高度(像素):%d\n\n"), width, height);
    return text;
}

CString ChineseCorners(const EXTENT &extent) {
    return Corners(extent, "%s:%.15f,%.15f\n", kChineseCorners) + "\n";
}

CString EnglishSummary(const EXTENT &degrees, int width, int height) {
    CString text;
    text.Format("Width:%d\nHeight:%d\n\n", width, height);
    return text + Corners(degrees, "%s:%f,%f\n", kEnglishCorners);
}

EXTENT Metres(EXTENT extent, int isLB) {
    EXTENT metres;
    KtlGetProjectXY(extent.left, extent.bottom, metres.left, metres.bottom, isLB);
    KtlGetProjectXY(extent.right, extent.top, metres.right, metres.top, isLB);
    return metres;
}

CString ChineseSummary(const EXTENT &degrees, int width, int height) {
    return ChineseHeader(width, height) + ktl::FromUtf8("Web墨卡托坐标系（地图原始坐标）\n") +
           ChineseCorners(Metres(degrees, 1)) + ktl::FromUtf8("WGS84坐标系（经纬度坐标）\n") + ChineseCorners(degrees) +
           ktl::FromUtf8("说明：Web墨卡托坐标的单位是米，WGS84坐标的单位是度。\n");
}

CString WorldFileText(const EXTENT &extent, int width, int height) {
    CString text;
    text.Format("%.15f\n%d\n%d\n%.15f\n%.15f\n%.15f\n", (extent.right - extent.left) / width, 0, 0,
                (extent.top - extent.bottom) / -static_cast<double>(height), extent.left, extent.top);
    return text;
}

/// A sidecar that cannot be made is left out; the world file is good without it.
void WriteSidecar(const CString &path, std::string_view text) {
    CFile file;
    if (!file.Open(path, kReplaceFile)) return;
    file.Write(text.data(), static_cast<UINT>(text.size()));
    file.Close();
}

void ExportWorldFile(const CString &path, const EXTENT &extent, int width, int height, const char *sidecarEnd,
                     std::string_view sidecar) {
    constexpr int kErrorCode = 100088;
    try {
        WriteText(path, WorldFileText(extent, width, height));
        WriteSidecar(path.Left(path.GetLength() - 3) + sidecarEnd, sidecar);
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
    }
}

void ExportWorldFile(const CString &path, const EXTENT &extent, ENUM_MAP_TYPE type, int isLB, int width, int height,
                     const char *sidecarEnd) {
    if (IsWGS(type)) {
        ExportWorldFile(path, extent, width, height, sidecarEnd, ktl::kDegreeSidecar);
    } else {
        ExportWorldFile(path, Metres(extent, isLB), width, height, sidecarEnd, ktl::kMercatorSidecar);
    }
}

}  // namespace

void ExportCoordLBWGS(CString path, EXTENT extent, int width, int height) {
    WriteText(path, ChineseHeader(width, height) + ChineseCorners(extent));
}

void ExportCoordLB(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height) {
    if (IsWGS(type)) {
        ExportCoordLBWGS(path, extent, width, height);
        return;
    }
    if (isLB == 0) {
        KtlGetLB(extent.left, extent.bottom, extent.left, extent.bottom);
        KtlGetLB(extent.right, extent.top, extent.right, extent.top);
    }
    WriteText(path, ktl::CoordSummary(extent, width, height));
}

void ExportCoordJGWWGS(CString path, EXTENT extent, int width, int height) {
    ExportWorldFile(path, extent, width, height, kJpegSidecar, ktl::kDegreeSidecar);
}

void ExportCoordJGW(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height) {
    ExportWorldFile(path, extent, type, isLB, width, height, kJpegSidecar);
}

void ExportCoordTFWWGS(CString path, EXTENT extent, int width, int height) {
    ExportWorldFile(path, extent, width, height, kTiffSidecar, ktl::kDegreeSidecar);
}

void ExportCoordTFW(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height) {
    ExportWorldFile(path, extent, type, isLB, width, height, kTiffSidecar);
}

namespace ktl {

CString CoordSummary(const EXTENT &degrees, int width, int height, Language language) {
    return language == Language::Chinese ? ChineseSummary(degrees, width, height)
                                         : EnglishSummary(degrees, width, height);
}

}  // namespace ktl
