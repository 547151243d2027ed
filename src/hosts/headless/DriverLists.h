// Lists of drivers as other machines would have them.
#pragma once

#include "platform/drivers/DriverList.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace lumora::headless
{

/// `list` without the drivers of this identifier name.
std::shared_ptr<const DriverList> WithoutDriver(const std::shared_ptr<const DriverList>& list, std::string_view name);

/// `list` with the driver of this identifier name at `index`, the others in their order. SubscriptOutOfRange for an
/// index outside the list, InvalidCall for a name that is not in it.
std::shared_ptr<const DriverList> WithDriverAt(const std::shared_ptr<const DriverList>& list, std::string_view name,
                                               std::int32_t index);

/// `list`, but creating a driver of this identifier name raises `number`.
std::shared_ptr<const DriverList> FailingOnCreation(const std::shared_ptr<const DriverList>& list,
                                                    std::string_view name, std::int32_t number);

/// `list`, but a driver of this identifier name is made by `create`.
std::shared_ptr<const DriverList> MadeBy(const std::shared_ptr<const DriverList>& list, std::string_view name,
                                         const std::function<std::unique_ptr<Driver>()>& create);

} // namespace lumora::headless
