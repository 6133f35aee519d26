#include "ktl/webmap/georeference.h"

#include <exception>
#include <string_view>

#include "ktl/core/log.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"
#include "ktl/platform/stdio_file.h"
#include "ktl/webmap/projection.h"

namespace {

constexpr int kErrorCode = 100088;
constexpr UINT kCreateAndWrite = CFile::modeCreate | CFile::modeWrite;
constexpr int kExtensionLength = 3;

/// Resource 4011: a map in Web Mercator metres.
constexpr std::string_view kMetresSidecar =
    R"(<PAMDataset>
  <SRS>PROJCS[&quot;WGS_1984_Web_Mercator&quot;,GEOGCS[&quot;GCS_WGS_1984_Major_Auxiliary_Sphere&quot;,DATUM[&quot;WGS_1984_Major_Auxiliary_Sphere&quot;,SPHEROID[&quot;WGS_1984_Major_Auxiliary_Sphere&quot;,6378137.0,0.0]],PRIMEM[&quot;Greenwich&quot;,0.0],UNIT[&quot;Degree&quot;,0.0174532925199433]],PROJECTION[&quot;Mercator_1SP&quot;],PARAMETER[&quot;False_Easting&quot;,0.0],PARAMETER[&quot;False_Northing&quot;,0.0],PARAMETER[&quot;Central_Meridian&quot;,0.0],PARAMETER[&quot;latitude_of_origin&quot;,0.0],UNIT[&quot;Meter&quot;,1.0]]</SRS>
  <Metadata domain="IMAGE_STRUCTURE">
    <MDI key="SOURCE_COLOR_SPACE">YCbCr</MDI>
    <MDI key="INTERLEAVE">PIXEL</MDI>
    <MDI key="COMPRESSION">JPEG</MDI>
  </Metadata>
  <Metadata domain="ESRI">
    <MDI key="PyramidResamplingType">NEAREST</MDI>
  </Metadata>
</PAMDataset>
)";

/// Resource 4012: a map in degrees.
constexpr std::string_view kDegreesSidecar =
    R"(<PAMDataset>
  <SRS>GEOGCS[&quot;WGS 84&quot;,DATUM[&quot;WGS_1984&quot;,SPHEROID[&quot;WGS 84&quot;,6378137,298.257223563,AUTHORITY[&quot;EPSG&quot;,&quot;7030&quot;]],AUTHORITY[&quot;EPSG&quot;,&quot;6326&quot;]],PRIMEM[&quot;Greenwich&quot;,0],UNIT[&quot;degree&quot;,0.0174532925199433],AUTHORITY[&quot;EPSG&quot;,&quot;4326&quot;]]</SRS>
  <Metadata domain="IMAGE_STRUCTURE">
    <MDI key="SOURCE_COLOR_SPACE">YCbCr</MDI>
    <MDI key="INTERLEAVE">PIXEL</MDI>
    <MDI key="COMPRESSION">JPEG</MDI>
  </Metadata>
  <Metadata>
    <MDI key="AREA_OR_POINT">Area</MDI>
  </Metadata>
  <PAMRasterBand band="1">
    <Metadata domain="IMAGE_STRUCTURE">
      <MDI key="COMPRESSION">JPEG</MDI>
    </Metadata>
  </PAMRasterBand>
  <PAMRasterBand band="2">
    <Metadata domain="IMAGE_STRUCTURE">
      <MDI key="COMPRESSION">JPEG</MDI>
    </Metadata>
  </PAMRasterBand>
  <PAMRasterBand band="3">
    <Metadata domain="IMAGE_STRUCTURE">
      <MDI key="COMPRESSION">JPEG</MDI>
    </Metadata>
  </PAMRasterBand>
</PAMDataset>
)";

/// The words of a summary and the conversion of its numbers.
struct SummaryWords {
    const char *header;
    const char *bottomLeft;
    const char *topLeft;
    const char *topRight;
    const char *bottomRight;
    const char *pair;
};
constexpr SummaryWords kEnglish = {
    "Width:%d\nHeight:%d\n\n", "BottomLeft", "TopLeft", "TopRight", "BottomRight", "%s:%f,%f\n"};
constexpr SummaryWords kChinese = {
    "图片宽度(像素):%d\n图片高度(像素):%d\n\n", "左下角", "左上角", "右上角", "右下角", "%s:%.15f,%.15f\n"};

CString Header(const SummaryWords &words, int width, int height) {
    CString text;
    text.Format(ktl::FromUtf8(words.header), width, height);
    return text;
}

CString Corners(const SummaryWords &words, const EXTENT &extent) {
    CString text;
    const auto add = [&](const char *name, double x, double y) {
        text.AppendFormat(words.pair, ktl::FromUtf8(name).GetString(), x, y);
    };
    add(words.bottomLeft, extent.left, extent.bottom);
    add(words.topLeft, extent.left, extent.top);
    add(words.topRight, extent.right, extent.top);
    add(words.bottomRight, extent.right, extent.bottom);
    return text;
}

void WriteText(const CString &path, const CString &text) {
    CStdioFile file(path, kCreateAndWrite);
    file.WriteString(text);
    file.Close();
}

EXTENT ToDegrees(EXTENT extent) {
    KtlGetLB(extent.left, extent.bottom, extent.left, extent.bottom);
    KtlGetLB(extent.right, extent.top, extent.right, extent.top);
    return extent;
}

EXTENT ToMetres(EXTENT extent, int isLB) {
    EXTENT metres;
    KtlGetProjectXY(extent.left, extent.bottom, metres.left, metres.bottom, isLB);
    KtlGetProjectXY(extent.right, extent.top, metres.right, metres.top, isLB);
    return metres;
}

CString WorldFile(const EXTENT &extent, int width, int height) {
    CString text;
    text.Format("%.15f\n%d\n%d\n%.15f\n%.15f\n%.15f\n", (extent.right - extent.left) / width, 0, 0,
                (extent.top - extent.bottom) / -height, extent.left, extent.top);
    return text;
}

void WriteWorldFile(const CString &path, const EXTENT &extent, int width, int height, std::string_view sidecar,
                    const char *sidecarEnding) {
    WriteText(path, WorldFile(extent, width, height));
    CFile file;
    const CString name = path.Left(path.GetLength() - kExtensionLength) + sidecarEnding;
    if (!file.Open(name, kCreateAndWrite)) return;
    file.Write(sidecar.data(), static_cast<UINT>(sidecar.size()));
    file.Close();
}

constexpr const char *kJpegSidecar = "jpg.aux.xml";
constexpr const char *kTiffSidecar = "tif.aux.xml";

template <class Work>
void Guarded(Work work) {
    try {
        work();
    } catch (const std::exception &) {
        KtlCatchError(kErrorCode, 1);
    }
}

void ExportDegrees(const CString &path, const EXTENT &extent, int width, int height, const char *ending) {
    Guarded([&] { WriteWorldFile(path, extent, width, height, kDegreesSidecar, ending); });
}

void ExportByType(const CString &path, const EXTENT &extent, ENUM_MAP_TYPE type, int isLB, int width, int height,
                  const char *ending) {
    if (IsWGS(type)) return ExportDegrees(path, extent, width, height, ending);
    Guarded([&] { WriteWorldFile(path, ToMetres(extent, isLB), width, height, kMetresSidecar, ending); });
}

}  // namespace

CString ktl::CoordSummary(const EXTENT &degrees, int width, int height, Language language) {
    if (language == Language::English) return Header(kEnglish, width, height) + Corners(kEnglish, degrees);
    return Header(kChinese, width, height) + ktl::FromUtf8("Web墨卡托坐标系（地图原始坐标）\n") +
           Corners(kChinese, ToMetres(degrees, 1)) + "\n" + ktl::FromUtf8("WGS84坐标系（经纬度坐标）\n") +
           Corners(kChinese, degrees) + "\n" + ktl::FromUtf8("说明：坐标为图片四角的外侧边缘。\n");
}

void ExportCoordLBWGS(CString path, EXTENT extent, int width, int height) {
    WriteText(path, Header(kChinese, width, height) + Corners(kChinese, extent) + "\n");
}

void ExportCoordLB(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height) {
    if (IsWGS(type)) return ExportCoordLBWGS(path, extent, width, height);
    if (isLB == 0) extent = ToDegrees(extent);
    WriteText(path, ktl::CoordSummary(extent, width, height));
}

void ExportCoordJGWWGS(CString path, EXTENT extent, int width, int height) {
    ExportDegrees(path, extent, width, height, kJpegSidecar);
}

void ExportCoordJGW(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height) {
    ExportByType(path, extent, type, isLB, width, height, kJpegSidecar);
}

void ExportCoordTFWWGS(CString path, EXTENT extent, int width, int height) {
    ExportDegrees(path, extent, width, height, kTiffSidecar);
}

void ExportCoordTFW(CString path, EXTENT extent, ENUM_MAP_TYPE type, int isLB, int width, int height) {
    ExportByType(path, extent, type, isLB, width, height, kTiffSidecar);
}
