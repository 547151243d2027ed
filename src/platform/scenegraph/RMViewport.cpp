// Viewports: the projection, and pixels to world and back.
#include "platform/scenegraph/RMViewport.h"

#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/picking/FramePicking.h"

#include <algorithm>

namespace lumora
{

namespace
{

constexpr const char* Source = "RMViewport";

void RequirePositive(float value, const char* what)
{
    if (!(value > 0) || !std::isfinite(value))
        RaiseBadValue(Source, std::string{what} + " must be a positive number");
}

} // namespace

RMViewport::RMViewport(std::shared_ptr<Device> device, std::shared_ptr<Frame> camera, int x, int y, int width,
                       int height)
    : device_(std::move(device)), camera_(std::move(camera))
{
    RequireObject(Source, device_, "The device");
    RequireObject(Source, camera_, "The camera");
    if (x < 0 || y < 0 || x >= device_->Width() || y >= device_->Height() || width < 1 || height < 1)
        RaiseBadValue(Source, "The viewport lies outside its device or is empty");
    rect_ = {x, y, x + std::min(width, device_->Width() - x), y + std::min(height, device_->Height() - y)};
}

void RMViewport::SetProjection(std::int32_t projection)
{
    faults::Point("RMViewport.SetProjection");
    if (projection < static_cast<std::int32_t>(Projection::Perspective) ||
        projection > static_cast<std::int32_t>(Projection::RightHandOrthographic))
        RaiseBadValue(Source, "There is no projection " + std::to_string(projection));
    projection_ = static_cast<Projection>(projection);
}

void RMViewport::SetFront(float front)
{
    faults::Point("RMViewport.SetFront");
    RequirePositive(front, "The distance of the front plane");
    front_ = front;
}

void RMViewport::SetBack(float back)
{
    faults::Point("RMViewport.SetBack");
    RequirePositive(back, "The distance of the back plane");
    back_ = back;
}

void RMViewport::SetField(float field)
{
    faults::Point("RMViewport.SetField");
    RequirePositive(field, "The field of view");
    field_ = field;
}

// The projection.

bool RMViewport::IsOrthographic() const
{
    return projection_ == Projection::Orthographic || projection_ == Projection::RightHandOrthographic;
}

double RMViewport::LookSign() const
{
    return projection_ == Projection::RightHandPerspective || projection_ == Projection::RightHandOrthographic ? -1.0
                                                                                                               : 1.0;
}

double RMViewport::HalfExtentX() const
{
    return double{field_} * Width() / std::max(Width(), Height());
}

double RMViewport::HalfExtentY() const
{
    return double{field_} * Height() / std::max(Width(), Height());
}

Matrix4 RMViewport::CameraToClip() const
{
    const double front = front_;
    const double depth = double{back_} - front;
    const double nearScale = IsOrthographic() ? 1.0 : front;
    Matrix4 clip;
    clip.m[0][0] = nearScale / HalfExtentX();
    clip.m[1][1] = nearScale / HalfExtentY();
    clip.m[2][2] = LookSign() * (IsOrthographic() ? 1.0 : double{back_}) / depth;
    clip.m[3][2] = -front * (IsOrthographic() ? 1.0 : double{back_}) / depth;
    clip.m[2][3] = IsOrthographic() ? 0.0 : LookSign();
    clip.m[3][3] = IsOrthographic() ? 1.0 : 0.0;
    return clip;
}

// A shown coordinate s is the mean of `factor` device coordinates: d = factor * s + (factor - 1) / 2. The picture that
// is averaged down later is then the one that would have been drawn without sampling.
RMViewport::ScreenMap RMViewport::DeviceMap() const
{
    const double shift = (device_->SamplingFactor() - 1) / 2.0;
    const double halfWidth = Width() / 2.0;
    const double halfHeight = Height() / 2.0;
    return {rect_.left + halfWidth + shift, rect_.top + halfHeight + shift, halfWidth, halfHeight};
}

RMViewport::ScreenMap RMViewport::ShownMap() const
{
    const double factor = device_->SamplingFactor();
    const double halfWidth = Width() / (2.0 * factor);
    const double halfHeight = Height() / (2.0 * factor);
    return {rect_.left / factor + halfWidth, rect_.top / factor + halfHeight, halfWidth, halfHeight};
}

// The point at a screen coordinate and a depth of 0..1, in the camera's own coordinates.
Double3 RMViewport::CameraPoint(double screenX, double screenY, double depth) const
{
    const ScreenMap map = ShownMap();
    const double front = front_;
    const double back = back_;
    const double x = (screenX - map.centreX) / map.halfWidth * HalfExtentX();
    const double y = (map.centreY - screenY) / map.halfHeight * HalfExtentY();
    if (IsOrthographic())
        return {x, y, LookSign() * (front + depth * (back - front))};
    const double z = front * back / (back - depth * (back - front));
    return {x * z / front, y * z / front, LookSign() * z};
}

double RMViewport::Planes::DepthOf(Double3 cameraPoint) const
{
    const double z = lookSign * cameraPoint.z;
    return isOrthographic ? (z - front) / (back - front) : back * (z - front) / ((back - front) * z);
}

// World and screen.

Matrix4 RMViewport::CameraToWorld() const
{
    return camera_->TransformTo(nullptr);
}

Vector4 RMViewport::Transform(Vector world)
{
    faults::Point("RMViewport.Transform");
    RequireFinite(Source, world);
    if (!HasDepth())
        RaiseBadValue(Source, "The back plane is not beyond the front plane");
    const auto worldToCamera = Inverse(CameraToWorld());
    if (!worldToCamera)
        RaiseBadValue(Source, "The camera is scaled to nothing");
    const Double3 p = TransformPoint(world, *worldToCamera);
    const Double4 clip = lumora::Transform({p.x, p.y, p.z, 1}, CameraToClip());
    const ScreenMap map = ShownMap();
    const Vector4 screen{static_cast<float>(map.centreX * clip.w + map.halfWidth * clip.x),
                         static_cast<float>(map.centreY * clip.w - map.halfHeight * clip.y), static_cast<float>(clip.z),
                         static_cast<float>(clip.w)};
    RequireFinite(Source, {screen.x, screen.y, screen.z, screen.w});
    return screen;
}

Vector RMViewport::InverseTransform(const Vector4& screen)
{
    faults::Point("RMViewport.InverseTransform");
    RequireFinite(Source, {screen.x, screen.y, screen.z, screen.w});
    if (screen.w == 0)
        RaiseBadValue(Source, "A screen vector of weight 0 has no place in the world");
    if (!HasDepth())
        RaiseBadValue(Source, "The back plane is not beyond the front plane");
    const double w = screen.w;
    const Double3 point = CameraPoint(screen.x / w, screen.y / w, screen.z / w);
    const Vector world = TransformPoint(point, CameraToWorld()).ToVector();
    if (!IsFinite(world))
        RaiseBadValue(Source, "The screen vector lies at infinity");
    return world;
}

// Hits say where on the screen they are.
class RMViewport::ScreenPick : public ScenePick
{
public:
    struct View
    {
        std::int32_t x;
        std::int32_t y;
        Matrix4 worldToCamera;
        Planes planes;
    };

    ScreenPick(std::shared_ptr<Frame> top, const PickQuery& query, const View& view)
        : ScenePick(std::move(top), query), ray_(query.ray), view_(view)
    {
    }

protected:
    Vector PositionAt(double distance) const override
    {
        const Double3 place = TransformPoint(ray_.origin + ray_.direction * distance, view_.worldToCamera);
        return {static_cast<float>(view_.x), static_cast<float>(view_.y),
                static_cast<float>(view_.planes.DepthOf(place))};
    }

private:
    WorldRay ray_;
    View view_;
};

std::shared_ptr<PickedArray> RMViewport::Pick(const std::shared_ptr<Frame>& frame, std::int32_t x, std::int32_t y)
{
    faults::Point("RMViewport.Pick");
    RequireObject(Source, frame, "The frame");
    const double factor = device_->SamplingFactor();
    const bool isInside =
        x * factor >= rect_.left && x * factor < rect_.right && y * factor >= rect_.top && y * factor < rect_.bottom;
    const Matrix4& cameraToWorld = camera_->WorldTransform();
    const auto worldToCamera = Inverse(cameraToWorld);
    if (!isInside || !HasDepth() || !worldToCamera)
        return std::make_shared<PickedArray>();

    // From the front plane to the back plane, so that distances of 0 to 1 are what is drawn.
    const Double3 from = TransformPoint(CameraPoint(x, y, 0), cameraToWorld);
    PickQuery query;
    query.ray = {from, TransformPoint(CameraPoint(x, y, 1), cameraToWorld) - from};
    query.limit = 1;
    return std::make_shared<PickedArray>(std::make_unique<ScreenPick>(
        frame, query, ScreenPick::View{x, y, *worldToCamera, Planes{front_, back_, LookSign(), IsOrthographic()}}));
}

} // namespace lumora
