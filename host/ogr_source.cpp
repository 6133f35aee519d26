#include "host/ogr_source.h"

#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <cmath>
#include <memory>

#include "host/error.h"
#include "host/ogr_open.h"

namespace ktl::host {

namespace {

constexpr long long kFeaturesBetweenReports = 1000;

std::string Quoted(const std::string &name) {
    return "'" + name + "'";
}

std::vector<OGRLayer *> ChosenLayers(GDALDataset &dataset, const SourceOptions &options) {
    if (options.layer.empty()) return PublicLayers(dataset);
    return {&FindLayer(dataset, options.path, options.layer)};
}

void ApplyFilter(OGRLayer &layer, const SourceOptions &options, GdalMessages &messages) {
    if (options.where.empty()) return;
    messages.Forget();
    if (layer.SetAttributeFilter(options.where.c_str()) == OGRERR_NONE) return;
    throw Error("bad filter " + Quoted(options.where) + " for layer " + Quoted(layer.GetName()) + ": " +
                messages.Failure());
}

struct TransformDeleter {
    void operator()(OGRCoordinateTransformation *t) const { OGRCoordinateTransformation::DestroyCT(t); }
};
using Transform = std::unique_ptr<OGRCoordinateTransformation, TransformDeleter>;

// From the layer's coordinate system to degrees, longitude first. Empty where the layer is in such degrees already.
Transform ToDegrees(OGRLayer &layer, ReadReport &report, GdalMessages &messages) {
    const OGRSpatialReference *from = layer.GetSpatialRef();
    if (from == nullptr) return nullptr;
    if (from->IsLocal()) {
        report.notes.push_back("layer " + Quoted(layer.GetName()) + " has a local coordinate system: taken as degrees");
        return nullptr;
    }
    OGRSpatialReference source(*from);
    source.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    OGRSpatialReference degrees;
    degrees.SetWellKnownGeogCS("WGS84");
    degrees.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    if (source.IsSame(&degrees)) return nullptr;
    messages.Forget();
    Transform transform(OGRCreateCoordinateTransformation(&source, &degrees));
    if (!transform) {
        throw Error("cannot turn the coordinates of layer " + Quoted(layer.GetName()) +
                    " into degrees: " + messages.Failure());
    }
    return transform;
}

bool IsFinite(const OGRGeometry &geometry) {
    class Finder : public OGRDefaultConstGeometryVisitor {
      public:
        using OGRDefaultConstGeometryVisitor::visit;
        void visit(const OGRPoint *point) override { Look(point->getX(), point->getY()); }
        void visit(const OGRLineString *line) override {
            for (int i = 0; i < line->getNumPoints(); ++i) Look(line->getX(i), line->getY(i));
        }
        void Look(double x, double y) { finite = finite && std::isfinite(x) && std::isfinite(y); }
        bool finite = true;
    };
    Finder finder;
    geometry.accept(&finder);
    return finder.finite;
}

// Takes one feature's geometry apart, cuts it and hands the pieces on.
class Dissector {
  public:
    Dissector(const MapArea &area, GeometrySink &sink) : m_area(area), m_sink(sink) {}

    void Take(const OGRGeometry &geometry) {
        switch (wkbFlatten(geometry.getGeometryType())) {
            case wkbPoint:
                return TakePoint(*geometry.toPoint());
            case wkbLineString:
            case wkbLinearRing:
                return TakeLine(*geometry.toSimpleCurve());
            case wkbPolygon:
            case wkbTriangle:
                return TakePolygon(*geometry.toPolygon());
            case wkbMultiPoint:
            case wkbMultiLineString:
            case wkbMultiPolygon:
            case wkbGeometryCollection:
                for (const OGRGeometry *part : *geometry.toGeometryCollection()) Take(*part);
                return;
            case wkbPolyhedralSurface:
            case wkbTIN:
                for (const OGRPolygon *part : *geometry.toPolyhedralSurface()) TakePolygon(*part);
                return;
            default:
                m_unsupported = true;
        }
    }

    // Adds the feature to the one count that tells what became of it.
    void CountInto(ReadReport &report) const {
        if (m_handedOut) {
            if (m_lost) ++report.clipped;
        } else if (m_lost) {
            ++report.outside;
        } else if (m_unsupported) {
            ++report.unsupported;
        } else {
            ++report.withoutGeometry;
        }
    }

  private:
    static Path PathOf(const OGRSimpleCurve &curve) {
        Path path(static_cast<std::size_t>(curve.getNumPoints()));
        for (int i = 0; i < curve.getNumPoints(); ++i)
            path[static_cast<std::size_t>(i)] = {curve.getX(i), curve.getY(i)};
        return path;
    }

    void Note(Cut cut) {
        m_lost |= cut != Cut::kWhole;
        m_handedOut |= cut != Cut::kOutside;
    }

    void TakePoint(const OGRPoint &point) {
        if (point.IsEmpty()) return;
        Path kept;
        Note(CutPoint({point.getX(), point.getY()}, m_area, kept));
        if (!kept.empty()) m_sink.AddPoint(kept.front());
    }

    void TakeLine(const OGRSimpleCurve &line) {
        if (line.getNumPoints() == 1) return TakePoint(OGRPoint(line.getX(0), line.getY(0)));
        if (line.getNumPoints() < 2) return;
        std::vector<Path> pieces;
        Note(CutLine(PathOf(line), m_area, pieces));
        for (Path &piece : pieces) m_sink.AddLine(std::move(piece));
    }

    void TakePolygon(const OGRPolygon &polygon) {
        std::vector<Path> pieces;
        int rings = 0;
        for (const OGRLinearRing *ring : polygon) {
            if (ring->getNumPoints() < 3) continue;
            Note(CutRing(PathOf(*ring), m_area, pieces));
            ++rings;
        }
        if (rings > 1) {
            if (!pieces.empty()) m_sink.AddArea(std::move(pieces));
            return;
        }
        for (Path &piece : pieces) {
            std::vector<Path> single;
            single.push_back(std::move(piece));
            m_sink.AddArea(std::move(single));
        }
    }

    const MapArea &m_area;
    GeometrySink &m_sink;
    bool m_handedOut = false;
    bool m_lost = false;
    bool m_unsupported = false;
};

class LayerReader {
  public:
    LayerReader(OGRLayer &layer, const MapArea &area, GeometrySink &sink, ReadReport &report, GdalMessages &messages)
        : m_layer(layer),
          m_area(area),
          m_sink(sink),
          m_report(report),
          m_messages(messages),
          m_toDegrees(ToDegrees(layer, report, messages)) {
        messages.Forget();
    }

    // False at the layer's end. A driver that fails on the way ends the layer too, but for its message.
    bool ReadNext() {
        OGRFeatureUniquePtr feature(m_layer.GetNextFeature());
        if (!feature || m_messages.Failed()) return false;
        ++m_report.features;
        std::unique_ptr<OGRGeometry> geometry(feature->StealGeometry());
        if (geometry) {
            TakeGeometry(std::move(geometry));
        } else {
            ++m_report.withoutGeometry;
        }
        return true;
    }

  private:
    void TakeGeometry(std::unique_ptr<OGRGeometry> geometry) {
        if (geometry->hasCurveGeometry()) geometry.reset(geometry->getLinearGeometry());
        if (!IsFinite(*geometry)) {
            ++m_report.notFinite;
        } else if (!Reproject(*geometry)) {
            ++m_report.notReprojected;
        } else {
            Dissector dissector(m_area, m_sink);
            dissector.Take(*geometry);
            dissector.CountInto(m_report);
        }
    }

    bool Reproject(OGRGeometry &geometry) {
        if (!m_toDegrees) return true;
        const bool done = geometry.transform(m_toDegrees.get()) == OGRERR_NONE && IsFinite(geometry);
        if (!done) m_messages.Forget();
        return done;
    }

    OGRLayer &m_layer;
    const MapArea &m_area;
    GeometrySink &m_sink;
    ReadReport &m_report;
    GdalMessages &m_messages;
    Transform m_toDegrees;
};

long long CountFeatures(const std::vector<OGRLayer *> &layers) {
    long long total = 0;
    for (OGRLayer *layer : layers) {
        const auto count = layer->GetFeatureCount(FALSE);
        if (count < 0) return -1;
        total += count;
    }
    return total;
}

void Report(const ProgressCallback &progress, const Progress &where) {
    if (progress && !progress(where)) throw Interrupted();
}

// `promised` counts features of a layer that gave none: some drivers don't tell when a file ends before its first one.
void CheckReadToTheEnd(const SourceOptions &options, const GdalMessages &messages, long long promised) {
    if (!messages.Failed() && promised <= 0) return;
    const std::string why = messages.Failed() ? messages.Failure() : "no feature is left of what it promises";
    throw Error("cannot read " + Quoted(options.path) + " to its end: " + why);
}

}  // namespace

void ReadReport::Add(const ReadReport &other) {
    features += other.features;
    withoutGeometry += other.withoutGeometry;
    unsupported += other.unsupported;
    notFinite += other.notFinite;
    notReprojected += other.notReprojected;
    outside += other.outside;
    clipped += other.clipped;
    notes.insert(notes.end(), other.notes.begin(), other.notes.end());
}

ReadReport ReadSource(const SourceOptions &options, const MapArea &area, GeometrySink &sink,
                      const ProgressCallback &progress) {
    GdalMessages messages;
    const GdalMessages::Listening listening(messages);
    Report(progress, {"opening", 0, -1});
    const GDALDatasetUniquePtr dataset = OpenOgr(options.path, messages);
    const std::vector<OGRLayer *> layers = ChosenLayers(*dataset, options);
    for (OGRLayer *layer : layers) ApplyFilter(*layer, options, messages);
    const long long total = CountFeatures(layers);
    ReadReport report;
    for (OGRLayer *layer : layers) {
        const long long before = report.features;
        LayerReader reader(*layer, area, sink, report, messages);
        while (reader.ReadNext()) {
            if (report.features % kFeaturesBetweenReports == 0) Report(progress, {"reading", report.features, total});
        }
        CheckReadToTheEnd(options, messages, report.features == before ? CountFeatures({layer}) : 0);
    }
    Report(progress, {"reading", report.features, report.features});
    return report;
}

}  // namespace ktl::host
