// What a control tells, for programs that read lines of JSON.
#pragma once

#include "hosts/headless/HostedViewport.h"
#include "lumora-render/CommandLine.h"

#include <functional>
#include <iosfwd>
#include <vector>

namespace lumora::render
{

/// Writes a line for each event while it lives: the host's clock in milliseconds, the name, the arguments by name.
/// Frames and meshes are given by their names, nothing by null.
class EventLines
{
public:
    /// Both must outlive this object.
    EventLines(headless::HostedViewport& hosted, std::ostream& lines);
    ~EventLines();
    EventLines(const EventLines&) = delete;
    EventLines& operator=(const EventLines&) = delete;

private:
    template<typename... Arguments>
    void Listen(Event<Arguments...>& event, const char* name, std::vector<const char*> arguments);

    headless::HostedViewport& hosted_;
    std::ostream& lines_;
    std::vector<std::function<void()>> disconnections_;
};

/// What is seen at a place of the picture: frame, mesh, face and position in the scene, or null. Wireframes and objects
/// without a number count. Errors: those of Pick.
std::string PickAsJson(headless::HostedViewport& hosted, const PicturePoint& place);

} // namespace lumora::render
