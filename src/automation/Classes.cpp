#include "automation/Classes.h"

#include "automation/HostFace.h"

#include <algorithm>

namespace lumora::automation
{

namespace
{

// Identifiers differ in one byte.
constexpr ClassId Id(std::uint8_t which)
{
    return {0x01, 0x5A, 0x3D, 0x8E, 0x47, 0x2C, 0x9B, 0x4F, 0xA6, 0x10, 0x7D, 0xE2, 0x35, 0xC8, 0x90, which};
}

// A public class without members; it only has to exist.
class EmptyObject : public Dispatchable
{
public:
    std::string_view ClassName() const override { return "clsTDLViewportPNC"; }
    std::span<const MemberInfo> Members() const override { return {}; }
    Variant Invoke(std::int32_t id, std::uint32_t, std::span<Variant>) override
    {
        RaiseNoSuchId(std::string{ClassName()}, id);
    }
};

ClassDescription DescribeEmpty()
{
    return {"clsTDLViewportPNC", {}, {}};
}

ClassDescription DescribeFactory()
{
    const auto classes = SceneClasses();
    return *std::ranges::find(classes, "RetainedMode", &ClassDescription::name);
}

constexpr CreatableClass Table[] = {
    {"LumoraViewport.Viewport", Id(1), "a control on a form of its own", ViewportFace::Description, NewViewport},
    {"LumoraViewport.clsTDLViewportPNC", Id(2), "no members", DescribeEmpty,
     []() -> std::shared_ptr<Dispatchable> { return std::make_shared<EmptyObject>(); }},
    {"LumoraViewport.Host", Id(3), "a form, a machine and a person in memory", HostFace::Description,
     []() -> std::shared_ptr<Dispatchable> { return std::make_shared<HostFace>(); }},
    {"LumoraViewport.RetainedMode", Id(4), "creates what scenes are made of", DescribeFactory, NewSceneFactory},
};

} // namespace

std::string TextOf(const ClassId& id)
{
    constexpr int Order[] = {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
    constexpr char Digits[] = "0123456789ABCDEF";
    std::string text = "{";
    for (const int place : Order)
    {
        if (place < 0)
        {
            text += '-';
            continue;
        }
        const std::uint8_t byte = id[static_cast<std::size_t>(place)];
        text += Digits[byte >> 4];
        text += Digits[byte & 15];
    }
    return text + '}';
}

std::span<const CreatableClass> CreatableClasses()
{
    return Table;
}

const CreatableClass* FindClass(const ClassId& id)
{
    const auto found = std::ranges::find(Table, id, &CreatableClass::id);
    return found == std::end(Table) ? nullptr : found;
}

const CreatableClass* FindClass(std::string_view programName)
{
    const auto found = std::ranges::find_if(Table, [=](const CreatableClass& row)
                                            { return EqualNames(row.programName, programName); });
    return found == std::end(Table) ? nullptr : found;
}

ClassId TypeLibraryId()
{
    return Id(0);
}

} // namespace lumora::automation
