#include "automation/Dispatch.h"

#include <algorithm>

namespace lumora
{

namespace
{

char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

std::string_view NameOf(ValueType type)
{
    switch (type)
    {
    case ValueType::Nothing:
        return "Nothing";
    case ValueType::Integer:
        return "Integer";
    case ValueType::Long:
        return "Long";
    case ValueType::Single:
        return "Single";
    case ValueType::Double:
        return "Double";
    case ValueType::String:
        return "String";
    case ValueType::Object:
        return "Object";
    case ValueType::Boolean:
        return "Boolean";
    case ValueType::Any:
        return "Variant";
    case ValueType::Buffer:
        return "Buffer";
    }
    return "Variant";
}

bool EqualNames(std::string_view left, std::string_view right)
{
    return std::ranges::equal(left, right, {}, Lower, Lower);
}

std::int32_t Dispatchable::IdOf(std::string_view name) const
{
    const auto members = Members();
    const auto found = std::ranges::find_if(members, [=](const MemberInfo& row) { return EqualNames(row.name, name); });
    if (found == members.end())
    {
        const std::string shown{name.substr(0, 80)};
        throw RuntimeError{error::MemberNotFound, std::string{ClassName()},
                           std::string{ClassName()} + " has no member \"" + shown + "\""};
    }
    return found->id;
}

Variant Dispatchable::Get(std::string_view name)
{
    return Invoke(IdOf(name), invoke::Get, {});
}

void Dispatchable::Put(std::string_view name, Variant value)
{
    Invoke(IdOf(name), invoke::Put, {&value, 1});
}

Variant Dispatchable::Call(std::string_view name, std::span<Variant> arguments)
{
    return Invoke(IdOf(name), invoke::Method, arguments);
}

Variant Dispatchable::CallWith(std::string_view name, std::initializer_list<Variant> arguments)
{
    std::vector<Variant> values{arguments};
    return Call(name, values);
}

EventConnection Dispatchable::Connect(std::shared_ptr<EventSink> sink)
{
    if (Events().empty())
        throw RuntimeError{error::NoEvents, std::string{ClassName()}, std::string{ClassName()} + " raises no events"};
    connections_.push_back(sinks_.Connect([sink = std::move(sink)](std::int32_t id, std::span<Variant> arguments)
                                          { sink->OnEvent(id, arguments); }));
    return connections_.back();
}

bool Dispatchable::Disconnect(EventConnection connection)
{
    sinks_.Disconnect(connection);
    return std::erase(connections_, connection) != 0;
}

std::shared_ptr<Dispatchable> AsDispatchable(const Variant& value)
{
    const ObjectReference object = VariantToObject(value);
    if (!object)
        throw RuntimeError{error::ObjectNotSet, "automation", "There is no object here"};
    if (auto face = std::dynamic_pointer_cast<Dispatchable>(object))
        return face;
    throw RuntimeError{error::MemberNotFound, "automation", "This object has no members"};
}

} // namespace lumora
