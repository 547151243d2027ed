// Puts the camera back where a step that fails half way began.
#pragma once

#include "platform/scenegraph/frames/Frame.h"

#include <exception>
#include <memory>
#include <utility>

namespace lumora
{

/// Unless dismissed, gives the camera's frame exactly the transform that it had when this was made. Nothing as
/// the camera is allowed. A frame that refuses is left as it is.
class CameraUndo
{
public:
    explicit CameraUndo(std::shared_ptr<Frame> camera) : camera_(std::move(camera))
    {
        if (camera_)
            before_ = camera_->LocalTransform();
    }
    ~CameraUndo()
    {
        if (!camera_)
            return;
        try
        {
            camera_->AddTransform(CombineType::Replace, before_);
        }
        catch (const std::exception&)
        {
            // The caller gets the failure that led here.
        }
    }
    CameraUndo(const CameraUndo&) = delete;
    CameraUndo& operator=(const CameraUndo&) = delete;

    /// The step is done: the camera stays as it is.
    void Dismiss() { camera_.reset(); }

private:
    std::shared_ptr<Frame> camera_;
    Matrix4 before_ = Matrix4::Identity();
};

} // namespace lumora
