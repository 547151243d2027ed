// The control as a script sees it: its properties, methods and events by name and number.
#pragma once

#include "automation/Faces.h"
#include "viewport/Viewport.h"

namespace lumora::automation
{

/// The face of a control in any host. A host makes one for its control and keeps it: sinks are connected to the face.
///
/// The pointer may share the ownership of whatever the control needs, which then lives as long as the face:
/// std::make_shared<ViewportFace>(std::shared_ptr<Viewport>{owner, &owner->Control()}).
class ViewportFace : public Dispatchable
{
public:
    explicit ViewportFace(std::shared_ptr<Viewport> control);
    ~ViewportFace() override;
    ViewportFace(const ViewportFace&) = delete;
    ViewportFace& operator=(const ViewportFace&) = delete;

    std::string_view ClassName() const override { return "Viewport"; }
    std::span<const MemberInfo> Members() const override;
    std::span<const MemberInfo> Events() const override;
    Variant Invoke(std::int32_t id, std::uint32_t kinds, std::span<Variant> arguments) override;

    Viewport& Control() { return *control_; }

    /// What a class of this kind tells its callers.
    static ClassDescription Description();

private:
    template<typename... Arguments>
    void Forward(Event<Arguments...>& event, std::int32_t id, const char* noted);
    void ForwardEvents();

    std::shared_ptr<Viewport> control_;
    std::vector<std::function<void()>> disconnections_;
};

} // namespace lumora::automation
