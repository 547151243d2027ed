#include "lumora-render/JsonLines.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <ostream>

namespace lumora::render
{

namespace
{

using Json = nlohmann::ordered_json;

// As short as the Single's own text: 0.1, not 0.10000000149.
Json ToJson(float number)
{
    if (!std::isfinite(number))
        return nullptr;
    std::array<char, 32> text{};
    std::to_chars(text.data(), text.data() + text.size() - 1, number);
    return std::strtod(text.data(), nullptr);
}

template<typename Number>
Json ToJson(Number number)
{
    return number;
}

Json ToJson(Vector vector)
{
    return Json::array({ToJson(vector.x), ToJson(vector.y), ToJson(vector.z)});
}

template<typename Type>
Json ToJson(const std::shared_ptr<Type>& object)
{
    return object ? Json(object->Name()) : Json(nullptr);
}

std::string LineOf(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

template<typename... Arguments>
void EventLines::Listen(Event<Arguments...>& event, const char* name, std::vector<const char*> arguments)
{
    const auto connection = event.Connect(
        [this, name, names = std::move(arguments)](Arguments... values)
        {
            Json line{{"time", hosted_.Host().Display().Clock()}, {"event", name}};
            std::size_t index = 0;
            ((line[names[index++]] = ToJson(values)), ...);
            lines_ << LineOf(line) << '\n' << std::flush;
        });
    disconnections_.emplace_back([&event, connection] { event.Disconnect(connection); });
}

EventLines::EventLines(headless::HostedViewport& hosted, std::ostream& lines) : hosted_(hosted), lines_(lines)
{
    Viewport& control = hosted.Control();
    const std::vector<const char*> mouse{"Button", "Shift", "x", "y"};
    Listen(control.CameraMoved, "CameraMoved",
           {"PositionX", "PositionY", "PositionZ", "OrientationDirX", "OrientationDirY", "OrientationDirZ",
            "OrientationUpX", "OrientationUpY", "OrientationUpZ"});
    Listen(control.Click, "Click", {});
    Listen(control.DblClick, "DblClick", {});
    Listen(control.MouseDown, "MouseDown", mouse);
    Listen(control.MouseUp, "MouseUp", mouse);
    Listen(control.MouseMove, "MouseMove", mouse);
    Listen(control.KeyDown, "KeyDown", {"KeyCode", "Shift"});
    Listen(control.KeyPress, "KeyPress", {"KeyAscii"});
    Listen(control.KeyUp, "KeyUp", {"KeyCode", "Shift"});
    Listen(control.DDSurfaceAvailable, "DDSurfaceAvailable", {});
    Listen(control.AntiAliasSurfaceAvailable, "AntiAliasSurfaceAvailable", {});
    Listen(control.Collision, "Collision", {"Frame", "MeshBuilder"});
    Listen(control.UpdatePositions, "UpdatePositions", {});
    Listen(control.BeginNavigating, "BeginNavigating", {"udtNavControl"});
    Listen(control.EndNavigating, "EndNavigating", {});
}

EventLines::~EventLines()
{
    for (const auto& disconnect : disconnections_)
        disconnect();
}

std::string PickAsJson(headless::HostedViewport& hosted, const PicturePoint& place)
{
    std::shared_ptr<Frame> frame;
    std::shared_ptr<MeshBuilder> mesh;
    std::int32_t face = 0;
    Vector world;
    hosted.Control().Pick(tdlScene, place.x, place.y, true, true, frame, mesh, face, world.x, world.y, world.z);
    Json line{{"pick", Json::array({ToJson(place.x), ToJson(place.y)})}};
    if (frame)
        line["hit"] = Json{{"frame", ToJson(frame)}, {"mesh", ToJson(mesh)}, {"face", face}, {"world", ToJson(world)}};
    else
        line["hit"] = nullptr;
    return LineOf(line);
}

} // namespace lumora::render
