// An image on a mesh.
#pragma once

#include "platform/drivers/DrawMesh.h"
#include "platform/scenegraph/frames/SceneObject.h"

#include <span>

namespace lumora
{

class Texture : public SceneObject
{
public:
    /// The largest side, in pixels.
    static constexpr int MaximumSide = 16384;

    /// Copies `pixels` (0xAARRGGBB, rows from top to bottom). Error RMBadValue when a side is outside
    /// 1 .. MaximumSide or the number of pixels is not width * height.
    Texture(int width, int height, std::span<const std::uint32_t> pixels);

    const std::shared_ptr<const TextureImage>& Image() const { return image_; }

private:
    std::shared_ptr<const TextureImage> image_;
};

} // namespace lumora
