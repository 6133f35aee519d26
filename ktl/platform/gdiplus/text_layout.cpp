#include "ktl/platform/gdiplus/text_layout.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <list>
#include <string>
#include <unordered_map>

#include "ktl/platform/gdiplus/typeface.h"
#include "ktl/platform/gdiplus/wide_text.h"

namespace ktl::raster {

namespace {

struct ObjectDeleter {
    void operator()(void *object) const { g_object_unref(object); }
};
struct ScaledFontDeleter {
    void operator()(cairo_scaled_font_t *font) const { cairo_scaled_font_destroy(font); }
};
using ScaledFontPtr = std::unique_ptr<cairo_scaled_font_t, ScaledFontDeleter>;
using FontMapPtr = std::unique_ptr<PangoFontMap, ObjectDeleter>;
using ContextPtr = std::unique_ptr<PangoContext, ObjectDeleter>;
using LayoutPtr = std::unique_ptr<PangoLayout, ObjectDeleter>;

constexpr double kUnit = PANGO_SCALE;

}  // namespace

/// A string broken into lines, without a place yet.
struct ShapedText {
    /// Glyphs of one font, from the line's begin and its baseline.
    struct Run {
        ScaledFontPtr font;
        std::vector<cairo_glyph_t> glyphs;
    };

    struct Line {
        /// The layout's; null when the layout is not kept.
        PangoLayoutLine *line = nullptr;
        std::vector<Run> runs;
        /// Advances without trailing blanks, and with them.
        double width = 0;
        double widthWithBlanks = 0;
        /// Characters of the string up to the end of this line, the newline with them.
        int codepointsThrough = 0;
    };

    /// Kept only where there is more to draw than glyphs.
    LayoutPtr layout;
    std::vector<Line> lines;
};

namespace {

using namespace Gdiplus;
using ShapedPtr = std::shared_ptr<const ShapedText>;

/// What a layout is kept under.
struct ShapeKey {
    std::wstring text;
    const Typeface *face = nullptr;
    double em = 0;
    int style = 0;
    bool isAntialiased = true;
    /// In Pango's units; -1 sets no limit.
    int width = -1;
    PangoEllipsizeMode ellipsis = PANGO_ELLIPSIZE_NONE;
    /// Lines after which an ellipsis ends the text; 0 sets no limit.
    int lines = 0;

    friend bool operator==(const ShapeKey &, const ShapeKey &) = default;
};

struct ShapeKeyHash {
    std::size_t operator()(const ShapeKey &key) const {
        std::size_t hash = std::hash<std::wstring>()(key.text);
        const auto mix = [&hash](std::size_t value) { hash = (hash ^ value) * 0x9E3779B97F4A7C15ULL; };
        mix(reinterpret_cast<std::uintptr_t>(key.face));
        mix(std::hash<double>()(key.em));
        mix(static_cast<std::size_t>(key.style) << 1 | (key.isAntialiased ? 1U : 0U));
        mix(static_cast<std::size_t>(key.width));
        mix(static_cast<std::size_t>(key.ellipsis) << 8 ^ static_cast<std::size_t>(key.lines));
        return hash;
    }
};

/// The texts that were asked for last.
class ShapeCache {
  public:
    ShapedPtr Find(const ShapeKey &key) {
        const auto found = m_entries.find(key);
        if (found == m_entries.end()) return nullptr;
        m_order.splice(m_order.begin(), m_order, found->second.place);
        return found->second.shaped;
    }

    void Keep(const ShapeKey &key, ShapedPtr shaped) {
        const auto entry = m_entries.emplace(key, Entry{std::move(shaped), {}}).first;
        m_order.push_front(&entry->first);
        entry->second.place = m_order.begin();
        if (m_order.size() <= kMost) return;
        m_entries.erase(m_entries.find(*m_order.back()));
        m_order.pop_back();
    }

  private:
    /// The labels of a full map; each takes about a kilobyte.
    static constexpr std::size_t kMost = 8192;
    struct Entry {
        ShapedPtr shaped;
        std::list<const ShapeKey *>::iterator place;
    };

    std::unordered_map<ShapeKey, Entry, ShapeKeyHash> m_entries;
    std::list<const ShapeKey *> m_order;
};

ContextPtr MakeContext(PangoFontMap *fonts, bool isAntialiased) {
    ContextPtr context(pango_font_map_create_context(fonts));
    cairo_font_options_t *options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, isAntialiased ? CAIRO_ANTIALIAS_GRAY : CAIRO_ANTIALIAS_NONE);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context.get(), options);
    cairo_font_options_destroy(options);
    // Ideographs that Chinese and Japanese write differently are written the Chinese way.
    pango_context_set_language(context.get(), pango_language_from_string("zh-cn"));
    pango_context_set_round_glyph_positions(context.get(), FALSE);
    return context;
}

/// Pango's objects belong to one thread, and go with it. The font map is no one else's: the default one would be left
/// over at the end of the program.
struct ThreadTools {
    FontMapPtr fonts{pango_cairo_font_map_new()};
    ContextPtr gray = MakeContext(fonts.get(), true);
    ContextPtr plain = MakeContext(fonts.get(), false);
    ShapeCache cache;
};

ThreadTools &Tools() {
    thread_local ThreadTools tools;
    return tools;
}

constexpr int kLineStyles = FontStyleUnderline | FontStyleStrikeout;

void SetFont(PangoLayout *layout, const ShapeKey &key) {
    PangoFontDescription *font = pango_font_description_new();
    pango_font_description_set_family(font, key.face->faces.c_str());
    pango_font_description_set_absolute_size(font, key.em * kUnit);
    if (key.style & FontStyleBold) pango_font_description_set_weight(font, PANGO_WEIGHT_BOLD);
    if (key.style & FontStyleItalic) pango_font_description_set_style(font, PANGO_STYLE_ITALIC);
    pango_layout_set_font_description(layout, font);
    pango_font_description_free(font);
    if ((key.style & kLineStyles) == 0) return;
    PangoAttrList *lines = pango_attr_list_new();
    if (key.style & FontStyleUnderline) {
        pango_attr_list_insert(lines, pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
    }
    if (key.style & FontStyleStrikeout) pango_attr_list_insert(lines, pango_attr_strikethrough_new(TRUE));
    pango_layout_set_attributes(layout, lines);
    pango_attr_list_unref(lines);
}

constexpr wchar_t kZeroWidth = 0x200B;

/// The text with one character for each of the original: carriage returns and NULs become characters without a width.
std::wstring Printable(std::wstring_view text) {
    std::wstring printable(text);
    std::replace(printable.begin(), printable.end(), L'\r', kZeroWidth);
    std::replace(printable.begin(), printable.end(), L'\0', kZeroWidth);
    return printable;
}

bool IsBlank(gunichar c) {
    return c == ' ' || c == '\t' || c == static_cast<gunichar>(kZeroWidth) || c == 0x3000;
}

double AdvanceTo(PangoLayoutLine *line, int index) {
    int x = 0;
    pango_layout_line_index_to_x(line, index, FALSE, &x);
    return x / kUnit;
}

/// Fills in the widths of a line. Of a line that is nothing but blanks one blank counts.
void MeasureLine(const char *text, ShapedText::Line &out) {
    PangoRectangle logical;
    pango_layout_line_get_extents(out.line, nullptr, &logical);
    out.widthWithBlanks = logical.width / kUnit;
    out.width = out.widthWithBlanks;
    const char *begin = text + out.line->start_index;
    const char *end = begin + out.line->length;
    const char *last = end;
    while (last > begin && IsBlank(g_utf8_get_char(g_utf8_prev_char(last)))) last = g_utf8_prev_char(last);
    if (last == end) return;
    if (last == begin) last = g_utf8_next_char(begin);
    out.width = std::min(out.width, AdvanceTo(out.line, static_cast<int>(last - text)));
}

void CollectLines(ShapedText &shaped) {
    const char *text = pango_layout_get_text(shaped.layout.get());
    const char *counted = text;
    int codepoints = 0;
    for (GSList *node = pango_layout_get_lines_readonly(shaped.layout.get()); node; node = node->next) {
        ShapedText::Line line;
        line.line = static_cast<PangoLayoutLine *>(node->data);
        MeasureLine(text, line);
        const char *end = text + line.line->start_index + line.line->length;
        if (*end == '\n') ++end;
        codepoints += static_cast<int>(g_utf8_strlen(counted, end - counted));
        counted = end;
        line.codepointsThrough = codepoints;
        shaped.lines.push_back(std::move(line));
    }
}

/// Takes the glyphs of a line out of the layout; false when one of them is no glyph of a font.
bool CollectRuns(ShapedText::Line &line) {
    int x = 0;
    for (GSList *node = line.line->runs; node; node = node->next) {
        const auto *item = static_cast<const PangoGlyphItem *>(node->data);
        PangoFont *font = item->item->analysis.font;
        cairo_scaled_font_t *scaled = font ? pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font)) : nullptr;
        if (!scaled) return false;
        ShapedText::Run run;
        run.font.reset(cairo_scaled_font_reference(scaled));
        for (int i = 0; i < item->glyphs->num_glyphs; ++i) {
            const PangoGlyphInfo &glyph = item->glyphs->glyphs[i];
            if (glyph.glyph & PANGO_GLYPH_UNKNOWN_FLAG) return false;
            if (glyph.glyph != PANGO_GLYPH_EMPTY) {
                run.glyphs.push_back(
                    {glyph.glyph, (x + glyph.geometry.x_offset) / kUnit, glyph.geometry.y_offset / kUnit});
            }
            x += glyph.geometry.width;
        }
        if (!run.glyphs.empty()) line.runs.push_back(std::move(run));
    }
    return true;
}

/// Without the layout a text takes little room and is drawn faster.
void DropLayout(ShapedText &shaped) {
    for (ShapedText::Line &line : shaped.lines) {
        if (!CollectRuns(line)) return;
    }
    for (ShapedText::Line &line : shaped.lines) line.line = nullptr;
    shaped.layout.reset();
}

std::shared_ptr<ShapedText> MakeShape(const ShapeKey &key) {
    const ThreadTools &tools = Tools();
    auto shaped = std::make_shared<ShapedText>();
    shaped->layout.reset(pango_layout_new((key.isAntialiased ? tools.gray : tools.plain).get()));
    PangoLayout *layout = shaped->layout.get();
    SetFont(layout, key);
    if (key.width >= 0) pango_layout_set_width(layout, key.width);
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_ellipsize(layout, key.ellipsis);
    if (key.lines > 0) pango_layout_set_height(layout, -key.lines);
    const std::string utf8 = Utf8FromWide(key.text);
    pango_layout_set_text(layout, utf8.data(), static_cast<int>(utf8.size()));
    CollectLines(*shaped);
    return shaped;
}

ShapedPtr Shape(const ShapeKey &key) {
    ShapeCache &cache = Tools().cache;
    if (ShapedPtr kept = cache.Find(key)) return kept;
    const std::shared_ptr<ShapedText> shaped = MakeShape(key);
    if ((key.style & kLineStyles) == 0) DropLayout(*shaped);
    cache.Keep(key, shaped);
    return shaped;
}

/// A text drawn into its own measured box must not wrap, whatever was rounded on the way.
constexpr double kSlack = 0.5;

int ToPangoWidth(double width) {
    return static_cast<int>(std::clamp(width, 0.0, 1.0e6) * kUnit);
}

bool HasFlag(const TextRequest &request, int flag) {
    return (request.format->GetFormatFlags() & flag) != 0;
}

/// Room for the letters in the area; negative where it sets no limit.
double RoomFor(const TextRequest &request) {
    if (!(request.area.Width > 0)) return -1;
    return std::max(0.0, request.area.Width - 2.0 * request.format->Padding() * request.em) + kSlack;
}

PangoEllipsizeMode EllipsisOf(StringTrimming trimming) {
    if (trimming == StringTrimmingEllipsisPath) return PANGO_ELLIPSIZE_MIDDLE;
    return trimming >= StringTrimmingEllipsisCharacter ? PANGO_ELLIPSIZE_END : PANGO_ELLIPSIZE_NONE;
}

/// Free height under the lines of a text, as a part of the em.
double BottomPadding(const TextRequest &request) {
    return request.format->IsTypographic() ? 0 : request.em / 8;
}

/// How many lines of a text of `count` lines have a place in the area. A line counts when its top is inside; under
/// LineLimit, when all of it is.
int LinesThatFit(const TextRequest &request, int count) {
    if (!(request.area.Height > 0) || HasFlag(request, StringFormatFlagsNoClip)) return count;
    const double spacing = request.face->LineSpacing(request.em);
    if (!(spacing > 0)) return count;
    const double fit = (request.area.Height + kSlack) / spacing;
    const bool whole = HasFlag(request, StringFormatFlagsLineLimit);
    return static_cast<int>(std::min<double>(count, whole ? std::floor(fit) : std::max(1.0, std::ceil(fit))));
}

/// The characters of a line that fit into a width: whole ones, or whole words.
std::size_t FittingLength(const ShapedText &shaped, std::wstring_view line, double room, bool byWords) {
    const ShapedText::Line &whole = shaped.lines.front();
    if (whole.width <= room) return line.size();
    const char *text = pango_layout_get_text(shaped.layout.get());
    std::size_t fits = 0;
    std::size_t fittingWords = 0;
    const char *at = text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        at = g_utf8_next_char(at);
        if (AdvanceTo(whole.line, static_cast<int>(at - text)) > room) break;
        fits = i + 1;
        if (i + 1 < line.size() && IsBlank(static_cast<gunichar>(line[i + 1]))) fittingWords = fits;
    }
    return byWords && fittingWords > 0 ? fittingWords : fits;
}

/// Without wrapping: each line of the text cut to the room there is, with what was cut off dropped.
std::wstring CutLines(const TextRequest &request, const std::wstring &text, ShapeKey key, double room) {
    std::wstring cut;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(L'\n', at), text.size());
        key.text = text.substr(at, end - at);
        const bool byWords = request.format->GetTrimming() == StringTrimmingWord;
        cut.append(key.text, 0, FittingLength(*MakeShape(key), key.text, room, byWords));
        if (end < text.size()) cut.push_back(L'\n');
        at = end + 1;
    }
    return cut;
}

ShapedPtr ShapeRequest(const TextRequest &request) {
    ShapeKey key;
    key.text = Printable(request.text);
    key.face = request.face;
    key.em = request.em;
    key.style = request.style;
    key.isAntialiased = request.isAntialiased;
    const double room = RoomFor(request);
    const StringTrimming trimming = request.format->GetTrimming();
    const bool wraps = !HasFlag(request, StringFormatFlagsNoWrap);
    if (room < 0) return Shape(key);
    if (EllipsisOf(trimming) != PANGO_ELLIPSIZE_NONE) {
        key.width = ToPangoWidth(room);
        key.ellipsis = EllipsisOf(trimming);
        key.lines = wraps ? std::max(1, LinesThatFit(request, 1 << 20)) : 1;
    } else if (wraps) {
        key.width = ToPangoWidth(room);
    } else if (trimming != StringTrimmingNone) {
        const ShapedPtr whole = Shape(key);
        const auto isTooWide = [room](const ShapedText::Line &line) { return line.width > room; };
        if (std::any_of(whole->lines.begin(), whole->lines.end(), isTooWide)) {
            key.text = CutLines(request, key.text, key, room);
        }
    }
    return Shape(key);
}

double WidthOf(const TextRequest &request, const ShapedText::Line &line) {
    return HasFlag(request, StringFormatFlagsMeasureTrailingSpaces) ? line.widthWithBlanks : line.width;
}

/// Where a piece of that size begins in a room: near, in the middle or far.
double Aligned(StringAlignment alignment, double begin, double room, double size) {
    return begin + (room - size) * static_cast<int>(alignment) / 2;
}

/// The size of the box of the first `count` lines: as large as the text, but within the area where that clips.
SizeF BoxSize(const TextRequest &request, const ShapedText &shaped, int count) {
    double width = 0;
    for (int i = 0; i < count; ++i)
        width = std::max(width, WidthOf(request, shaped.lines[static_cast<std::size_t>(i)]));
    width += 2.0 * request.format->Padding() * request.em;
    double height = count * request.face->LineSpacing(request.em) + BottomPadding(request);
    if (!HasFlag(request, StringFormatFlagsNoClip)) {
        if (request.area.Width > 0) width = std::min<double>(width, request.area.Width);
        if (request.area.Height > 0) height = std::min<double>(height, request.area.Height);
    }
    return {static_cast<REAL>(width), static_cast<REAL>(height)};
}

void PlaceLines(const TextRequest &request, int count, TextBlock &block) {
    const double padding = request.format->Padding() * request.em;
    const double spacing = request.face->LineSpacing(request.em);
    const double top =
        Aligned(request.format->GetLineAlignment(), request.area.Y, request.area.Height, block.box.Height);
    for (int i = 0; i < count; ++i) {
        const double width = WidthOf(request, block.shaped->lines[static_cast<std::size_t>(i)]) + 2 * padding;
        const double x = Aligned(request.format->GetAlignment(), request.area.X, request.area.Width, width);
        block.lines.push_back({i, x + padding, top + i * spacing + request.face->Ascent(request.em)});
        const bool tooWide = request.area.Width > 0 && width > request.area.Width + kSlack;
        const bool tooLow = request.area.Height > 0 && (i + 1) * spacing > request.area.Height + kSlack;
        block.needsClip = block.needsClip || tooWide || tooLow;
    }
    block.needsClip = block.needsClip && !HasFlag(request, StringFormatFlagsNoClip);
}

}  // namespace

TextBlock PlaceText(const TextRequest &request) {
    TextBlock block;
    block.box = RectF(request.area.X, request.area.Y, 0, 0);
    if (request.text.empty()) return block;
    block.shaped = ShapeRequest(request);
    const int count = LinesThatFit(request, static_cast<int>(block.shaped->lines.size()));
    if (count == 0) return block;
    const SizeF size = BoxSize(request, *block.shaped, count);
    block.box.Width = size.Width;
    block.box.Height = size.Height;
    PlaceLines(request, count, block);
    const auto &format = *request.format;
    block.box.X = static_cast<REAL>(Aligned(format.GetAlignment(), request.area.X, request.area.Width, size.Width));
    block.box.Y =
        static_cast<REAL>(Aligned(format.GetLineAlignment(), request.area.Y, request.area.Height, size.Height));
    block.codepoints = block.shaped->lines[static_cast<std::size_t>(count) - 1].codepointsThrough;
    return block;
}

namespace {

void DrawRun(cairo_t *cairo, const ShapedText::Run &run, double x, double baseline) {
    thread_local std::vector<cairo_glyph_t> placed;
    placed.assign(run.glyphs.begin(), run.glyphs.end());
    for (cairo_glyph_t &glyph : placed) {
        glyph.x += x;
        glyph.y += baseline;
    }
    cairo_set_scaled_font(cairo, run.font.get());
    cairo_show_glyphs(cairo, placed.data(), static_cast<int>(placed.size()));
}

}  // namespace

void DrawTextBlock(cairo_t *cairo, const TextBlock &block) {
    for (const TextBlock::Line &place : block.lines) {
        const ShapedText::Line &line = block.shaped->lines[static_cast<std::size_t>(place.index)];
        if (line.line) {
            cairo_move_to(cairo, place.x, place.baseline);
            pango_cairo_show_layout_line(cairo, line.line);
        } else {
            for (const ShapedText::Run &run : line.runs) DrawRun(cairo, run, place.x, place.baseline);
        }
    }
    cairo_new_path(cairo);
}

}  // namespace ktl::raster
