// World points to screen vectors and back.
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

void Viewport::ViewportTransform(float WorldX, float WorldY, float WorldZ, float& ScreenW, float& ScreenX,
                                 float& ScreenY, float& ScreenZ)
{
    RequireRunning();
    const Trap trap{Source};
    Vector4 screen;
    trap([&] { screen = Required(drawing_.RMViewport).Transform({WorldX, WorldY, WorldZ}); });
    ScreenW = screen.w;
    ScreenX = screen.x;
    ScreenY = screen.y;
    ScreenZ = screen.z;
}

void Viewport::ViewportInverseTransform(float ScreenW, float ScreenX, float ScreenY, float ScreenZ, float& WorldX,
                                        float& WorldY, float& WorldZ)
{
    RequireRunning();
    const Trap trap{Source};
    Vector world;
    trap([&] { world = Required(drawing_.RMViewport).InverseTransform({ScreenX, ScreenY, ScreenZ, ScreenW}); });
    WorldX = world.x;
    WorldY = world.y;
    WorldZ = world.z;
}

} // namespace lumora
