#include "automation/HostFace.h"

#include "automation/HostMembers.h"
#include "platform/drivers/standard/StandardDrivers.h"

namespace lumora::automation
{

namespace
{

void LoadFrom(const HostFace::Bag& bag, Viewport& control)
{
    MemoryPropertyBag empty;
    control.Load(bag ? *bag : empty);
}

// The face of a new control on the form, which lives as long as the face.
std::shared_ptr<ViewportFace> FaceOn(const std::shared_ptr<headless::HeadlessHost>& form)
{
    const auto hosted = std::make_shared<headless::HostedViewport>(form);
    return std::make_shared<ViewportFace>(std::shared_ptr<Viewport>{hosted, &hosted->Control()});
}

} // namespace

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
    viewport_ = FaceOn(form_);
    start(viewport_->Control());
    return viewport_;
}

std::shared_ptr<ViewportFace> HostFace::CreateControl()
{
    return Carry([](Viewport&) {});
}

std::shared_ptr<ViewportFace> HostFace::CreateLive(const Bag& bag)
{
    form_->SetUserMode(true);
    return Carry([&](Viewport& control) { LoadFrom(bag, control); });
}

std::shared_ptr<ViewportFace> HostFace::CreateAtDesignTime(const Bag& bag)
{
    form_->SetUserMode(false);
    return Carry([&](Viewport& control) { LoadFrom(bag, control); });
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
    LoadFrom(bag, RequiredControl());
}

HostFace::Bag HostFace::Save()
{
    auto bag = std::make_shared<MemoryPropertyBag>();
    RequiredControl().Save(*bag);
    return bag;
}

std::shared_ptr<Dispatchable> NewViewport()
{
    auto face = FaceOn(std::make_shared<headless::HeadlessHost>(StandardDrivers()));
    LoadFrom(nullptr, face->Control());
    return face;
}

} // namespace lumora::automation
