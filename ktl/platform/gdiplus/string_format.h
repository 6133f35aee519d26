#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/types.h"

namespace Gdiplus {

/// How a string is laid out: its place in or at its box, wrapping, and what becomes of text that is too long.
///
/// A new one is like `GenericDefault`: near in both directions, wraps, cuts at a character, and leaves a sixth of an em
/// free on either side. `GenericTypographic` leaves none, doesn't cut and doesn't clip.
class KTL_API StringFormat {
  public:
    explicit StringFormat(INT flags = 0, WORD language = 0);
    explicit StringFormat(const StringFormat *format);
    StringFormat(const StringFormat &) = default;
    StringFormat &operator=(const StringFormat &) = default;
    /// They belong to the library.
    static const StringFormat *GenericDefault();
    static const StringFormat *GenericTypographic();
    /// A copy, which the caller owns.
    StringFormat *Clone() const;

    /// A sum of StringFormatFlags. NoWrap, NoClip, LineLimit, NoFitBlackBox and MeasureTrailingSpaces are acted upon.
    Status SetFormatFlags(INT flags);
    INT GetFormatFlags() const;
    /// An unknown value is InvalidParameter and changes nothing; so in the next two.
    Status SetAlignment(StringAlignment alignment);
    StringAlignment GetAlignment() const;
    Status SetLineAlignment(StringAlignment alignment);
    StringAlignment GetLineAlignment() const;
    Status SetTrimming(StringTrimming trimming);
    StringTrimming GetTrimming() const;
    Status GetLastStatus() const;

    /// Free room on either side of a line, in ems: 1/6, or 0 in a typographic format.
    REAL Padding() const { return m_typographic ? 0.0F : 1.0F / 6.0F; }
    bool IsTypographic() const { return m_typographic; }

  private:
    Status SetResult(Status status) const;

    INT m_flags = 0;
    StringAlignment m_alignment = StringAlignmentNear;
    StringAlignment m_lineAlignment = StringAlignmentNear;
    StringTrimming m_trimming = StringTrimmingCharacter;
    bool m_typographic = false;
    Status m_loadStatus = Ok;
    mutable Status m_lastStatus = Ok;
};

}  // namespace Gdiplus
