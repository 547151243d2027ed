#include "automation/HostFace.h"

#include "automation/HostMembers.h"
#include "platform/drivers/StandardDrivers.h"

namespace lumora::automation
{

HostFace::HostFace() : form_(std::make_shared<headless::HeadlessHost>(StandardDrivers())) {}

std::span<const MemberInfo> HostFace::Members() const
{
    return HostTable().Members();
}

Variant HostFace::Invoke(std::int32_t id, std::uint32_t kinds, std::span<Variant> arguments)
{
    return InvokeWrapped(HostTable(), *this, id, kinds, arguments);
}

ClassDescription HostFace::Description()
{
    return {"Host", HostTable().Members(), {}};
}

std::shared_ptr<ViewportFace> HostFace::Carry(const std::function<void(Viewport&)>& start)
{
    if (viewport_)
        throw RuntimeError{error::InvalidCall, "Host", "This form has its control already; create another host"};
    viewport_ = std::make_shared<ViewportFace>(std::make_shared<headless::HostedViewport>(form_));
    start(viewport_->Control());
    return viewport_;
}

std::shared_ptr<ViewportFace> HostFace::CreateLive(const Bag& bag)
{
    form_->SetUserMode(true);
    MemoryPropertyBag empty;
    return Carry([&](Viewport& control) { control.Load(bag ? *bag : empty); });
}

std::shared_ptr<ViewportFace> HostFace::CreateAtDesignTime(const Bag& bag)
{
    form_->SetUserMode(false);
    MemoryPropertyBag empty;
    return Carry([&](Viewport& control) { control.Load(bag ? *bag : empty); });
}

std::shared_ptr<ViewportFace> HostFace::CreateInitialised()
{
    return Carry([](Viewport& control) { control.Initialise(); });
}

Viewport& HostFace::RequiredControl()
{
    if (!viewport_)
        throw RuntimeError{error::ObjectNotSet, "Host", "This form has no control yet; create it first"};
    return viewport_->Control();
}

std::shared_ptr<Dispatchable> HostFace::SceneFactory()
{
    if (!sceneFactory_)
        sceneFactory_ = NewSceneFactory();
    return sceneFactory_;
}

void HostFace::Load(const Bag& bag)
{
    if (!bag)
        throw RuntimeError{error::ObjectNotSet, "Host", "There is no property bag to load from"};
    RequiredControl().Load(*bag);
}

HostFace::Bag HostFace::Save()
{
    auto bag = std::make_shared<MemoryPropertyBag>();
    RequiredControl().Save(*bag);
    return bag;
}

std::shared_ptr<Dispatchable> NewViewport()
{
    auto form = std::make_shared<headless::HeadlessHost>(StandardDrivers());
    std::shared_ptr<headless::HostedViewport> hosted = headless::HostedViewport::Live(std::move(form));
    return std::make_shared<ViewportFace>(std::move(hosted));
}

} // namespace lumora::automation
