// Where a camera must stand so that something fills its picture.
#pragma once

#include "platform/scenegraph/frames/Frame.h"

#include <optional>
#include <span>
#include <vector>

namespace lumora::stage
{

struct FramingOptions
{
    Vector direction{0, 0, 1}; ///< what the camera looks along; need not have unit length
    Vector up{0, 1, 0};        ///< not parallel to `direction`
    bool orthographic = false;
    int width = 1; ///< the picture, pixels
    int height = 1;
    std::optional<float> front{}; ///< the front plane is to be here, scene units from the camera
};

/// A camera and its clipping planes, as the control takes them.
struct Framing
{
    Vector position;
    float front = 1;    ///< scene units from the camera
    float back = 1000;  ///< scene units from the camera
    float field = 0.5F; ///< half the extent of the front plane along the larger side
};

/// The part of each half side of the picture that stays free around what is framed.
inline constexpr double FramingMargin = 0.04;

/// The three-quarter view: from the right, above and before.
inline constexpr Vector ThreeQuarterDirection{-0.56F, -0.36F, 0.75F};

/// The nearest camera that looks along the direction and has all `focus` points in its picture, in the middle of it.
/// `extent` is what must lie between the planes besides. A single point counts as something of one unit.
/// Error RMBadValue when there are no points, or when the numbers do not fit a Single.
Framing FramePoints(std::span<const Vector> focus, std::span<const Vector> extent, const FramingOptions& options);

/// The same picture from a camera that suits walking and the on-screen controls: in perspective the front plane is near
/// the camera, where the controls have their usual size; in the other projections the camera stands as far away as in
/// the control's own views.
Framing ForWalking(const Framing& framing, Vector direction, bool orthographic);

std::vector<Vector> CornersOf(const Box& box);

/// Points around everything that the corners of `box` pass when it turns about the vertical axis through its centre.
std::vector<Vector> TurnedCornersOf(const Box& box);

/// `placement` after turning about the vertical axis through `centre` by `angle` radians (clockwise seen from above).
struct Standpoint
{
    Vector position;
    Vector direction;
    Vector up;
};
Standpoint Turned(const Standpoint& standpoint, Vector centre, double angle);

} // namespace lumora::stage
