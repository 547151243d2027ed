// A camera's view of a scene on a device.
#pragma once

#include "platform/scenegraph/Device.h"
#include "platform/scenegraph/frames/Frame.h"

namespace lumora
{

/// Projection types.
enum class Projection : std::int32_t
{
    Perspective = 0,
    Orthographic = 1,
    RightHandPerspective = 2, ///< as seen in a right-handed world: the camera looks along its negative z axis
    RightHandOrthographic = 3,
};

/// Flags of Clear.
namespace clearflags
{
inline constexpr std::uint32_t Target = 1;
inline constexpr std::uint32_t Depth = 2;
inline constexpr std::uint32_t DirtyRectangles = 4; ///< accepted; the whole picture is always shown
} // namespace clearflags

/// Screen coordinates: x right, y down from the device's top-left, whole numbers at pixel centres, in units of the
/// pixels that are shown (device pixels divided by the device's sampling factor). A viewport's left border is its first
/// pixel's coordinate, its right border the one after its last. z is 0 at the front plane and 1 at the back plane. x, y
/// and z of a Vector4 are multiplied by w: the depth along the look in perspective, 1 otherwise.
///
/// World coordinates are those of the root above the camera; a camera that is a root itself sees the world in which
/// roots stand.
class RMViewport : public SceneObject
{
public:
    /// A viewport of device pixels. It is clamped to the device: a corner outside raises RMBadValue, a size beyond is
    /// cut.
    RMViewport(std::shared_ptr<Device> device, std::shared_ptr<Frame> camera, int x, int y, int width, int height);

    const std::shared_ptr<Frame>& Camera() const { return camera_; }
    int Width() const { return rect_.Width(); }
    int Height() const { return rect_.Height(); }

    /// RMBadValue for another number than those of Projection.
    void SetProjection(std::int32_t projection);

    /// Distances of the planes from the camera, scene units; RMBadValue unless finite and positive. While back is not
    /// beyond front nothing is drawn.
    void SetFront(float front);
    void SetBack(float back);

    /// Half the extent of the front plane along the larger side of the viewport, scene units; RMBadValue unless finite
    /// and positive. Pixels are square.
    void SetField(float field);

    float GetFront() const { return front_; }
    float GetBack() const { return back_; }
    float GetField() const { return field_; }
    Projection GetProjection() const { return projection_; }

    /// Fills the viewport's rectangle: flags 1 with the background color of the camera's root, 2 with the farthest
    /// depth.
    void Clear(std::uint32_t flags);

    /// Draws `frame` and what is below it, lit by the lights of its root. A root without any light of its own is lit by
    /// soft ambient light and a light at the camera.
    void Render(const std::shared_ptr<Frame>& frame);

    /// World (root) coordinates to the screen. RMBadValue for planes with nothing between them, a camera scaled to
    /// nothing, and numbers that are not finite.
    Vector4 Transform(Vector world);

    /// The screen to world coordinates. RMBadValue for w 0, numbers that are not finite, or planes with nothing between
    /// them.
    Vector InverseTransform(const Vector4& screen);

    /// Visuals at and below `frame` under a pixel, nearest first; positions are screen x, y, z. One hit per face;
    /// meshes drawn as wireframe or points are hit on their faces all the same.
    std::shared_ptr<PickedArray> Pick(const std::shared_ptr<Frame>& frame, std::int32_t x, std::int32_t y);

private:
    // A linear map from clip space to pixels: x = centreX + halfWidth * clip.x / w, y likewise, downwards.
    struct ScreenMap
    {
        double centreX;
        double centreY;
        double halfWidth;
        double halfHeight;
    };

    // What depths depend on.
    struct Planes
    {
        double front;
        double back;
        double lookSign;
        bool isOrthographic;
        double DepthOf(Double3 cameraPoint) const;
    };

    class ScreenPick;

    bool IsOrthographic() const;
    double LookSign() const; // -1 for the right-handed projections: along which z the camera looks
    bool HasDepth() const { return back_ > front_; }
    double HalfExtentX() const;
    double HalfExtentY() const;
    ScreenMap DeviceMap() const;
    ScreenMap ShownMap() const;
    Matrix4 CameraToClip() const;
    Double3 CameraPoint(double screenX, double screenY, double depth) const;
    Matrix4 CameraToWorld() const;
    PassState MakePass(const Matrix4& worldToCamera) const;
    void TakeQuality(DrawItem& item, std::uint32_t own) const;

    std::shared_ptr<Device> device_;
    std::shared_ptr<Frame> camera_;
    PixelRect rect_; // device pixels
    Projection projection_ = Projection::Perspective;
    float front_ = 1.0F;
    float back_ = 100.0F;
    float field_ = 0.5F;
    std::vector<LightState> lights_; ///< room for those of a rendering
};

} // namespace lumora
