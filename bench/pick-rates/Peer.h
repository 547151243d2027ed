// Another library that casts the same rays into the same triangles.
#pragma once

#include "Loads.h"
#include "platform/scenegraph/picking/PickedArray.h"

#include <memory>
#include <string>

namespace lumora::bench
{

class Peer
{
public:
    virtual ~Peer() = default;
    virtual std::string Name() const = 0;

    /// Builds its tree on one thread, at the quality it means for scenes that stay; answers the seconds without the
    /// copying of vertices and indices.
    virtual double Build(const Mesh& mesh) = 0;

    /// The distance of the nearest hit, or infinity.
    virtual float Nearest(const Ray& ray) = 0;
};

/// Nothing where the program was built without one.
std::unique_ptr<Peer> MakePeer();

/// The distance of the nearest hit of a unit ray, or infinity: every triangle is tested, eight at a time where the
/// processor can (Möller and Trumbore, in single precision).
float PlainSweep(const DrawMesh& mesh, const Ray& ray);

} // namespace lumora::bench
