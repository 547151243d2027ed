// Positions over time, for a frame.
#pragma once

#include "platform/scenegraph/frames/Frame.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumora
{

/// Options of an animation, added together: closed or open, linear or spline, and that its keys are positions.
namespace animation
{
inline constexpr std::uint32_t Open = 0x01;
inline constexpr std::uint32_t Closed = 0x02;
inline constexpr std::uint32_t LinearPosition = 0x04;
inline constexpr std::uint32_t SplinePosition = 0x08;
inline constexpr std::uint32_t Position = 0x20;
} // namespace animation

/// Moves the bound frame (relative to its parent) through position keys: linear, or by a Catmull-Rom spline (whose
/// tangents take the keys' own times into account), both through every key. Closed animations go on from the last key
/// to the first over the same time as the first step and repeat; open ones stop at their ends.
class Animation : public SceneObject
{
public:
    enum class Interpolation
    {
        Linear,
        Spline,
    };

    void SetInterpolation(Interpolation interpolation) { interpolation_ = interpolation; }
    void SetClosed(bool closed) { closed_ = closed; }

    /// Interpolation and ends at once, as a sum of animation:: values: Position, one of Open and Closed, one of
    /// LinearPosition and SplinePosition. RMBadValue for any other sum.
    void SetOptions(std::uint32_t options);
    std::uint32_t GetOptions() const;

    struct Key
    {
        float time;
        Vector position;
    };

    /// By time.
    const std::vector<Key>& Keys() const { return keys_; }

    /// Adds a key, or replaces the one at the same time. RMBadValue for numbers that are not finite.
    void AddPositionKey(float time, float x, float y, float z);

    /// The frame that SetTime moves, or nothing.
    const std::shared_ptr<Frame>& BoundFrame() const { return frame_; }
    void SetFrame(const std::shared_ptr<Frame>& frame);

    /// The position at `time`; RMNotFound without keys.
    Vector PositionAt(float time) const;

    /// Moves the bound frame (if any) to its place at `time`.
    void SetTime(float time);

private:
    struct Instant
    {
        double time;
        Double3 position;
    };

    double Period() const;                         // of a closed animation
    Instant KeyAt(std::ptrdiff_t index) const;     // beyond the ends: the key of another round
    Double3 TangentAt(std::ptrdiff_t index) const; // scene units per unit of time
    Vector Between(double time) const;

    std::vector<Key> keys_; // by time
    Interpolation interpolation_ = Interpolation::Linear;
    bool closed_ = false;
    std::shared_ptr<Frame> frame_;
};

} // namespace lumora
