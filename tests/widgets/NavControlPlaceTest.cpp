// The on-screen controls stay where a person expects them: in the bottom-left corner, whatever the camera does.
#include "viewport/LiveControl.h"

#include <cmath>
#include <numbers>

namespace lumora::test
{

namespace
{

constexpr std::int32_t Cross = 2; // the pointer over knob and arrows
constexpr std::int32_t UpArrow = 10;

struct Pixel
{
    double x;
    double y;
};

// Where the knob's centre is seen in perspective: under pixel (6, height - 8) on the front plane, moved away from the
// camera along the turned and, in a wide window, tilted z axis of the controls.
Pixel KnobInPerspective(double width, double height, double front, double field)
{
    const double larger = std::max(width, height);
    const double unit = 2 * field / larger;
    const double turn = std::numbers::pi / 20;
    const double wide = std::max(0.0, width / height - 1.5);
    const double tilt = -wide * std::numbers::pi / 25;
    const double along = 0.026 * 600 / larger + wide * 0.0075;
    const double x = (6 - width / 2) * unit + along * std::sin(turn) * std::cos(tilt);
    const double y = (height / 2 - (height - 8)) * unit - along * std::sin(tilt);
    const double z = front + along * std::cos(turn) * std::cos(tilt);
    return {width / 2 + x / z * front / unit, height / 2 - y / z * front / unit};
}

MemoryPropertyBag AllControls()
{
    auto bag = UsualSettings();
    bag.Set("NavControlPrimary", true);
    bag.Set("NavControlGlide", true);
    bag.Set("NavControlAdvance", true);
    return bag;
}

struct NavWindow
{
    NavWindow(int width, int height) : control(AllControls(), MakeHost(width, height))
    {
        control->SetBorderStyle(tdlBSNone);
        control->SetScene(scene);
        control->RenderScene();
    }

    // What a person's pointer becomes over a pixel of the window.
    std::int32_t PointerOver(double x, double y)
    {
        const PixelRect area = control.Host().ControlArea().ClientRect();
        control.Host().Display().AdvanceClock(40);
        control.Host().MoveMouseTo(area.left + static_cast<int>(std::lround(x)),
                                   area.top + static_cast<int>(std::lround(y)));
        return control.Host().ControlArea().MousePointer();
    }

    LiveControl control;
    std::shared_ptr<Frame> scene = AmbientScene(1);
};

} // namespace

TEST(NavControls, the_knob_is_where_the_camera_model_says_in_every_window_and_pose)
{
    for (const auto& [width, height] : {std::pair{400, 600}, {800, 600}, {1500, 500}, {900, 300}})
        for (const float field : {0.5F, 0.1F, 1.0F})
            for (const Vector direction : {Vector{0, 0, 1}, Vector{1, 0.4F, -0.3F}, Vector{-0.2F, -0.9F, 0.1F}})
            {
                SCOPED_TRACE(::testing::Message() << width << 'x' << height << " field " << field);
                NavWindow window{width, height};
                window.control->SetFieldOfView(field);
                window.control->SetCameraPosition(direction.z * 30, 12, -7);
                window.control->SetCameraOrientation(direction.x, direction.y, direction.z, 0, 1, 0);
                window.control->RenderScene();
                const Pixel knob = KnobInPerspective(width, height, 1, field);
                EXPECT_EQ(window.PointerOver(knob.x, knob.y), Cross);
                EXPECT_EQ(window.PointerOver(width * 0.9, height * 0.2), 0);
                const auto color = window.control.PixelAt(static_cast<int>(std::lround(knob.x)),
                                                          static_cast<int>(std::lround(knob.y)));
                EXPECT_EQ(color & 0xFF, color >> 16 & 0xFF) << std::hex << color; // a grey knob
                EXPECT_GT(color & 0xFF, 0x60U) << std::hex << color;
                window.control->MouseMove.Connect([&](auto&...) { window.control->SetHighlightPointer(UpArrow); });
                EXPECT_EQ(window.PointerOver(knob.x, knob.y), UpArrow) << "the host's own";
            }
}

TEST(NavControls, in_the_other_projections_plates_and_strip_keep_their_corner_in_every_view)
{
    constexpr std::int32_t SizeAll = 5;
    for (const auto& [width, height] : {std::pair{400, 600}, {800, 600}, {1500, 500}})
        for (const auto view : {tdlFrontView, tdlRearView, tdlTopView, tdlBottomView, tdlRightView, tdlLeftView})
        {
            SCOPED_TRACE(::testing::Message() << width << 'x' << height << " view " << view);
            NavWindow window{width, height};
            window.control->SetProjectionType(D3DRMPROJECT_ORTHOGRAPHIC);
            window.control->SetBackClippingPlane(3000);
            window.control->SetFieldOfView(4);
            window.control->InitializeCameraPositionAndOrientation(view);
            window.control->SetNavControlPrimary(true); // built anew for this view
            const auto backdrop = Frame::Make(window.scene);
            const Orientation facing = window.control->GetCameraOrientation();
            backdrop->SetOrientation(window.scene, facing.direction, facing.up);
            backdrop->AddVisual(Square(0, 0, 0, 60, 0xFF00FF00));

            // An arm is a tenth of 300 * 2.5 field units of a window that shows two fields: 37.5 pixels. Views from the
            // negative sides see it run to the left.
            const bool mirrored = view == tdlRearView || view == tdlLeftView || view == tdlBottomView;
            const double knobX = mirrored ? 60 : 6;
            const double along = mirrored ? -375 : 375;
            const auto expectControls = [&]
            {
                window.control->RenderScene();
                const double y = height - 4 - 0.05 * 375;
                EXPECT_EQ(window.PointerOver(knobX + 0.05 * along, y), SizeAll);
                EXPECT_EQ(window.PointerOver(knobX + 0.13 * along, y), UpArrow);
                EXPECT_EQ(window.PointerOver(knobX + 0.05 * along, y - 30), 0);
                EXPECT_NE(window.control.PixelAt(static_cast<int>(knobX + 0.05 * along), static_cast<int>(y)),
                          window.control.PixelAt(width - 5, 5));
            };
            expectControls();
            window.control->AddCameraMovement({33, -12, 5}, tdlAdvance);
            expectControls();
        }
}

TEST(NavControls, wait_for_planes_with_room_between_them)
{
    NavWindow window{400, 300};
    window.control->SetFrontClippingPlane(5000); // beyond the back plane
    EXPECT_NO_THROW(window.control->SetCameraPosition(1, 2, 3));
    window.control.Host().ResizeWindow(500, 300);
    window.control.Host().PaintNow();
    EXPECT_EQ(window.control->ViewportState(), tdlRunning);
    window.control->SetFrontClippingPlane(1);
    window.control->SetCameraPosition(1, 2, 3);
    const Pixel knob = KnobInPerspective(500, 300, 1, 0.5);
    EXPECT_EQ(window.PointerOver(knob.x, knob.y), Cross);
}

} // namespace lumora::test
