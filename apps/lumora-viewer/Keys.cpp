#include "lumora-viewer/Keys.h"

#include "properties/PropertyTable.h"

#include <QStringList>
#include <algorithm>

namespace lumora::viewer
{

namespace
{

struct NavigationKey
{
    std::string_view property;
    tdlNavKey key;
};

constexpr NavigationKey NavigationKeys[] = {
    {"KeyMoveForward", tdlNavKeyW},   {"KeyMoveBack", tdlNavKeyS},     {"KeyMoveLeft", tdlNavKeyA},
    {"KeyMoveRight", tdlNavKeyD},     {"KeyMoveUp", tdlNavKeyPageUp},  {"KeyMoveDown", tdlNavKeyPageDown},
    {"KeyRotateXCCW", tdlNavKeyUp},   {"KeyRotateXCW", tdlNavKeyDown}, {"KeyRotateYCCW", tdlNavKeyLeft},
    {"KeyRotateYCW", tdlNavKeyRight}, {"KeyRotateZCCW", tdlNavKeyC},   {"KeyRotateZCW", tdlNavKeyZ},
    {"KeyEncircleXCCW", tdlNavKeyK},  {"KeyEncircleXCW", tdlNavKeyI},  {"KeyEncircleYCCW", tdlNavKeyL},
    {"KeyEncircleYCW", tdlNavKeyJ},   {"KeyEncircleZCCW", tdlNavKeyU}, {"KeyEncircleZCW", tdlNavKeyN},
    {"KeyZoomIn", tdlNavKeyHome},     {"KeyZoomOut", tdlNavKeyEnd},
};

// What a pair of opposite keys does.
struct KeyLine
{
    const char* does;
    std::string_view first;
    std::string_view second;
};

constexpr KeyLine KeyLines[] = {
    {"go forward, back", "KeyMoveForward", "KeyMoveBack"},
    {"step left, right", "KeyMoveLeft", "KeyMoveRight"},
    {"rise, sink", "KeyMoveUp", "KeyMoveDown"},
    {"look left, right", "KeyRotateYCCW", "KeyRotateYCW"},
    {"look up, down", "KeyRotateXCCW", "KeyRotateXCW"},
    {"roll", "KeyRotateZCCW", "KeyRotateZCW"},
    {"circle the scene to the left, right", "KeyEncircleYCW", "KeyEncircleYCCW"},
    {"circle the scene over, under", "KeyEncircleXCW", "KeyEncircleXCCW"},
    {"circle the scene sideways", "KeyEncircleZCCW", "KeyEncircleZCW"},
    {"narrow, widen the view", "KeyZoomIn", "KeyZoomOut"},
};

constexpr const char* MousePage =
    "<h3>Mouse</h3><p>Drag with the middle button:</p><table cellspacing='6'>"
    "<tr><td>on an object</td><td>orbit about it</td></tr>"
    "<tr><td>beside it</td><td>walk forward and back</td></tr>"
    "<tr><td>with Shift</td><td>move sideways, up and down</td></tr>"
    "<tr><td>with Ctrl</td><td>turn, and walk on the level</td></tr>"
    "<tr><td>in flat projections</td><td>move; zoom on an object or with Ctrl</td></tr></table>"
    "<p>The wheel goes forward and back; in flat projections it zooms.</p>"
    "<p>While <i>Fly</i> is on, a drag sets a speed instead, until the button goes up. On-screen controls are dragged "
    "with the left button.</p>";

QString NameOf(const Viewport& control, std::string_view property)
{
    const std::int32_t code = VariantToLong(FindProperty(property)->read(control));
    for (const EnumerationValue& value : FindEnumeration("tdlNavKey")->values)
        if (value.value == code && code != tdlNavKeyDisable)
            return QString::fromStdString(std::string{value.name.substr(std::string_view{"tdlNavKey"}.size())});
    return code == tdlNavKeyDisable ? QStringLiteral("no key") : QStringLiteral("key %1").arg(code);
}

} // namespace

tdlNavKey DefaultKey(std::string_view property)
{
    const auto* const found = std::ranges::find(NavigationKeys, property, &NavigationKey::property);
    return found == std::end(NavigationKeys) ? tdlNavKeyDisable : found->key;
}

QString NavigationHelp(const Viewport& control)
{
    QString page{MousePage};
    page += "<h3>Keys</h3><p>Hold them, several at once:</p><table cellspacing='6'>";
    for (const KeyLine& line : KeyLines)
        page += QStringLiteral("<tr><td><b>%1</b>, <b>%2</b></td><td>%3</td></tr>")
                    .arg(NameOf(control, line.first), NameOf(control, line.second), line.does);
    return page + "</table><p>The inspector gives them other keys: search for <i>Key</i>.</p>";
}

} // namespace lumora::viewer
