// What rows of several tables do alike.
#pragma once

#include "automation/DispatchTable.h"
#include "base/Vector.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/Frame.h"

#include <algorithm>
#include <iterator>

namespace lumora::automation
{

/// The element of a list, error 9 outside it.
template<typename List>
auto ElementOf(const List& list, std::int32_t index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= list.size())
        throw RuntimeError{error::SubscriptOutOfRange, "automation",
                           "Subscript out of range: " + std::to_string(index) + " of " + std::to_string(list.size())};
    return list[static_cast<std::size_t>(index)];
}

/// Gives a caller a vector in three arguments.
inline void Split(Vector vector, float& x, float& y, float& z)
{
    x = vector.x;
    y = vector.y;
    z = vector.z;
}

inline void Split(const Box& box, float& minX, float& minY, float& minZ, float& maxX, float& maxY, float& maxZ)
{
    Split(box.minimum, minX, minY, minZ);
    Split(box.maximum, maxX, maxY, maxZ);
}

/// What every object of the scene has.
template<typename Target>
std::vector<MemberRow<Target>> WithNames(std::vector<MemberRow<Target>> rows)
{
    rows.push_back(Property(
        "Name", [](const Target& target) -> std::string { return target.Name(); },
        [](Target& target, const std::string& name) { target.SetName(name); }, "a name for the host"));
    rows.push_back(Property(
        "AppData", [](const Target& target) { return target.GetAppData(); },
        [](Target& target, std::int32_t data) { target.SetAppData(data); },
        "a number for the host; on a mesh it decides whether picks see it"));
    return rows;
}

/// Error RMBadValue for what is none of the three.
inline CombineType CombineFrom(std::int32_t combine)
{
    if (combine < 0 || combine > 2)
        RaiseBadValue("Frame", "Combine is 0 replace, 1 before or 2 after");
    return static_cast<CombineType>(combine);
}

/// Rows in the order of publishing: their places are the members' numbers.
template<typename Target>
std::vector<MemberRow<Target>> Joined(std::vector<MemberRow<Target>> rows, std::vector<MemberRow<Target>> later)
{
    std::ranges::move(later, std::back_inserter(rows));
    return rows;
}

} // namespace lumora::automation
