// The host in memory: a form with one control on a virtual screen, used by a person that a program plays.
#pragma once

#include "hosts/headless/ControlEvents.h"
#include "hosts/headless/VirtualDialogs.h"
#include "hosts/headless/VirtualScreen.h"
#include "hosts/headless/VirtualWindow.h"
#include "platform/container/Container.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumora::headless
{

namespace mousebutton
{
inline constexpr std::int16_t Left = 1;
inline constexpr std::int16_t Right = 2;
inline constexpr std::int16_t Middle = 4;
} // namespace mousebutton

/// Virtual-key codes of the modifiers.
namespace key
{
inline constexpr std::int16_t Shift = 16;
inline constexpr std::int16_t Control = 17;
inline constexpr std::int16_t Alt = 18;
} // namespace key

enum class PositionUnit
{
    Pixels,
    Twips,
};

/// The control is attached as ControlEvents and held like a form holds its control; Close (or the host's end) tells
/// it to terminate and lets it go. A host has the keyboard's focus. A disabled window gets no input.
///
/// A person's actions: the control hears of the mouse while the cursor is over a visible pixel of its client area;
/// from a press there until every button is up again it hears everything, wherever the cursor goes. A press
/// elsewhere keeps it from hearing until every button is up.
class HeadlessHost : public Container
{
public:
    static constexpr PixelRect DefaultClient{100, 100, 740, 580};

    /// Nothing for `drivers` is a machine without any; nothing for `screen` is a new one of the usual size.
    explicit HeadlessHost(std::shared_ptr<const DriverList> drivers = nullptr,
                          std::shared_ptr<VirtualScreen> screen = nullptr, const PixelRect& client = DefaultClient);

    /// Forgets every fault that was set.
    ~HeadlessHost() override;
    HeadlessHost(const HeadlessHost&) = delete;
    HeadlessHost& operator=(const HeadlessHost&) = delete;

    // What the control sees.

    bool UserMode() override;

    /// Names are compared without regard to the case of A to Z.
    Variant LateBoundMember(std::string_view name) override;
    void PropertyChanged(std::string_view name) override;
    std::shared_ptr<ControlWindow> Window() override;
    std::shared_ptr<Screen> TheScreen() override;
    std::shared_ptr<Dialogs> TheDialogs() override;
    std::shared_ptr<const DriverList> Drivers() override;
    double PositionToPixelsX(double position) override;
    double PositionToPixelsY(double position) override;
    double PixelsToPositionX(double pixels) override;
    double PixelsToPositionY(double pixels) override;
    void Log(std::string_view message) override;

    // The machine, for whoever runs it.

    VirtualScreen& Display() { return *screen_; }
    VirtualWindow& ControlArea() { return *window_; }
    VirtualDialogs& DialogsShown() { return *dialogs_; }
    const std::shared_ptr<VirtualScreen>& SharedDisplay() const { return screen_; }
    const std::shared_ptr<VirtualWindow>& SharedControlArea() const { return window_; }

    void Attach(std::shared_ptr<ControlEvents> control) { control_ = std::move(control); }
    bool IsAttached(const ControlEvents* control) const { return control_.get() == control; }
    void SetUserMode(bool live) { userMode_ = live; }
    void SetDrivers(std::shared_ptr<const DriverList> drivers);
    PositionUnit CurrentPositionUnit() const { return positionUnit_; }
    void SetPositionUnit(PositionUnit unit) { positionUnit_ = unit; }
    void SetLateBoundMember(std::string_view name, const Variant& value);
    void RemoveLateBoundMember(std::string_view name);
    const std::vector<std::string>& PropertyChanges() const { return propertyChanges_; }
    const std::vector<std::string>& Logged() const { return logged_; }

    /// What the screen shows now in the control's client area, as far as that lies on the screen; valid as long as the
    /// screen. InvalidCall when nothing of it does.
    PixelView ControlPicture();

    /// Lets the next `count` calls of a platform operation raise `number` (see base/Faults.h).
    void FailNext(std::string_view operation, int count, std::int32_t number);

    // The form.

    void ShowControl();

    /// The control is painted only here.
    void PaintNow();

    /// In pixels; the client area's top-left stays. The control is told, not painted. Errors as VirtualWindow::Create.
    void ResizeWindow(int width, int height);

    /// The client area's top-left, in screen pixels. The control is not told. Errors as VirtualWindow::Create.
    void MoveWindow(int left, int top);

    /// Tells the control to terminate and lets it go.
    void Close();

    // A person at the mouse. Positions are screen pixels and stop at the screen's edges.

    void MoveMouseTo(int x, int y);
    void MoveMouseBy(int x, int y);

    /// At the cursor, or at a place to which the cursor goes without a move being told. InvalidCall unless `button` is
    /// 1, 2 or 4. A button that is held already, or released when it is not, changes nothing.
    void PressButton(std::int16_t button);
    void PressButton(std::int16_t button, int x, int y);
    void ReleaseButton(std::int16_t button);
    void ReleaseButton(std::int16_t button, int x, int y);

    /// Releases and presses raise no clicks: these do, and nothing else.
    void Click();
    void DoubleClick();
    std::int16_t ButtonsHeld() const { return buttonsHeld_; }

    // A person at the keyboard. Codes are virtual keys.

    /// KeyDown, then KeyPress where the key stands for a character. A modifier counts from its own press on. A key that
    /// is held already repeats.
    void PressKey(std::int16_t code);

    /// As PressKey on another keyboard: the key stands for this character, or for none (0), also when it repeats.
    void PressKeyWithCharacter(std::int16_t code, std::int16_t character);

    /// As PressKey, for a key that is held; otherwise nothing.
    void RepeatKey(std::int16_t code);

    /// KeyUp; a modifier does not count any more. Nothing when the key is not held.
    void ReleaseKey(std::int16_t code);
    std::int16_t ModifiersHeld() const;

    // A person who takes time.

    /// The clock goes on. The key that was pressed last repeats while it is held, first after the delay (500 ms unless
    /// changed), then at the interval (33 ms); a release of another key changes nothing about that.
    void AdvanceTime(std::uint32_t milliseconds);

    /// In milliseconds, from the next press on. InvalidCall unless both are above 0.
    void SetKeyRepeat(std::uint32_t delay, std::uint32_t interval);

private:
    enum class Capture
    {
        None,
        Control,
        Elsewhere,
    };

    struct HeldKey
    {
        std::int16_t code;
        std::optional<std::int16_t> character; ///< 0: none; nothing: the one that this keyboard has there
    };

    bool ControlHearsMouse() const;
    bool IsCursorOverControl() const;
    const HeldKey* FindHeld(std::int16_t code) const;
    bool IsHeld(std::int16_t code) const { return FindHeld(code) != nullptr; }
    void Hold(const HeldKey& key);
    void TellKeyDown(std::int16_t code);

    std::shared_ptr<const DriverList> drivers_;
    std::shared_ptr<VirtualScreen> screen_;
    std::shared_ptr<VirtualWindow> window_;
    std::shared_ptr<VirtualDialogs> dialogs_ = std::make_shared<VirtualDialogs>();
    std::shared_ptr<ControlEvents> control_;
    bool userMode_ = true;
    PositionUnit positionUnit_ = PositionUnit::Pixels;
    std::map<std::string, Variant, std::less<>> lateBoundMembers_; // by lower-case name
    std::vector<std::string> propertyChanges_;
    std::vector<std::string> logged_;
    std::int16_t buttonsHeld_ = 0;
    Capture capture_ = Capture::None;
    std::vector<HeldKey> keysHeld_;
    std::optional<std::int16_t> repeatingKey_;
    std::uint32_t repeatDelay_ = 500;
    std::uint32_t repeatInterval_ = 33;
    std::uint32_t untilRepeat_ = 0; // milliseconds, while a key repeats
};

} // namespace lumora::headless
