// Values in the order in which they win: the file, the options, --set.
#include "lumora-render/SettingsFiles.h"

#include "hosts/headless/HostedViewport.h"

namespace lumora::render
{

StoredSettings ReadSettings(const std::string& path)
{
    if (path.empty())
        return {};
    JsonPropertyBag bag = JsonPropertyBag::Open(path);
    StoredSettings stored{{}, bag.Remarks()};
    for (const PropertyRow& row : PropertyTable())
        if (bag.Contains(row.name))
            stored.settings.push_back({&row, bag.ReadProperty(row.name, row.defaultValue)});
    return stored;
}

MemoryPropertyBag ChosenSettings(const Request& request, const std::vector<Setting>& stored)
{
    MemoryPropertyBag bag;
    for (const Setting& setting : stored)
        bag.Set(setting.row->name, setting.value);
    if (request.expose)
        bag.Set("ExposeDDSurface", true);
    if (request.accumulate)
        bag.Set("Accumulate", true);
    if (!request.background.empty())
    {
        bag.Set("BackgroundTexture", request.background);
        bag.Set("BackgroundTextureStretch", request.stretch);
    }
    const auto setIfGiven = [&](const char* name, const std::optional<std::int32_t>& value)
    {
        if (value)
            bag.Set(name, *value);
    };
    setIfGiven("AntiAlias", request.antiAlias);
    setIfGiven("CoolMode", request.coolMode);
    setIfGiven("Direct3DDevice", request.device);
    setIfGiven("ProjectionType", request.projection);
    return bag;
}

SettingsKeeper::SettingsKeeper(const std::string& path)
{
    if (!path.empty())
        bag_ = JsonPropertyBag::OpenOrCreate(path);
}

// The control that drew also holds what framing worked out for it; one in a designer holds what was chosen, no more.
std::vector<std::string> SettingsKeeper::Keep(const Request& request, const std::vector<Setting>& stored)
{
    if (!bag_)
        return {};
    MemoryPropertyBag chosen = ChosenSettings(request, stored);
    const auto designed = headless::HostedViewport::AtDesignTime(std::make_shared<headless::HeadlessHost>(), chosen);
    for (const Setting& setting : request.settings)
        setting.row->write(designed->Control(), setting.value);
    designed->Control().Save(*bag_);
    bag_->Store();
    return bag_->Remarks();
}

} // namespace lumora::render
