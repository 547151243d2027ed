// A form with a control and a scene on it, all reached by names.
#pragma once

#include "automation/HostFace.h"

#include <functional>
#include <gtest/gtest.h>
#include <optional>

namespace lumora::test
{

using automation::HostFace;

/// What `step` raises, or nothing.
inline std::optional<RuntimeError> ErrorOf(const std::function<void()>& step)
{
    try
    {
        step();
    }
    catch (const RuntimeError& failure)
    {
        return failure;
    }
    return std::nullopt;
}

/// The number of what `step` raises; 0 for nothing.
inline std::int32_t NumberOf(const std::function<void()>& step)
{
    const auto failure = ErrorOf(step);
    return failure ? failure->Number() : 0;
}

/// A sink made of a function.
class Listener : public EventSink
{
public:
    using Handler = std::function<void(std::int32_t, std::span<Variant>)>;
    explicit Listener(Handler handler) : handler_(std::move(handler)) {}
    void OnEvent(std::int32_t id, std::span<Variant> arguments) override { handler_(id, arguments); }

private:
    Handler handler_;
};

class Session
{
public:
    Session()
    {
        host->CallWith("ResizeWindow", {40, 30});
        viewport = AsDispatchable(host->CallWith("CreateLive", {Variant{}}));
        factory = AsDispatchable(host->Get("RetainedMode"));
        scene = AsDispatchable(factory->CallWith("CreateFrame", {Variant{}}));
        viewport->Put("Scene", ObjectReference{scene});
    }

    std::shared_ptr<HostFace> host = std::make_shared<HostFace>();
    std::shared_ptr<Dispatchable> viewport;
    std::shared_ptr<Dispatchable> factory;
    std::shared_ptr<Dispatchable> scene;
};

} // namespace lumora::test
