#include "base/Trap.h"

#include <algorithm>
#include <array>

namespace lumora
{

namespace
{

constexpr std::int32_t PersonCancelled = 32755;

// 16 is "expression too complex"; 3075 and 3077 come from the expression service of older containers.
constexpr std::array TransientErrors = {error::Overflow,    error::DivisionByZero, std::int32_t{16},
                                        std::int32_t{3075}, std::int32_t{3077},    error::RMBadDevice};

} // namespace

ErrorDisposition GeneralErrorHandler(std::int32_t errorNumber) noexcept
{
    if (std::ranges::find(TransientErrors, errorNumber) != TransientErrors.end())
        return ErrorDisposition::Retry;
    return errorNumber == PersonCancelled ? ErrorDisposition::Cancelled : ErrorDisposition::Failed;
}

std::string GetErrorDescription(std::int32_t code)
{
    return code == 2 ? "Unable to create Direct3D Device" : "";
}

} // namespace lumora
