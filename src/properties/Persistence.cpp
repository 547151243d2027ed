// The three handlers with which a container keeps a control's settings: initialise, load, save.
#include "properties/DeviceNames.h"
#include "properties/PropertyTable.h"
#include "viewport/Handlers.h"
#include "viewport/Viewport.h"

#include <algorithm>

namespace lumora
{

namespace
{

// Consecutive rows of the property table, both ends included.
struct RowRange
{
    std::string_view first;
    std::string_view last;
};

constexpr RowRange NavigationRows{"MouseNavigationMode", "KeyNavigationMethod"};
constexpr RowRange ControlRows{"NavControlPrimary", "NavMouseSensitivity"};
constexpr RowRange MouseRows{"NavMouseX", "NavMouseShiftCtrlY"};
constexpr RowRange QualityRows{"ShadeMode", "LightMode"};
constexpr RowRange TextureRows{"TextureQuality", "BackgroundTextureStretch"};
constexpr RowRange CameraRows{"BackClippingPlane", "FieldOfView"};
constexpr RowRange WindowRows{"BorderStyle", "MousePointer"};
constexpr RowRange OriginRows{"SceneOriginX", "SceneOriginZ"};
constexpr RowRange LimitRows{"CollisionDetection", "KeyZoomOut"};

constexpr RowRange One(std::string_view name)
{
    return {name, name};
}

// What is left to load once the device keys are read.
constexpr RowRange LoadOrder[] = {
    One("Accumulate"),
    One("CoolMode"),
    One("RenderOverlay"),
    One("CenterNavigation"),
    NavigationRows,
    ControlRows,
    MouseRows,
    One("ProjectionType"),
    QualityRows,
    One("RenderMode"),
    TextureRows,
    CameraRows,
    One("BackColor"),
    WindowRows,
    One("Enabled"),
    One("CullMethod"),
    OriginRows,
    LimitRows,
};

constexpr RowRange CommonTail[] = {
    One("ProjectionType"),
    QualityRows,
    One("RenderMode"),
    One("ExposeDDSurface"),
    One("Accumulate"),
    One("CoolMode"),
    One("RenderOverlay"),
    One("CenterNavigation"),
    TextureRows,
    CameraRows,
    One("BackColor"),
    WindowRows,
    One("Enabled"),
    One("Direct3DDevice"),
    One("CullMethod"),
    OriginRows,
    LimitRows,
};

constexpr RowRange InitialiseHead[] = {NavigationRows, ControlRows, MouseRows, One("AntiAlias")};
constexpr RowRange SaveHead[] = {NavigationRows, ControlRows, One("AntiAlias"), MouseRows};

template<typename Visit>
void ForEachRow(std::span<const RowRange> ranges, Visit&& visit)
{
    for (const RowRange& range : ranges)
    {
        const PropertyRow* row = FindProperty(range.first);
        for (;; ++row)
        {
            visit(*row);
            if (row->name == range.last)
                break;
        }
    }
}

} // namespace

void Viewport::Initialise()
{
    properties_.NavMouseButton = tdlCenter;
    const auto writeDefault = [&](const PropertyRow& row)
    { Handle("Initialise", row.name, [&] { row.write(*this, row.defaultValue); }); };
    ForEachRow(InitialiseHead, writeDefault);
    ForEachRow(CommonTail, writeDefault);
    Handle("Initialise", [&] { LoadContainerGraphic(); });
}

void Viewport::Load(PropertyBag& bag)
{
    // A value that its property cannot hold is no reason to halt: the default stands in, and the log says so.
    const auto read = [&](const PropertyRow& row)
    {
        const Variant stored = bag.ReadProperty(row.name, row.defaultValue);
        Variant value = row.defaultValue;
        try
        {
            value = row.convert(stored);
        }
        catch (const RuntimeError& failure)
        {
            container_->Log("The stored value of " + std::string{row.name} +
                            " was replaced by its default: " + failure.Description());
        }
        return value;
    };
    const auto take = [&](std::string_view name, auto&& store)
    { Handle("Load", name, [&] { store(read(*FindProperty(name))); }); };

    Handle("Load", [&] { LoadContainerGraphic(); });
    take("Direct3DDevice",
         [&](const Variant& value)
         {
             properties_.Direct3DDevice = static_cast<tdlDirect3DDevice>(VariantToLong(value));
             properties_.Direct3DDeviceGUID = DeviceGuidName(properties_.Direct3DDevice);
         });
    take("AntiAlias",
         [&](const Variant& value) { properties_.AntiAlias = static_cast<tdlAntiAlias>(VariantToLong(value)); });
    take("ExposeDDSurface", [&](const Variant& value) { properties_.ExposeDDSurface = VariantToBoolean(value); });
    StartDrawing();
    properties_.NavMouseButton = tdlCenter;
    ForEachRow(LoadOrder,
               [&](const PropertyRow& row)
               {
                   Variant value = row.defaultValue;
                   Handle("Load", row.name, [&] { value = read(row); });
                   Handle("Load", row.name, [&] { row.write(*this, value); });
               });
}

// Creates everything the control draws with, in a live host. A control that a failed step has halted takes no further
// one.
void Viewport::StartDrawing()
{
    if (!IsRunMode())
        return;
    const auto step = [&](auto&& action) { return Handle("Load", action); };
    ClientRect client;
    const bool started = step([&] { drawing_.RetainedMode = std::make_shared<RetainedMode>(container_->Drivers()); }) &&
                         step([&] { drawing_.RetainedMode->Initialise(); }) &&
                         step([&] { drawing_.CameraFrame = drawing_.RetainedMode->CreateFrame(nullptr); }) &&
                         step([&] { client = ClientPixels(); });
    if (started)
        step([&] { InitializeDirectX(container_->Window()->Handle(), properties_.Direct3DDeviceGUID, client); });
    step([&] { container_->Window()->SetPicture(nullptr); });
}

void Viewport::Save(PropertyBag& bag)
{
    const auto write = [&](const PropertyRow& row)
    { Handle("Save", row.name, [&] { bag.WriteProperty(row.name, row.read(*this), row.defaultValue); }); };
    ForEachRow(SaveHead, write);
    ForEachRow(CommonTail, write);
}

} // namespace lumora
