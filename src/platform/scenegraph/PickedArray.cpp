#include "platform/scenegraph/PickedArray.h"

#include "platform/automation/Faults.h"
#include "platform/automation/RuntimeError.h"

namespace lumora
{

std::int32_t PickedArray::GetSize() const
{
    faults::Point("PickedArray.GetSize");
    return static_cast<std::int32_t>(hits_.size());
}

const PickHit& PickedArray::GetPick(std::int32_t index) const
{
    faults::Point("PickedArray.GetPick");
    if (index < 0 || static_cast<std::size_t>(index) >= hits_.size())
        throw RuntimeError{error::SubscriptOutOfRange, "PickedArray",
                           "There is no hit " + std::to_string(index) + " among " + std::to_string(hits_.size())};
    return hits_[static_cast<std::size_t>(index)];
}

} // namespace lumora
