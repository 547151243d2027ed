// What a viewport shows, and from where.
#pragma once

#include "hosts/qt/ViewportWidget.h"
#include "stage/Models.h"
#include "stage/Placing.h"

namespace lumora::viewer
{

/// Puts stages into a viewport and its camera where a person sees them. Errors are RuntimeError.
class StageView
{
public:
    /// `widget` must live longer.
    explicit StageView(ViewportWidget& widget) : widget_(widget) {}

    /// In place of what was shown; seen from the right, above and before. The background takes the stage's colour,
    /// unless a person gave it one.
    void Show(stage::Stage stage);

    /// Everything in the picture from one of the control's views.
    void LookFrom(tdlOrientation view);

    /// The same from where the camera looks now.
    void LookAtAll();

    /// Changes the projection; the picture shows everything from the same side.
    void Project(D3DRMPROJECTIONTYPE projection);

    /// What the background had from the stage.
    std::int32_t OwnBackColor() const { return ownBackColor_; }

private:
    void Place(Vector direction, Vector up);

    ViewportWidget& widget_;
    stage::Stage stage_;
    std::shared_ptr<Frame> cameraLights_; ///< or nothing
    std::int32_t ownBackColor_ = 0;
};

} // namespace lumora::viewer
