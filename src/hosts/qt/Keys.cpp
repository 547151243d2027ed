#include "hosts/qt/Keys.h"

#include <algorithm>
#include <array>

namespace lumora
{

namespace
{

struct Key
{
    int key;
    std::int16_t code;
};

constexpr Key Keys[] = {{Qt::Key_Cancel, 3},      {Qt::Key_Backspace, 8}, {Qt::Key_Tab, 9},    {Qt::Key_Backtab, 9},
                        {Qt::Key_Clear, 12},      {Qt::Key_Return, 13},   {Qt::Key_Enter, 13}, {Qt::Key_Shift, 16},
                        {Qt::Key_Control, 17},    {Qt::Key_Alt, 18},      {Qt::Key_AltGr, 18}, {Qt::Key_Pause, 19},
                        {Qt::Key_CapsLock, 20},   {Qt::Key_Escape, 27},   {Qt::Key_Space, 32}, {Qt::Key_PageUp, 33},
                        {Qt::Key_PageDown, 34},   {Qt::Key_End, 35},      {Qt::Key_Home, 36},  {Qt::Key_Left, 37},
                        {Qt::Key_Up, 38},         {Qt::Key_Right, 39},    {Qt::Key_Down, 40},  {Qt::Key_Print, 44},
                        {Qt::Key_Insert, 45},     {Qt::Key_Delete, 46},   {Qt::Key_Menu, 93},  {Qt::Key_NumLock, 144},
                        {Qt::Key_ScrollLock, 145}};

// Characters by their key on a keyboard with the usual layout, Shift included.
constexpr Key Characters[] = {{')', '0'}, {'!', '1'}, {'@', '2'},  {'#', '3'}, {'$', '4'}, {'%', '5'},  {'^', '6'},
                              {'&', '7'}, {'*', '8'}, {'(', '9'},  {';', 186}, {':', 186}, {'=', 187},  {'+', 187},
                              {',', 188}, {'<', 188}, {'-', 189},  {'_', 189}, {'.', 190}, {'>', 190},  {'/', 191},
                              {'?', 191}, {'`', 192}, {'~', 192},  {'[', 219}, {'{', 219}, {'\\', 220}, {'|', 220},
                              {']', 221}, {'}', 221}, {'\'', 222}, {'"', 222}};

constexpr Key KeypadOperators[] = {{'*', 106}, {'+', 107}, {'-', 109}, {'.', 110}, {',', 110}, {'/', 111}};

template<typename Table>
std::int16_t Find(const Table& table, int key)
{
    const auto found = std::ranges::find(table, key, &Key::key);
    return found == std::end(table) ? std::int16_t{0} : found->code;
}

} // namespace

std::int16_t VirtualKey(const QKeyEvent& event)
{
    constexpr int KeypadZero = 96;
    constexpr int FirstFunctionKey = 112;
    const int key = event.key();
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return static_cast<std::int16_t>(FirstFunctionKey + key - Qt::Key_F1);
    const bool isDigit = key >= Qt::Key_0 && key <= Qt::Key_9;
    if ((event.modifiers() & Qt::KeypadModifier) != 0)
    {
        const std::int16_t code =
            isDigit ? static_cast<std::int16_t>(KeypadZero + key - Qt::Key_0) : Find(KeypadOperators, key);
        if (code != 0)
            return code;
    }
    if (isDigit || (key >= Qt::Key_A && key <= Qt::Key_Z))
        return static_cast<std::int16_t>(key);
    const std::int16_t code = Find(Keys, key);
    return code != 0 ? code : Find(Characters, key);
}

std::int16_t ShiftArgument(Qt::KeyboardModifiers modifiers)
{
    return static_cast<std::int16_t>((modifiers.testFlag(Qt::ShiftModifier) ? 1 : 0) |
                                     (modifiers.testFlag(Qt::ControlModifier) ? 2 : 0) |
                                     (modifiers.testFlag(Qt::AltModifier) ? 4 : 0));
}

} // namespace lumora
