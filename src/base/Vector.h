// Three Singles, as positions and directions cross every interface.
#pragma once

#include <cmath>

namespace lumora
{

struct Vector
{
    float x = 0;
    float y = 0;
    float z = 0;

    friend bool operator==(const Vector&, const Vector&) = default;
    friend Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vector operator*(Vector v, float factor) { return {v.x * factor, v.y * factor, v.z * factor}; }
    friend Vector operator-(Vector v) { return {-v.x, -v.y, -v.z}; }
};

/// Homogeneous screen vector: x, y, z are multiplied by w.
struct Vector4
{
    float x = 0;
    float y = 0;
    float z = 0;
    float w = 0;
};

inline bool IsFinite(Vector v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// A box whose sides are parallel to the axes. Empty (minimum above maximum) until a point is included.
struct Box
{
    Vector minimum{INFINITY, INFINITY, INFINITY};
    Vector maximum{-INFINITY, -INFINITY, -INFINITY};

    bool IsEmpty() const { return !(minimum.x <= maximum.x); }

    void Include(Vector point)
    {
        minimum = {std::fmin(minimum.x, point.x), std::fmin(minimum.y, point.y), std::fmin(minimum.z, point.z)};
        maximum = {std::fmax(maximum.x, point.x), std::fmax(maximum.y, point.y), std::fmax(maximum.z, point.z)};
    }

    void Include(const Box& other)
    {
        if (other.IsEmpty())
            return;
        Include(other.minimum);
        Include(other.maximum);
    }

    Vector Centre() const { return (minimum + maximum) * 0.5F; }
    Vector Corner(int index) const
    {
        return {(index & 1) != 0 ? maximum.x : minimum.x, (index & 2) != 0 ? maximum.y : minimum.y,
                (index & 4) != 0 ? maximum.z : minimum.z};
    }
};

} // namespace lumora
