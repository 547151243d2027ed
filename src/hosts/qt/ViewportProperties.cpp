// What the Qt properties read and write: the control's own.
#include "hosts/qt/ViewportProperties.h"

#include "hosts/qt/QtValues.h"

#include <algorithm>
#include <array>
#include <utility>

namespace lumora
{

#define LUMORA_SETTER_Plain(name, type)                                                                                \
    void ViewportProperties::set##name(QtValue<type>::Other value)                                                     \
    {                                                                                                                  \
        Write(#name, [&](Viewport& viewport) { viewport.Set##name(QtValue<type>::In(value)); });                       \
    }
#define LUMORA_SETTER_Trapped(name, type) LUMORA_SETTER_Plain(name, type)
#define LUMORA_SETTER_Ignored(name, type) LUMORA_SETTER_Plain(name, type)
#define LUMORA_SETTER_Custom(name, type) LUMORA_SETTER_Plain(name, type)
#define LUMORA_SETTER_None(name, type)
#define LUMORA_PROPERTY(name, type, initial, reader, writer, saved, help)                                              \
    QtValue<type>::Other ViewportProperties::name() const                                                              \
    {                                                                                                                  \
        QtValue<type>::Other value{};                                                                                  \
        Reach([&](Viewport& viewport) { value = QtValue<type>::Out(viewport.name()); });                               \
        return value;                                                                                                  \
    }                                                                                                                  \
    LUMORA_SETTER_##writer(name, type)
#include "properties/PropertyTable.def"
#undef LUMORA_PROPERTY

void ViewportProperties::TellChanged(std::string_view name)
{
    using Signal = void (ViewportProperties::*)();
    static constexpr std::pair<std::string_view, Signal> Signals[] = {
#define LUMORA_PROPERTY(name, type, initial, reader, writer, saved, help) {#name, &ViewportProperties::name##Changed},
#include "properties/PropertyTable.def"
#undef LUMORA_PROPERTY
    };
    const auto found = std::ranges::find(Signals, name, &std::pair<std::string_view, Signal>::first);
    if (found != std::end(Signals))
        (this->*found->second)();
}

} // namespace lumora
