#include "platform/scenegraph/picking/PickedArray.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"

#include <limits>

namespace lumora
{

bool PickedArray::Reach(std::size_t count) const
{
    while (hits_.size() < count && source_)
    {
        if (auto hit = source_->Next())
            hits_.push_back(std::make_unique<PickHit>(std::move(*hit)));
        else
            source_.reset();
    }
    return hits_.size() >= count;
}

std::int32_t PickedArray::GetSize() const
{
    faults::Point("PickedArray.GetSize");
    Reach(std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(hits_.size());
}

bool PickedArray::HasPick(std::int32_t index) const
{
    faults::Point("PickedArray.HasPick");
    return index >= 0 && Reach(static_cast<std::size_t>(index) + 1);
}

const PickHit& PickedArray::GetPick(std::int32_t index) const
{
    faults::Point("PickedArray.GetPick");
    if (index < 0 || !Reach(static_cast<std::size_t>(index) + 1))
        throw RuntimeError{error::SubscriptOutOfRange, "PickedArray",
                           "There is no hit " + std::to_string(index) + " among " + std::to_string(GetSize())};
    return *hits_[static_cast<std::size_t>(index)];
}

} // namespace lumora
