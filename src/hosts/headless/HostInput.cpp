// A person's hands: which actions at mouse and keyboard the control hears of, and in which order.
#include "base/RuntimeError.h"
#include "hosts/headless/HeadlessHost.h"

#include <algorithm>
#include <array>

namespace lumora::headless
{

namespace
{

constexpr std::int16_t ShiftBit = 1;
constexpr std::int16_t ControlBit = 2;
constexpr std::int16_t AltBit = 4;

void CheckButton(std::int16_t button)
{
    constexpr std::array Buttons{mousebutton::Left, mousebutton::Right, mousebutton::Middle};
    if (std::ranges::find(Buttons, button) == Buttons.end())
        throw RuntimeError{error::InvalidCall, "HeadlessHost", "A mouse button is 1, 2 or 4"};
}

/// The cursor in the window's client area, in its scale units.
struct ClientPosition
{
    float x;
    float y;
};

ClientPosition CursorInWindow(const VirtualScreen& screen, const VirtualWindow& window)
{
    const ScreenPoint cursor = screen.Cursor();
    return {static_cast<float>((cursor.x - window.ClientRect().left) * window.UnitsPerPixelX()),
            static_cast<float>((cursor.y - window.ClientRect().top) * window.UnitsPerPixelY())};
}

constexpr std::int16_t NoCharacter = 0;

/// The character of a key on a keyboard with letters, digits and the five that every control sees.
std::int16_t CharacterOf(std::int16_t code, std::int16_t modifiers)
{
    constexpr std::int16_t LetterBit = 32;
    constexpr std::int16_t ControlMask = 31;
    constexpr std::array<std::int16_t, 5> Others{8, 9, 13, 27, 32};
    if ((modifiers & AltBit) != 0)
        return NoCharacter;
    if (code >= 'A' && code <= 'Z')
    {
        if ((modifiers & ControlBit) != 0)
            return static_cast<std::int16_t>(code & ControlMask);
        return static_cast<std::int16_t>((modifiers & ShiftBit) != 0 ? code : code + LetterBit);
    }
    const bool plain = (modifiers & (ShiftBit | ControlBit)) == 0;
    if (code >= '0' && code <= '9')
        return plain ? code : NoCharacter;
    return std::ranges::find(Others, code) != Others.end() ? code : NoCharacter;
}

} // namespace

bool HeadlessHost::IsCursorOverControl() const
{
    return Contains(window_->VisibleRegion(), screen_->Cursor().x, screen_->Cursor().y);
}

bool HeadlessHost::ControlHearsMouse() const
{
    if (!control_ || !window_->IsEnabled() || capture_ == Capture::Elsewhere)
        return false;
    return capture_ == Capture::Control || IsCursorOverControl();
}

void HeadlessHost::MoveMouseTo(int x, int y)
{
    screen_->PlaceCursor(x, y);
    if (!ControlHearsMouse())
        return;
    const auto control = control_;
    const auto [left, top] = CursorInWindow(*screen_, *window_);
    control->MouseMove(buttonsHeld_, ModifiersHeld(), left, top);
}

void HeadlessHost::MoveMouseBy(int x, int y)
{
    const ScreenPoint cursor = screen_->Cursor();
    const auto moved = [](int from, int by)
    { return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{from} + by, 0, VirtualScreen::MaximumSide)); };
    MoveMouseTo(moved(cursor.x, x), moved(cursor.y, y));
}

void HeadlessHost::PressButton(std::int16_t button)
{
    CheckButton(button);
    if ((buttonsHeld_ & button) != 0)
        return;
    const bool heard = ControlHearsMouse();
    if (capture_ == Capture::None)
        capture_ = heard ? Capture::Control : Capture::Elsewhere;
    buttonsHeld_ = static_cast<std::int16_t>(buttonsHeld_ | button);
    if (!heard)
        return;
    const auto control = control_;
    const auto [left, top] = CursorInWindow(*screen_, *window_);
    control->MouseDown(button, ModifiersHeld(), left, top);
}

void HeadlessHost::PressButton(std::int16_t button, int x, int y)
{
    screen_->PlaceCursor(x, y);
    PressButton(button);
}

void HeadlessHost::ReleaseButton(std::int16_t button)
{
    CheckButton(button);
    if ((buttonsHeld_ & button) == 0)
        return;
    const bool heard = ControlHearsMouse();
    buttonsHeld_ = static_cast<std::int16_t>(buttonsHeld_ & ~button);
    if (buttonsHeld_ == 0)
        capture_ = Capture::None;
    if (!heard)
        return;
    const auto control = control_;
    const auto [left, top] = CursorInWindow(*screen_, *window_);
    control->MouseUp(button, ModifiersHeld(), left, top);
}

void HeadlessHost::ReleaseButton(std::int16_t button, int x, int y)
{
    screen_->PlaceCursor(x, y);
    ReleaseButton(button);
}

void HeadlessHost::Click()
{
    if (const auto control = control_; control && window_->IsEnabled())
        control->Click();
}

void HeadlessHost::DoubleClick()
{
    if (const auto control = control_; control && window_->IsEnabled())
        control->DblClick();
}

const HeadlessHost::HeldKey* HeadlessHost::FindHeld(std::int16_t code) const
{
    const auto held = std::ranges::find(keysHeld_, code, &HeldKey::code);
    return held == keysHeld_.end() ? nullptr : &*held;
}

std::int16_t HeadlessHost::ModifiersHeld() const
{
    return static_cast<std::int16_t>((IsHeld(key::Shift) ? ShiftBit : 0) | (IsHeld(key::Control) ? ControlBit : 0) |
                                     (IsHeld(key::Alt) ? AltBit : 0));
}

void HeadlessHost::TellKeyDown(std::int16_t code)
{
    const auto control = control_;
    if (!control || !window_->IsEnabled())
        return;
    const std::optional<std::int16_t> own = FindHeld(code)->character;
    control->KeyDown(code, ModifiersHeld());
    // The handler may have closed the host or disabled the window.
    const std::int16_t character = own.value_or(CharacterOf(code, ModifiersHeld()));
    if (character != NoCharacter && control_ == control && window_->IsEnabled())
        control->KeyPress(character);
}

void HeadlessHost::Hold(const HeldKey& key)
{
    if (std::erase_if(keysHeld_, [&](const HeldKey& held) { return held.code == key.code; }) == 0)
    {
        repeatingKey_ = key.code;
        untilRepeat_ = repeatDelay_;
    }
    keysHeld_.push_back(key);
}

void HeadlessHost::PressKey(std::int16_t code)
{
    Hold({code, std::nullopt});
    TellKeyDown(code);
}

void HeadlessHost::PressKeyWithCharacter(std::int16_t code, std::int16_t character)
{
    Hold({code, character});
    TellKeyDown(code);
}

void HeadlessHost::RepeatKey(std::int16_t code)
{
    if (IsHeld(code))
        TellKeyDown(code);
}

void HeadlessHost::ReleaseKey(std::int16_t code)
{
    if (std::erase_if(keysHeld_, [=](const HeldKey& held) { return held.code == code; }) == 0)
        return;
    if (repeatingKey_ == code)
        repeatingKey_.reset();
    const auto control = control_;
    if (control && window_->IsEnabled())
        control->KeyUp(code, ModifiersHeld());
}

void HeadlessHost::AdvanceTime(std::uint32_t milliseconds)
{
    while (repeatingKey_ && untilRepeat_ <= milliseconds)
    {
        screen_->AdvanceClock(untilRepeat_);
        milliseconds -= untilRepeat_;
        untilRepeat_ = repeatInterval_;
        RepeatKey(*repeatingKey_);
    }
    screen_->AdvanceClock(milliseconds);
    untilRepeat_ -= repeatingKey_ ? milliseconds : 0;
}

void HeadlessHost::SetKeyRepeat(std::uint32_t delay, std::uint32_t interval)
{
    if (delay == 0 || interval == 0)
        throw RuntimeError{error::InvalidCall, "HeadlessHost", "A key repeats after 1 millisecond or more"};
    repeatDelay_ = delay;
    repeatInterval_ = interval;
}

} // namespace lumora::headless
