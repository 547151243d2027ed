// The list of Direct3D drivers that a control chooses from.
#include "platform/drivers/DriverList.h"

#include "base/RuntimeError.h"

#include <algorithm>

namespace lumora
{

namespace
{

constexpr const char* Source = "DriverList";

} // namespace

const DriverList::Entry& DriverList::At(int index) const
{
    if (index < 0 || index >= Count())
        throw RuntimeError{error::SubscriptOutOfRange, Source,
                           "There is no Direct3D driver " + std::to_string(index) + "; the list has " +
                               std::to_string(Count()) + ", counted from 0."};
    return entries_[static_cast<std::size_t>(index)];
}

std::unique_ptr<Driver> DriverList::Create(const Guid& guid) const
{
    const auto entry = std::ranges::find(entries_, guid, &Entry::guid);
    if (entry == entries_.end())
        throw RuntimeError{error::DDInvalidParams, Source, "No Direct3D driver of the list has this identifier."};
    return entry->create();
}

} // namespace lumora
