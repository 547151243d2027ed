#include "automation/TypeLibrary.h"

#include "automation/Classes.h"
#include "automation/HostFace.h"
#include "base/Json.h"
#include "properties/Enumerations.h"

#include <algorithm>

namespace lumora::automation
{

namespace
{

void WriteValue(JsonWriter& json, const Variant& value)
{
    if (const auto* boolean = std::get_if<bool>(&value))
        json.Boolean(*boolean);
    else if (const auto* integer = std::get_if<std::int16_t>(&value))
        json.Number(std::int64_t{*integer});
    else if (const auto* whole = std::get_if<std::int32_t>(&value))
        json.Number(std::int64_t{*whole});
    else if (const auto* single = std::get_if<float>(&value))
        json.Number(*single);
    else if (const auto* real = std::get_if<double>(&value))
        json.Number(*real);
    else if (const auto* text = std::get_if<std::string>(&value))
        json.String(*text);
    else
        json.Null();
}

void WriteArguments(JsonWriter& json, const MemberInfo& member)
{
    json.Key("arguments").BeginArray();
    for (const ArgumentInfo& argument : member.arguments)
    {
        json.BeginObject();
        json.Key("name").String(argument.name);
        json.Key("type").String(argument.typeName);
        json.Key("byReference").Boolean(argument.byReference);
        json.EndObject();
    }
    json.EndArray();
}

void WriteKinds(JsonWriter& json, std::uint32_t kinds)
{
    constexpr std::pair<std::uint32_t, const char*> Names[] = {
        {invoke::Method, "method"}, {invoke::Get, "get"}, {invoke::Put, "put"}, {invoke::PutReference, "putref"}};
    json.Key("kinds").BeginArray();
    for (const auto& [kind, name] : Names)
        if ((kinds & kind) != 0)
            json.String(name);
    json.EndArray();
}

void WriteMember(JsonWriter& json, const MemberInfo& member)
{
    json.BeginObject();
    json.Key("name").String(member.name);
    json.Key("id").Number(std::int64_t{member.id});
    if (member.kinds != 0)
        WriteKinds(json, member.kinds);
    if (member.type != ValueType::Nothing)
        json.Key("type").String(member.typeName);
    if (member.defaultValue != Variant{})
        WriteValue(json.Key("default"), member.defaultValue);
    if ((member.kinds & invoke::Get) == 0)
        WriteArguments(json, member);
    json.Key("help").String(member.help);
    if (member.hidden)
        json.Key("hidden").Boolean(true);
    json.EndObject();
}

void WriteMembers(JsonWriter& json, const char* key, std::span<const MemberInfo> members)
{
    json.Key(key).BeginArray();
    for (const MemberInfo& member : members)
        WriteMember(json, member);
    json.EndArray();
}

void WriteClass(JsonWriter& json, const ClassDescription& description)
{
    const auto creatable = std::ranges::find_if(
        CreatableClasses(), [&](const CreatableClass& row)
        { return row.programName.ends_with(description.name) && row.describe().name == description.name; });
    json.BeginObject();
    json.Key("name").String(description.name);
    if (creatable != CreatableClasses().end())
    {
        json.Key("programName").String(creatable->programName);
        json.Key("id").String(TextOf(creatable->id));
        json.Key("help").String(creatable->help);
    }
    if (!description.interfaceName.empty())
        json.Key("interface").String(description.interfaceName);
    if (!description.eventInterfaceName.empty())
        json.Key("eventInterface").String(description.eventInterfaceName);
    WriteMembers(json, "members", description.members);
    WriteMembers(json, "events", description.events);
    json.EndObject();
}

void WriteEnumeration(JsonWriter& json, const Enumeration& enumeration)
{
    json.BeginObject();
    json.Key("name").String(enumeration.name);
    json.Key("help").String(enumeration.help);
    json.Key("values").BeginArray();
    for (const EnumerationValue& value : enumeration.values)
        json.BeginObject().Key("name").String(value.name).Key("value").Number(std::int64_t{value.value}).EndObject();
    json.EndArray();
    json.EndObject();
}

std::vector<ClassDescription> EveryDescription()
{
    std::vector<ClassDescription> all;
    for (const CreatableClass& row : CreatableClasses())
        all.push_back(row.describe());
    for (const ClassDescription& scene : SceneClasses())
        if (std::ranges::find(all, scene.name, &ClassDescription::name) == all.end())
            all.push_back(scene);
    return all;
}

} // namespace

std::string TypeLibraryDocument()
{
    JsonWriter json;
    json.BeginObject();
    json.Key("library").String("LumoraViewport");
    json.Key("id").String(TextOf(TypeLibraryId()));
    json.Key("version").String("2.0");
    json.Key("classes").BeginArray();
    for (const ClassDescription& description : EveryDescription())
        WriteClass(json, description);
    json.EndArray();
    json.Key("enumerations").BeginArray();
    for (const Enumeration& enumeration : Enumerations())
        WriteEnumeration(json, enumeration);
    json.EndArray();
    json.EndObject();
    return json.Text();
}

} // namespace lumora::automation
