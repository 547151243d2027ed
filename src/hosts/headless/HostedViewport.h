// A control on the form of a headless host: what an embedding program has, without a window system.
#pragma once

#include "hosts/headless/HeadlessHost.h"
#include "platform/container/MemoryPropertyBag.h"
#include "viewport/Viewport.h"

#include <memory>

namespace lumora::headless
{

/// Owns a control in a host that it shares. Everything the host is told by a person (or by itself) reaches the
/// control's handlers while this object lives; its end terminates the control.
class HostedViewport
{
public:
    explicit HostedViewport(std::shared_ptr<HeadlessHost> host);
    ~HostedViewport();
    HostedViewport(const HostedViewport&) = delete;
    HostedViewport& operator=(const HostedViewport&) = delete;

    /// A live control loaded from `bag`.
    static std::unique_ptr<HostedViewport> Live(std::shared_ptr<HeadlessHost> host, PropertyBag& bag);

    /// The same with every setting at its default.
    static std::unique_ptr<HostedViewport> Live(std::shared_ptr<HeadlessHost> host);

    /// A control in a form designer, loaded from `bag`.
    static std::unique_ptr<HostedViewport> AtDesignTime(std::shared_ptr<HeadlessHost> host, PropertyBag& bag);

    HeadlessHost& Host() { return *host_; }
    Viewport& Control() { return *control_; }

    /// The pixel a person sees at a place of the client area: 0x00RRGGBB.
    std::uint32_t PixelAt(int x, int y);

    /// What the control shows: HeadlessHost::ControlPicture.
    PixelView Picture() { return host_->ControlPicture(); }

private:
    std::shared_ptr<HeadlessHost> host_;
    std::shared_ptr<Viewport> control_;
    std::shared_ptr<ControlEvents> adapter_;
};

} // namespace lumora::headless
