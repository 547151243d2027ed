// Stands in for the list of drivers in a tree that has only its header.
#include "platform/automation/RuntimeError.h"
#include "platform/drivers/DriverList.h"

namespace lumora
{

std::unique_ptr<Driver> DriverList::Create(const Guid& guid) const
{
    for (const Entry& entry : entries_)
        if (entry.guid == guid)
            return entry.create();
    throw RuntimeError{error::DDInvalidParams, "DriverList", "There is no such driver"};
}

} // namespace lumora
