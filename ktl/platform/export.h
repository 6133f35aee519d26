#pragma once

/// Marks what libktl.so exports; everything else stays hidden.
#define KTL_API __attribute__((visibility("default")))
