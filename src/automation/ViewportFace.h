// The control as a script sees it: its properties, methods and events by name and number.
#pragma once

#include "automation/Faces.h"
#include "platform/headless/HostedViewport.h"

namespace lumora::automation
{

/// The face of a control on a headless form. It shares the form: while a face is held, the control lives.
class ViewportFace : public Dispatchable
{
public:
    explicit ViewportFace(std::shared_ptr<headless::HostedViewport> hosted);
    ~ViewportFace() override;
    ViewportFace(const ViewportFace&) = delete;
    ViewportFace& operator=(const ViewportFace&) = delete;

    std::string_view ClassName() const override { return "Viewport"; }
    std::span<const MemberInfo> Members() const override;
    std::span<const MemberInfo> Events() const override;
    Variant Invoke(std::int32_t id, std::uint32_t kinds, std::span<Variant> arguments) override;

    Viewport& Control() { return hosted_->Control(); }

    /// What a class of this kind tells its callers.
    static ClassDescription Description();

private:
    template<typename... Arguments>
    void Forward(Event<Arguments...>& event, std::int32_t id);
    void ForwardEvents();

    std::shared_ptr<headless::HostedViewport> hosted_;
    std::vector<std::function<void()>> disconnections_;
};

} // namespace lumora::automation
