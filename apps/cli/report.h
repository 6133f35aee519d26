#pragma once

#include <string>

#include "host/render.h"

namespace ktl::cli {

/// What was drawn and written, in lines for a person and as one JSON object; both UTF-8 with an end of line.
std::string ReportText(const host::RenderOptions &options, const host::RenderResult &result);
std::string ReportJson(const host::RenderOptions &options, const host::RenderResult &result);

}  // namespace ktl::cli
