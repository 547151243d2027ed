// The scene of the on-screen navigation controls.
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

// The frames are made anew on every run, so nothing of an earlier build stays visible.
void Viewport::BuildNavControls()
{
    const Trap trap{Source};
    widgets_.NavControlFrame = nullptr;
    widgets_.NavControlsScene = nullptr;
    trap([&] { widgets_.NavControlsScene = Required(drawing_.RetainedMode).CreateFrame(nullptr); });
    trap([&] { widgets_.NavControlFrame = drawing_.RetainedMode->CreateFrame(widgets_.NavControlsScene); });
}

} // namespace lumora
