#include "properties/Spelling.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace lumora
{

namespace
{

// Longer texts are no misspelling of a name; the table stays small whatever is typed.
constexpr std::size_t LongestText = 64;

char Lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// Damerau-Levenshtein distance, restricted to neighbours swapped once.
std::size_t EditDistance(std::string_view a, std::string_view b)
{
    const std::size_t width = b.size() + 1;
    std::vector<std::size_t> distance((a.size() + 1) * width);
    for (std::size_t j = 0; j < width; ++j)
        distance[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i)
    {
        distance[i * width] = i;
        for (std::size_t j = 1; j < width; ++j)
        {
            const bool same = Lower(a[i - 1]) == Lower(b[j - 1]);
            std::size_t best = std::min({distance[(i - 1) * width + j] + 1, distance[i * width + j - 1] + 1,
                                         distance[(i - 1) * width + j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) && Lower(a[i - 2]) == Lower(b[j - 1]))
                best = std::min(best, distance[(i - 2) * width + j - 2] + 1);
            distance[i * width + j] = best;
        }
    }
    return distance.back();
}

} // namespace

bool EqualIgnoringCase(std::string_view left, std::string_view right)
{
    return std::ranges::equal(left, right, [](char a, char b) { return Lower(a) == Lower(b); });
}

std::size_t NearestSpelling(std::string_view text, std::span<const std::string_view> candidates)
{
    const std::string_view start = text.substr(0, LongestText);
    std::size_t nearest = 0;
    std::size_t smallest = std::numeric_limits<std::size_t>::max();
    for (std::size_t i = 0; i < candidates.size(); ++i)
    {
        const std::size_t distance = EditDistance(start, candidates[i]);
        if (distance >= smallest)
            continue;
        smallest = distance;
        nearest = i;
    }
    return nearest;
}

} // namespace lumora
