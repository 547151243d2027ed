// Keys of Qt as the virtual-key codes that controls know.
#pragma once

#include <QKeyEvent>
#include <cstdint>

namespace lumora
{

/// The code of the key, or 0. A key of the main block has the same code with and without Shift.
std::int16_t VirtualKey(const QKeyEvent& event);

/// 1 Shift, 2 Ctrl, 4 Alt, summed.
std::int16_t ShiftArgument(Qt::KeyboardModifiers modifiers);

} // namespace lumora
