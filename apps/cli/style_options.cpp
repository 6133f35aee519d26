#include "apps/cli/style_options.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string>

#include "apps/cli/command.h"
#include "host/color.h"
#include "host/text_number.h"

namespace ktl::cli {

namespace {

using host::StyledSource;

constexpr short kWidest = 64;
constexpr std::size_t kLongestDashPattern = 16;

// Sets what an option says; false for a value that makes no sense.
using Setter = bool (*)(StyledSource &source, const std::string &value);

bool SetColor(COLORREF &target, const std::string &value) {
    const auto color = host::ParseColor(value);
    if (color) target = *color;
    return color.has_value();
}

bool SetColorOrNone(std::optional<COLORREF> &target, const std::string &value) {
    if (host::LowerAscii(value) == "none") {
        target.reset();
        return true;
    }
    const auto color = host::ParseColor(value);
    if (color) target = color;
    return color.has_value();
}

bool SetNumber(short &target, const std::string &value, short least, short most) {
    const auto number = host::ParseNumber<short>(value);
    if (!number || *number < least || *number > most) return false;
    target = *number;
    return true;
}

bool SetDashes(StyledSource &source, const std::string &value) {
    const auto dashes = host::ParseNumbers<float>(value, ',');
    if (!dashes || dashes->size() < 2 || dashes->size() > kLongestDashPattern) return false;
    for (const float dash : *dashes) {
        if (!(dash > 0.0F && dash <= 1000.0F)) return false;
    }
    source.style.lineStyle = 4;
    source.style.dashStyle = 5;
    source.style.dashes = *dashes;
    return true;
}

bool SetHatch(StyledSource &source, const std::string &value) {
    if (host::LowerAscii(value) == "none") {
        source.style.hatch = -1;
        return true;
    }
    const auto hatch = host::ParseHatch(value);
    if (hatch) source.style.hatch = *hatch;
    return hatch.has_value();
}

struct SourceOption {
    const char *name;
    const char *wants;
    Setter set;
};

constexpr const char *kColor = "a colour (#RRGGBB, #RGB or a name)";
constexpr const char *kColorOrNone = "a colour (#RRGGBB, #RGB or a name) or none";

const SourceOption kSourceOptions[] = {
    {"--layer", "a layer's name",
     [](StyledSource &s, const std::string &v) {
         s.source.layer = v;
         return !v.empty();
     }},
    {"--where", "a filter",
     [](StyledSource &s, const std::string &v) {
         s.source.where = v;
         return !v.empty();
     }},
    {"--fill", kColorOrNone, [](StyledSource &s, const std::string &v) { return SetColorOrNone(s.style.fill, v); }},
    {"--hatch", "a hatch's name or number from 0 to 52, or none", SetHatch},
    {"--hatch-back", kColor, [](StyledSource &s, const std::string &v) { return SetColor(s.style.hatchBack, v); }},
    {"--line", kColorOrNone, [](StyledSource &s, const std::string &v) { return SetColorOrNone(s.style.line, v); }},
    {"--line-width", "a width from 1 to 64",
     [](StyledSource &s, const std::string &v) { return SetNumber(s.style.lineWidth, v, 1, kWidest); }},
    {"--line-style", "solid, cased, rail, dash, dot, dashdot or dashdotdot",
     [](StyledSource &s, const std::string &v) { return host::SetLineStyleByName(s.style, v); }},
    {"--dash", "2 to 16 lengths above 0, as 6,3", SetDashes},
    {"--casing", kColor, [](StyledSource &s, const std::string &v) { return SetColor(s.style.casing.emplace(), v); }},
    {"--point", kColorOrNone, [](StyledSource &s, const std::string &v) { return SetColorOrNone(s.style.point, v); }},
    {"--point-line", kColorOrNone,
     [](StyledSource &s, const std::string &v) { return SetColorOrNone(s.style.pointLine, v); }},
    {"--point-size", "a size from 1 to 64",
     [](StyledSource &s, const std::string &v) { return SetNumber(s.style.pointSize, v, 1, kWidest); }},
    {"--symbol", "a .png or .gif file",
     [](StyledSource &s, const std::string &v) {
         s.style.symbol = v;
         return !v.empty();
     }},
    {"--alpha", "an opacity from 0 to 255",
     [](StyledSource &s, const std::string &v) { return SetNumber(s.style.alpha, v, 0, 255); }},
};

const SourceOption *FindOption(const std::string &name) {
    const auto *found = std::find_if(std::begin(kSourceOptions), std::end(kSourceOptions),
                                     [&](const SourceOption &option) { return option.name == name; });
    return found == std::end(kSourceOptions) ? nullptr : found;
}

void Apply(const SourceOption &option, const std::string &value, StyledSource &source) {
    if (option.set(source, value)) return;
    throw UsageError(std::string(option.name) + " takes " + option.wants + ", not '" + value + "'");
}

}  // namespace

StyleOptions::StyleOptions(CLI::App &command) : m_command(command) {
    m_source = command.add_option("SOURCE", m_values.emplace_back());
    for (const SourceOption &option : kSourceOptions) {
        command.add_option(option.name, m_values.emplace_back())->allow_extra_args(false);
    }
}

std::vector<StyledSource> StyleOptions::Sources() const {
    StyledSource defaults;
    std::vector<StyledSource> sources;
    std::map<const CLI::Option *, std::size_t> used;
    for (const CLI::Option *option : m_command.parse_order()) {
        if (option == m_source) {
            sources.push_back(defaults);
            sources.back().source.path = option->results().at(used[option]++);
        } else if (const SourceOption *sourceOption = FindOption(option->get_name())) {
            Apply(*sourceOption, option->results().at(used[option]++), sources.empty() ? defaults : sources.back());
        }
    }
    return sources;
}

}  // namespace ktl::cli
