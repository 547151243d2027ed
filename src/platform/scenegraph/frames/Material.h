// How a surface answers light.
#pragma once

#include "platform/drivers/DrawMesh.h"
#include "platform/scenegraph/frames/SceneObject.h"

namespace lumora
{

/// Components are red, green, blue, meant as 0..1. Error RMBadValue for numbers that are not finite or negative.
/// Changing a material changes every mesh that has it, from the next picture on.
class Material : public SceneObject
{
public:
    explicit Material(float power);

    float Power() const { return surface_.power; }
    void SetPower(float power);
    Vector Specular() const { return surface_.specular; }
    void SetSpecular(float red, float green, float blue);
    Vector Emissive() const { return surface_.emissive; }
    void SetEmissive(float red, float green, float blue);

    const SurfaceMaterial& Surface() const { return surface_; }

    /// Grows with every change.
    std::uint64_t Revision() const { return revision_; }

private:
    SurfaceMaterial surface_;
    std::uint64_t revision_ = 0;
};

} // namespace lumora
