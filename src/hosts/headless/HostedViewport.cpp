#include "hosts/headless/HostedViewport.h"

namespace lumora::headless
{

namespace
{

// Hands the window's events to the control's handlers.
class Adapter : public ControlEvents
{
public:
    explicit Adapter(std::shared_ptr<Viewport> control) : control_(std::move(control)) {}

    void Show() override { control_->OnShow(); }
    void Paint() override { control_->OnPaint(); }
    void Resize() override { control_->OnResize(); }
    void Click() override { control_->OnClick(); }
    void DblClick() override { control_->OnDblClick(); }
    void MouseDown(std::int16_t button, std::int16_t shift, float x, float y) override
    {
        control_->OnMouseDown(button, shift, x, y);
    }
    void MouseMove(std::int16_t button, std::int16_t shift, float x, float y) override
    {
        control_->OnMouseMove(button, shift, x, y);
    }
    void MouseUp(std::int16_t button, std::int16_t shift, float x, float y) override
    {
        control_->OnMouseUp(button, shift, x, y);
    }
    void KeyDown(std::int16_t code, std::int16_t shift) override { control_->OnKeyDown(code, shift); }
    void KeyUp(std::int16_t code, std::int16_t shift) override { control_->OnKeyUp(code, shift); }
    void KeyPress(std::int16_t ascii) override { control_->OnKeyPress(ascii); }
    void Terminate() override { control_->Terminate(); }

private:
    std::shared_ptr<Viewport> control_;
};

} // namespace

HostedViewport::HostedViewport(std::shared_ptr<HeadlessHost> host)
    : host_(std::move(host)), control_(std::make_shared<Viewport>(host_))
{
    adapter_ = std::make_shared<Adapter>(control_);
    host_->Attach(adapter_);
}

// A host that carries another control by now keeps it.
HostedViewport::~HostedViewport()
{
    if (host_->IsAttached(adapter_.get()))
        host_->Close();
    else
        adapter_->Terminate();
}

std::unique_ptr<HostedViewport> HostedViewport::Live(std::shared_ptr<HeadlessHost> host, PropertyBag& bag)
{
    auto hosted = std::make_unique<HostedViewport>(std::move(host));
    hosted->Host().SetUserMode(true);
    hosted->Control().Load(bag);
    return hosted;
}

std::unique_ptr<HostedViewport> HostedViewport::Live(std::shared_ptr<HeadlessHost> host)
{
    MemoryPropertyBag defaults;
    return Live(std::move(host), defaults);
}

std::unique_ptr<HostedViewport> HostedViewport::AtDesignTime(std::shared_ptr<HeadlessHost> host, PropertyBag& bag)
{
    auto hosted = std::make_unique<HostedViewport>(std::move(host));
    hosted->Host().SetUserMode(false);
    hosted->Control().Load(bag);
    return hosted;
}

std::uint32_t HostedViewport::PixelAt(int x, int y)
{
    const PixelRect& client = host_->ControlArea().ClientRect();
    return host_->Display().PixelAt(client.left + x, client.top + y);
}

} // namespace lumora::headless
