// Frames: the settings that belong to a whole scene and are kept by its root.
#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/Frame.h"

namespace lumora
{

namespace
{
constexpr const char* Source = "Frame";
}

SceneSettings& Frame::RootSettings()
{
    Frame& root = RootFrame();
    if (!root.settings_)
        root.settings_ = std::make_unique<SceneSettings>();
    return *root.settings_;
}

const SceneSettings& Frame::Scene()
{
    return RootSettings();
}

void Frame::SetSceneBackgroundRGB(float red, float green, float blue)
{
    faults::Point("Frame.SetSceneBackgroundRGB");
    RequireFinite(Source, {red, green, blue});
    RootSettings().backgroundColor = {red, green, blue};
}

std::int32_t Frame::GetSceneFogEnable()
{
    faults::Point("Frame.GetSceneFogEnable");
    return RootSettings().fogEnabled ? 1 : 0;
}

void Frame::SetSceneFogEnable(std::int32_t enable)
{
    faults::Point("Frame.SetSceneFogEnable");
    RootSettings().fogEnabled = enable != 0;
}

void Frame::SetSceneFogMode(FogMode mode)
{
    faults::Point("Frame.SetSceneFogMode");
    if (mode < FogMode::None || mode > FogMode::Linear)
        RaiseBadValue(Source, "There is no such fog mode");
    RootSettings().fogMode = mode;
}

void Frame::SetSceneFogColor(float red, float green, float blue)
{
    faults::Point("Frame.SetSceneFogColor");
    RequireFinite(Source, {red, green, blue});
    RootSettings().fogColor = {red, green, blue};
}

void Frame::SetSceneFogParams(float start, float end, float density)
{
    faults::Point("Frame.SetSceneFogParams");
    RequireFinite(Source, {start, end, density});
    SceneSettings& settings = RootSettings();
    settings.fogStart = start;
    settings.fogEnd = end;
    settings.fogDensity = density;
}

} // namespace lumora
