#include "platform/scenegraph/frames/Animation.h"

#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"

#include <algorithm>
#include <cmath>

namespace lumora
{

namespace
{

constexpr const char* Source = "Animation";

// A cubic through a and b with the tangents `leaving` and `arriving` (per unit of time), `fraction` of `duration` on.
Double3 Hermite(Double3 a, Double3 leaving, Double3 b, Double3 arriving, double fraction, double duration)
{
    const double square = fraction * fraction;
    const double cube = square * fraction;
    return a * (2 * cube - 3 * square + 1) + leaving * ((cube - 2 * square + fraction) * duration) +
           b * (3 * square - 2 * cube) + arriving * ((cube - square) * duration);
}

} // namespace

void Animation::SetOptions(std::uint32_t options)
{
    faults::Point("Animation.SetOptions");
    using namespace animation;
    const auto oneOf = [options](std::uint32_t a, std::uint32_t b)
    { return ((options & a) != 0) != ((options & b) != 0); };
    constexpr std::uint32_t known = Open | Closed | LinearPosition | SplinePosition | Position;
    if ((options & ~known) != 0 || (options & Position) == 0 || !oneOf(Open, Closed) ||
        !oneOf(LinearPosition, SplinePosition))
        RaiseBadValue(Source, "The options " + std::to_string(options) + " name no way to move through positions");
    interpolation_ = (options & SplinePosition) != 0 ? Interpolation::Spline : Interpolation::Linear;
    closed_ = (options & Closed) != 0;
}

std::uint32_t Animation::GetOptions() const
{
    faults::Point("Animation.GetOptions");
    using namespace animation;
    return Position | (interpolation_ == Interpolation::Spline ? SplinePosition : LinearPosition) |
           (closed_ ? Closed : Open);
}

void Animation::AddPositionKey(float time, float x, float y, float z)
{
    faults::Point("Animation.AddPositionKey");
    RequireFinite(Source, {time, x, y, z});
    const auto place = std::ranges::lower_bound(keys_, time, {}, &Key::time);
    if (place != keys_.end() && place->time == time)
        place->position = {x, y, z};
    else
        keys_.insert(place, {time, {x, y, z}});
}

void Animation::SetFrame(const std::shared_ptr<Frame>& frame)
{
    faults::Point("Animation.SetFrame");
    frame_ = frame;
}

Animation::Instant Animation::KeyAt(std::ptrdiff_t index) const
{
    const auto count = static_cast<std::ptrdiff_t>(keys_.size());
    const double period = Period();
    const std::ptrdiff_t round = index >= 0 ? index / count : (index - count + 1) / count;
    const Key& key = keys_[static_cast<std::size_t>(index - round * count)];
    return {static_cast<double>(key.time) + static_cast<double>(round) * period, key.position};
}

double Animation::Period() const
{
    const double start = keys_.front().time;
    return keys_.back().time - start + (keys_[1].time - start);
}

Double3 Animation::TangentAt(std::ptrdiff_t index) const
{
    const auto last = static_cast<std::ptrdiff_t>(keys_.size()) - 1;
    const std::ptrdiff_t before = closed_ ? index - 1 : std::max<std::ptrdiff_t>(index - 1, 0);
    const std::ptrdiff_t after = closed_ ? index + 1 : std::min(index + 1, last);
    const Instant from = KeyAt(before);
    const Instant to = KeyAt(after);
    return (to.position - from.position) * (1.0 / (to.time - from.time));
}

Vector Animation::PositionAt(float time) const
{
    faults::Point("Animation.PositionAt");
    RequireFinite(Source, {time});
    if (keys_.empty())
        throw RuntimeError{error::RMNotFound, Source, "The animation has no keys"};
    if (keys_.size() == 1)
        return keys_.front().position;

    double at = time;
    if (closed_)
    {
        const double start = keys_.front().time;
        at = std::fmod(at - start, Period());
        at += at < 0 ? start + Period() : start;
    }
    else if (time <= keys_.front().time || time >= keys_.back().time)
        return time <= keys_.front().time ? keys_.front().position : keys_.back().position;
    return Between(at);
}

Vector Animation::Between(double time) const
{
    const auto next = std::ranges::upper_bound(keys_, time, {}, [](const Key& key) { return double{key.time}; });
    const std::ptrdiff_t index = std::max<std::ptrdiff_t>(next - keys_.begin() - 1, 0);
    const Instant from = KeyAt(index);
    const Instant to = KeyAt(index + 1);
    const double duration = to.time - from.time;
    const double fraction = std::clamp((time - from.time) / duration, 0.0, 1.0);
    if (interpolation_ == Interpolation::Linear)
        return (from.position * (1 - fraction) + to.position * fraction).ToVector();
    return Hermite(from.position, TangentAt(index), to.position, TangentAt(index + 1), fraction, duration).ToVector();
}

void Animation::SetTime(float time)
{
    faults::Point("Animation.SetTime");
    const Vector position = PositionAt(time);
    if (frame_)
        frame_->SetPosition(frame_->Parent(), position.x, position.y, position.z);
}

} // namespace lumora
