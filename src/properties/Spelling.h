// What somebody who misspelt a name may have meant.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace lumora
{

/// Equal but for the case of ASCII letters.
bool EqualIgnoringCase(std::string_view left, std::string_view right);

/// The index of the candidate that takes the fewest insertions, deletions, replacements and swaps of neighbours to
/// become `text`, case apart; the first of equals. `candidates` must not be empty.
std::size_t NearestSpelling(std::string_view text, std::span<const std::string_view> candidates);

} // namespace lumora
