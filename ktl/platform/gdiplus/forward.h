#pragma once

#include "ktl/platform/gdiplus/types.h"

/// \file
/// The drawing classes, declared only.

namespace Gdiplus {

class Bitmap;
class Brush;
class Font;
class FontFamily;
class Graphics;
class GraphicsPath;
class HatchBrush;
class Image;
class ImageAttributes;
class Pen;
class SolidBrush;
class StringFormat;

}  // namespace Gdiplus
