#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/types.h"

/// \file
/// Drawing has to be started before any object of this namespace is made. Starts nest: each gives a token of its own,
/// and drawing ends with the shutdown of the last one. Both calls may be made on any thread.
///
///     ULONG_PTR token = 0;
///     Gdiplus::GdiplusStartupInput input;
///     Gdiplus::GdiplusStartup(&token, &input, nullptr);
///     ...
///     Gdiplus::GdiplusShutdown(token);

using ULONG_PTR = std::uintptr_t;

namespace Gdiplus {

/// Kinds of calls that a host hands in or gets; the library makes none of them.
enum DebugEventLevel { DebugEventLevelFatal, DebugEventLevelWarning };
using DebugEventProc = void (*)(DebugEventLevel level, char *message);
using NotificationHookProc = Status (*)(ULONG_PTR *token);
using NotificationUnhookProc = void (*)(ULONG_PTR token);

/// What a host asks for at the start. The versions 1 and 2 are known.
struct KTL_API GdiplusStartupInput {
    UINT GdiplusVersion = 1;
    DebugEventProc DebugEventCallback = nullptr;
    BOOL SuppressBackgroundThread = FALSE;
    BOOL SuppressExternalCodecs = FALSE;

    GdiplusStartupInput(DebugEventProc debugEventCallback = nullptr, BOOL suppressBackgroundThread = FALSE,
                        BOOL suppressExternalCodecs = FALSE)
        : DebugEventCallback(debugEventCallback),
          SuppressBackgroundThread(suppressBackgroundThread),
          SuppressExternalCodecs(suppressExternalCodecs) {}
};

/// The hooks that a host with a suppressed background thread has to call; null otherwise. Neither has work to do here.
struct GdiplusStartupOutput {
    NotificationHookProc NotificationHook = nullptr;
    NotificationUnhookProc NotificationUnhook = nullptr;
};

/// Starts drawing and stores a token that is not 0. A null token or input, and a suppressed background thread without
/// an output, give InvalidParameter; a version other than 1 and 2 gives UnsupportedGdiplusVersion.
KTL_API Status GdiplusStartup(ULONG_PTR *token, const GdiplusStartupInput *input, GdiplusStartupOutput *output);

/// Ends the start that gave `token`. A token that is 0, unknown or used already has no effect. All objects of this
/// namespace must be gone before the last shutdown.
KTL_API void GdiplusShutdown(ULONG_PTR token);

}  // namespace Gdiplus

namespace ktl::raster {

/// True between the first start and the last shutdown. What creates an object asks it, and answers
/// GdiplusNotInitialized when it is false.
KTL_API bool DrawingStarted();

}  // namespace ktl::raster
