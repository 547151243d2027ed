// Everything the control draws with, and the flags that put its rebuilding off to the next picture.
#pragma once

#include "platform/directdraw/DirectDraw.h"
#include "platform/pictures/Picture.h"
#include "platform/scenegraph/RetainedMode.h"

#include <memory>
#include <string>

namespace lumora
{

/// Where the control stands in its window's client area, in whole pixels.
struct ClientRect
{
    std::int32_t Left = 0;
    std::int32_t Top = 0;
    std::int32_t Width = 0;
    std::int32_t Height = 0;
};

/// The driver a device is made with.
struct DeviceRecord
{
    Guid DriverGuid;
    std::string IdentifierName;
    std::string Name;
    std::string Description;
};

struct DrawingObjects
{
    std::shared_ptr<lumora::RetainedMode> RetainedMode;
    std::shared_ptr<Frame> SceneFrame;
    std::shared_ptr<Frame> OverlayFrame;
    std::shared_ptr<Frame> CameraFrame; ///< a child of SceneFrame while both exist
    std::shared_ptr<lumora::Device> Device;
    std::shared_ptr<lumora::RMViewport> RMViewport;
    std::shared_ptr<DirectDraw> DirectDrawObject;
    std::shared_ptr<lumora::Clipper> Clipper;
    std::shared_ptr<Surface> PrimarySurface;
    std::shared_ptr<Surface> RenderSurface;
    std::shared_ptr<Surface> BackgroundSurface;
    std::shared_ptr<Surface> AntiAliasTarget;
    std::shared_ptr<Picture> BackgroundPicture;
    std::int32_t SamplingFactor = 1; ///< AntiAlias as it was when RenderSurface was made
    std::string RebuildFailure;      ///< why the last rebuild left no device; empty after one that did not fail

    bool DeviceRebuildPending = false; ///< the next live picture rebuilds device and surfaces
    bool SurfacesPending = false;      ///< the device was made, what stands beside its surface was not yet
    bool PendingFlatPass = false;      ///< a pick fell back to the viewport's; consumed by the next exposed picture
    bool ExposeChangePending = false;  ///< PendingExposeDDSurface waits for RecreateDirectX
    bool PendingExposeDDSurface = false;
};

} // namespace lumora
