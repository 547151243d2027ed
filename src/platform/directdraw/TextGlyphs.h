// The letters that device contexts draw with: a fixed face of their own, the same on every machine.
#pragma once

#include <string_view>

namespace lumora
{

/// A glyph is 5 pixels wide and 9 high, the last two rows below the base line; cells leave one pixel between glyphs.
inline constexpr int GlyphWidth = 5;
inline constexpr int GlyphHeight = 9;
inline constexpr int CellWidth = GlyphWidth + 1;
inline constexpr int CellHeight = GlyphHeight + 1;

/// Whether the glyph of `character` has ink at (column, row), which lie within GlyphWidth by GlyphHeight. What is not
/// printable ASCII is an empty frame.
bool HasInk(char character, int column, int row);

} // namespace lumora
