#pragma once

#include "tests/support/drawing_start.h"

namespace ktl::test {

using DrawingSession = DrawingStart;

}  // namespace ktl::test
