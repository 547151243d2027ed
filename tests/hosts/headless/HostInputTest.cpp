// A person at mouse and keyboard, and what the control hears of it.
#include "hosts/headless/Errors.h"
#include "hosts/headless/HeadlessHost.h"

#include <functional>
#include <gtest/gtest.h>
#include <sstream>

namespace lumora::headless
{

namespace
{

/// Writes down what it hears.
struct Listener : ControlEvents
{
    void Show() override { Note("show"); }
    void Paint() override { Note("paint"); }
    void Resize() override { Note("resize"); }
    void Click() override { Note("click"); }
    void DblClick() override { Note("double"); }
    void MouseDown(std::int16_t button, std::int16_t shift, float x, float y) override
    {
        Note("down", button, shift, x, y);
        onMouseDown();
    }
    void MouseMove(std::int16_t button, std::int16_t shift, float x, float y) override
    {
        Note("move", button, shift, x, y);
    }
    void MouseUp(std::int16_t button, std::int16_t shift, float x, float y) override
    {
        Note("up", button, shift, x, y);
    }
    void KeyDown(std::int16_t code, std::int16_t shift) override
    {
        Note("keydown", code, shift);
        onKeyDown();
    }
    void KeyUp(std::int16_t code, std::int16_t shift) override { Note("keyup", code, shift); }
    void KeyPress(std::int16_t ascii) override { Note("press", ascii); }
    void Terminate() override { Note("terminate"); }

    void Note(const char* what, auto... values)
    {
        std::ostringstream line;
        line << what;
        ((line << ' ' << values), ...);
        heard.push_back(line.str());
    }

    std::vector<std::string> TakeHeard() { return std::exchange(heard, {}); }

    std::vector<std::string> heard;
    std::function<void()> onMouseDown = [] {};
    std::function<void()> onKeyDown = [] {};
};

using Lines = std::vector<std::string>;

/// A client area of 200 by 100 pixels at (50, 40); a pixel is 15 twips.
class Person : public testing::Test
{
protected:
    Person() { host_.Attach(listener_); }

    Lines Heard() { return listener_->TakeHeard(); }

    HeadlessHost host_{nullptr, std::make_shared<VirtualScreen>(400, 300), {50, 40, 250, 140}};
    std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
};

} // namespace

TEST_F(Person, moves_presses_and_releases_are_heard_in_order_and_in_twips)
{
    host_.MoveMouseTo(60, 50);
    host_.PressButton(mousebutton::Middle);
    host_.MoveMouseBy(1, -2);
    host_.ReleaseButton(mousebutton::Middle);
    EXPECT_EQ(Heard(), (Lines{"move 0 0 150 150", "down 4 0 150 150", "move 4 0 165 120", "up 4 0 165 120"}));
}

TEST_F(Person, is_heard_everywhere_from_a_press_inside_until_all_buttons_are_up)
{
    host_.PressButton(mousebutton::Left, 60, 50);
    host_.PressButton(mousebutton::Right);
    host_.MoveMouseTo(0, 0);
    host_.ReleaseButton(mousebutton::Left);
    host_.MoveMouseTo(1, 0);
    host_.ReleaseButton(mousebutton::Right);
    host_.MoveMouseTo(2, 0);
    EXPECT_EQ(Heard(), (Lines{"down 1 0 150 150", "down 2 0 150 150", "move 3 0 -750 -600", "up 1 0 -750 -600",
                              "move 2 0 -735 -600", "up 2 0 -735 -600"}));
}

TEST_F(Person, is_not_heard_over_a_window_that_covers_the_control)
{
    const auto cover = VirtualWindow::Create(host_.SharedDisplay(), {55, 45, 65, 55});
    host_.MoveMouseTo(60, 50);
    host_.PressButton(mousebutton::Left);
    host_.ReleaseButton(mousebutton::Left);
    EXPECT_EQ(Heard(), Lines{});
    cover->Lower();
    host_.PressButton(mousebutton::Left);
    EXPECT_EQ(Heard(), (Lines{"down 1 0 150 150"}));
}

TEST_F(Person, is_not_heard_at_the_border_or_by_a_disabled_window)
{
    host_.ControlArea().SetBorderStyle(1);
    host_.MoveMouseTo(49, 50);
    host_.MoveMouseTo(250, 50);
    EXPECT_EQ(Heard(), Lines{});
    host_.ControlArea().SetEnabled(false);
    host_.MoveMouseTo(60, 50);
    host_.PressButton(mousebutton::Left);
    host_.PressKey('A');
    host_.Click();
    EXPECT_EQ(Heard(), Lines{});
}

TEST_F(Person, keys_that_stand_for_characters_are_pressed_too)
{
    struct Row
    {
        std::int16_t held;
        std::int16_t code;
        Lines heard;
    };
    // 38 is the arrow up and the ampersand, 112 is F1 and p.
    for (const auto& [held, code, heard] :
         {Row{0, 'A', {"keydown 65 0", "press 97"}}, Row{key::Shift, 'A', {"keydown 65 1", "press 65"}},
          Row{key::Control, 'C', {"keydown 67 2", "press 3"}}, Row{key::Alt, 'A', {"keydown 65 4"}},
          Row{0, 13, {"keydown 13 0", "press 13"}}, Row{0, 38, {"keydown 38 0"}}, Row{0, 112, {"keydown 112 0"}}})
    {
        host_.PressKey(held);
        Heard();
        host_.PressKey(code);
        EXPECT_EQ(Heard(), heard);
        host_.ReleaseKey(code);
        host_.ReleaseKey(held);
    }
}

TEST_F(Person, the_key_pressed_last_repeats_while_time_passes)
{
    host_.SetKeyRepeat(100, 30);
    host_.PressKey(37);
    host_.PressKey(38);
    host_.AdvanceTime(99);
    EXPECT_EQ(Heard(), (Lines{"keydown 37 0", "keydown 38 0"}));
    host_.AdvanceTime(1);
    host_.AdvanceTime(60);
    host_.ReleaseKey(37);
    host_.AdvanceTime(30);
    EXPECT_EQ(Heard(), (Lines{"keydown 38 0", "keydown 38 0", "keydown 38 0", "keyup 37 0", "keydown 38 0"}));
    host_.ReleaseKey(38);
    host_.AdvanceTime(1000);
    EXPECT_EQ(Heard(), Lines{"keyup 38 0"});
    EXPECT_EQ(host_.Display().Clock(), 1000U + 99 + 1 + 60 + 30 + 1000);
    EXPECT_EQ(ErrorOf([&] { host_.SetKeyRepeat(0, 30); }), error::InvalidCall);
}

TEST_F(Person, paints_and_clicks_only_when_told)
{
    host_.ShowControl();
    host_.ResizeWindow(80, 60);
    host_.MoveWindow(20, 30);
    EXPECT_EQ(Heard(), (Lines{"show", "resize"}));
    EXPECT_EQ(host_.Window()->ScreenRect(), (PixelRect{20, 30, 100, 90}));
    host_.PaintNow();
    host_.Click();
    host_.DoubleClick();
    EXPECT_EQ(Heard(), (Lines{"paint", "click", "double"}));
}

TEST_F(Person, may_close_the_form_from_within_an_event)
{
    std::weak_ptr<Listener> control = listener_;
    listener_->onKeyDown = [this] { host_.Close(); };
    host_.PressKey('A'); // no key press follows for a control that is gone
    EXPECT_EQ(Heard(), (Lines{"keydown 65 0", "terminate"}));
    host_.Close();
    host_.PaintNow();
    host_.PressButton(mousebutton::Left, 60, 50);
    EXPECT_EQ(Heard(), Lines{});
    listener_.reset();
    EXPECT_TRUE(control.expired());
}

} // namespace lumora::headless
