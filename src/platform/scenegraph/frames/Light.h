// A light; the frames it is added to say where it stands and where it points.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/scenegraph/frames/SceneObject.h"

namespace lumora
{

/// Setters raise RMBadValue for numbers that are not finite, and for negative ranges, attenuations and angles.
class Light : public SceneObject
{
public:
    Light(LightKind kind, Vector color);

    LightKind Kind() const { return kind_; }

    /// Red, green, blue; may exceed 1.
    Vector GetColor() const { return color_; }
    void SetColor(float red, float green, float blue);

    /// Scene units; unlimited at first (the largest Single).
    float Range() const { return range_; }
    void SetRange(float range);

    /// Divisors of point and spot light at distance d: constant + linear d + quadratic d². At first 1, 0, 0.
    void SetAttenuation(float constant, float linear, float quadratic);
    Vector Attenuation() const { return attenuation_; }

    /// Full angles of a spot's bright and whole cone, radians; at first 0.4 and 0.5.
    void SetCone(float umbra, float penumbra);
    float Umbra() const { return umbra_; }
    float Penumbra() const { return penumbra_; }

    /// The light as a driver wants it, standing in a frame with this world transform: at its origin, along its z axis.
    LightState In(const Matrix4& world) const;

private:
    LightKind kind_;
    Vector color_;
    float range_;
    Vector attenuation_{1, 0, 0};
    float umbra_ = 0.4F;
    float penumbra_ = 0.5F;
};

} // namespace lumora
