// What Assimp says about things it left out, as sentences for a person.
#pragma once

#include <string>
#include <vector>

namespace lumora
{

/// Starts to listen; at most `limit` different notices are kept. Most of what Assimp logs means nothing to a person:
/// only messages about missing materials and dropped faces count. `notices` must outlive all use of Assimp.
void CollectNotices(std::vector<std::string>& notices, std::size_t limit);

} // namespace lumora
