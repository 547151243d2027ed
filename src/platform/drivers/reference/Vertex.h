// What the stages of the reference driver hand on to each other.
#pragma once

#include "base/Matrix.h"

namespace lumora::reference
{

/// A texture's answer, or a surface's colour with its alpha. All in 0..1.
struct Color4
{
    Double3 color;
    double alpha = 1;

    friend Color4 operator+(Color4 a, Color4 b) { return {a.color + b.color, a.alpha + b.alpha}; }
    friend Color4 operator*(Color4 a, double s) { return {a.color * s, a.alpha * s}; }
};

/// Everything that is interpolated over a primitive.
struct Attributes
{
    Color4 diffuse;
    Double3 highlight;
    double eyeDepth = 0; ///< camera-space z
    double u = 0;
    double v = 0;

    friend Attributes operator+(Attributes a, Attributes b)
    {
        return {a.diffuse + b.diffuse, a.highlight + b.highlight, a.eyeDepth + b.eyeDepth, a.u + b.u, a.v + b.v};
    }
    friend Attributes operator*(Attributes a, double s)
    {
        return {a.diffuse * s, a.highlight * s, a.eyeDepth * s, a.u * s, a.v * s};
    }
};

/// A vertex in clip space, where every attribute is linear along an edge.
struct ClipVertex
{
    Double4 position;
    Attributes attributes;
};

/// 0..1; NaN becomes 0.
inline double Clamp01(double value)
{
    return value > 0 ? (value < 1 ? value : 1.0) : 0.0;
}
inline Double3 Clamp01(Double3 v)
{
    return {Clamp01(v.x), Clamp01(v.y), Clamp01(v.z)};
}

/// Component by component.
inline Double3 Product(Double3 a, Double3 b)
{
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}

} // namespace lumora::reference
