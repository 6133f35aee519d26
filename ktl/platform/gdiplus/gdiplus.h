#pragma once

/// \file
/// The whole of drawing.

#include "ktl/platform/gdiplus/bitmap.h"
#include "ktl/platform/gdiplus/brush.h"
#include "ktl/platform/gdiplus/codecs.h"
#include "ktl/platform/gdiplus/font.h"
#include "ktl/platform/gdiplus/graphics.h"
#include "ktl/platform/gdiplus/graphics_path.h"
#include "ktl/platform/gdiplus/image_attributes.h"
#include "ktl/platform/gdiplus/pen.h"
#include "ktl/platform/gdiplus/startup.h"
#include "ktl/platform/gdiplus/string_format.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/gdiplus/vector_page.h"
