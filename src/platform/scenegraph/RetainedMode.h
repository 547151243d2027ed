// The root object: makes everything else of the scene graph, and computes with vectors.
#pragma once

#include "platform/directdraw/DirectDraw.h"
#include "platform/drivers/DriverList.h"
#include "platform/scenegraph/Device.h"
#include "platform/scenegraph/RMViewport.h"
#include "platform/scenegraph/frames/Animation.h"
#include "platform/scenegraph/frames/Frame.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"
#include "platform/scenegraph/picking/PickedArray.h"

namespace lumora
{

class RetainedMode : public Object
{
public:
    explicit RetainedMode(std::shared_ptr<const DriverList> drivers);

    /// Must be called once before anything else.
    void Initialise();

    /// From now on devices are made with these. RMBadObject for nothing.
    void SetDrivers(std::shared_ptr<const DriverList> drivers);

    std::shared_ptr<Frame> CreateFrame(const std::shared_ptr<Frame>& parent);
    std::shared_ptr<MeshBuilder> CreateMeshBuilder();
    std::shared_ptr<Material> CreateMaterial(float power);
    std::shared_ptr<Texture> CreateTexture(int width, int height, std::span<const std::uint32_t> pixels);
    std::shared_ptr<Light> CreateLight(LightKind kind, Vector color);
    std::shared_ptr<Animation> CreateAnimation();

    /// Errors: what the driver raises when it cannot be created, RMBadObject, RMBadValue (see Device).
    std::shared_ptr<Device> CreateDeviceFromClipper(const std::shared_ptr<Clipper>& clipper, const Guid& driver,
                                                    int width, int height);
    std::shared_ptr<Device> CreateDeviceFromSurface(const Guid& driver, const std::shared_ptr<DirectDraw>& directDraw,
                                                    const std::shared_ptr<Surface>& surface);
    std::shared_ptr<RMViewport> CreateViewport(const std::shared_ptr<Device>& device,
                                               const std::shared_ptr<Frame>& camera, int x, int y, int width,
                                               int height);

    // Vector operations: double precision within, Singles out. Errors: RMBadValue when a result is not finite.

    /// `vector` turned about `axis` by `angle` radians (q v q⁻¹ with q = (cos θ/2, sin θ/2 · unit axis)), of unit
    /// length. A zero vector or axis gives the vector itself, normalised.
    Vector VectorRotate(Vector vector, Vector axis, float angle);
    float VectorModulus(Vector vector);
    Vector VectorScale(Vector vector, float factor);
    Vector VectorNormalize(Vector vector); ///< a zero vector stays zero
    float VectorDotProduct(Vector a, Vector b);
    Vector VectorCrossProduct(Vector a, Vector b);

private:
    std::shared_ptr<const DriverList> drivers_;
};

} // namespace lumora
