// Copies of driver lists with entries left out or broken.
#include "hosts/headless/DriverLists.h"

#include "base/RuntimeError.h"

#include <algorithm>

namespace lumora::headless
{

namespace
{

std::vector<DriverList::Entry> EntriesOf(const DriverList& list)
{
    std::vector<DriverList::Entry> entries;
    for (int i = 0; i < list.Count(); ++i)
        entries.push_back(list.At(i));
    return entries;
}

} // namespace

std::shared_ptr<const DriverList> WithoutDriver(const std::shared_ptr<const DriverList>& list, std::string_view name)
{
    std::vector<DriverList::Entry> entries = EntriesOf(*list);
    std::erase_if(entries, [=](const DriverList::Entry& entry) { return entry.identifierName == name; });
    return std::make_shared<const DriverList>(std::move(entries));
}

std::shared_ptr<const DriverList> WithDriverAt(const std::shared_ptr<const DriverList>& list, std::string_view name,
                                               std::int32_t index)
{
    std::vector<DriverList::Entry> entries = EntriesOf(*list);
    if (index < 0 || static_cast<std::size_t>(index) >= entries.size())
        throw RuntimeError{error::SubscriptOutOfRange, "Host",
                           "Subscript out of range: " + std::to_string(index) + " of " +
                               std::to_string(entries.size()) + " drivers"};
    const auto driver = std::ranges::find(entries, name, &DriverList::Entry::identifierName);
    if (driver == entries.end())
        throw RuntimeError{error::InvalidCall, "Host",
                           "This machine has no driver \"" + std::string{name} + "\"; DriverName lists those it has"};
    DriverList::Entry moved = std::move(*driver);
    entries.erase(driver);
    entries.insert(entries.begin() + index, std::move(moved));
    return std::make_shared<const DriverList>(std::move(entries));
}

std::shared_ptr<const DriverList> FailingOnCreation(const std::shared_ptr<const DriverList>& list,
                                                    std::string_view name, std::int32_t number)
{
    return MadeBy(list, name,
                  [number, refused = std::string{name}]() -> std::unique_ptr<Driver> {
                      throw RuntimeError{number, "Direct3D", "This machine cannot create the driver " + refused};
                  });
}

std::shared_ptr<const DriverList> MadeBy(const std::shared_ptr<const DriverList>& list, std::string_view name,
                                         const std::function<std::unique_ptr<Driver>()>& create)
{
    std::vector<DriverList::Entry> entries = EntriesOf(*list);
    for (DriverList::Entry& entry : entries)
        if (entry.identifierName == name)
            entry.create = create;
    return std::make_shared<const DriverList>(std::move(entries));
}

} // namespace lumora::headless
