// The headless host as a script sees it: the form, the machine, and the person at mouse and keyboard.
#pragma once

#include "automation/ViewportFace.h"
#include "hosts/headless/HostedViewport.h"

namespace lumora::automation
{

/// A form without a window system that carries at most one control. The control ends with the form and with Terminate;
/// faces of it that are still held go on answering.
class HostFace : public Dispatchable
{
public:
    /// A form on a machine with every driver of this library.
    HostFace();

    std::string_view ClassName() const override { return "Host"; }
    std::span<const MemberInfo> Members() const override;
    Variant Invoke(std::int32_t id, std::uint32_t kinds, std::span<Variant> arguments) override;

    static ClassDescription Description();

    headless::HeadlessHost& Form() { return *form_; }

    /// The control, or nothing before it was created.
    const std::shared_ptr<ViewportFace>& TheViewport() const { return viewport_; }

    using Bag = std::shared_ptr<MemoryPropertyBag>;

    // Each creates the form's one control; error 5 when it has one. An absent bag is an empty one.

    /// It has loaded nothing yet: sinks that are connected before Load hear of what loading raises.
    std::shared_ptr<ViewportFace> CreateControl();
    std::shared_ptr<ViewportFace> CreateLive(const Bag& bag);
    std::shared_ptr<ViewportFace> CreateAtDesignTime(const Bag& bag);
    std::shared_ptr<ViewportFace> CreateInitialised();

    /// What makes the objects of a scene: the same one each time.
    std::shared_ptr<Dispatchable> SceneFactory();

    // Error 91 without a control. An absent bag is an empty one.
    void Load(const Bag& bag);
    Bag Save();

private:
    std::shared_ptr<ViewportFace> Carry(const std::function<void(Viewport&)>& start);
    Viewport& RequiredControl();

    std::shared_ptr<headless::HeadlessHost> form_;
    std::shared_ptr<ViewportFace> viewport_;
    std::shared_ptr<Dispatchable> sceneFactory_;
};

/// A control on a form of its own, loaded with every setting at its default.
std::shared_ptr<Dispatchable> NewViewport();

} // namespace lumora::automation
