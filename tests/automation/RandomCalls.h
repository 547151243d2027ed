// Calls that make no sense: any member of any object with any arguments. Only a RuntimeError may come of them.
#pragma once

#include "automation/HostFace.h"

#include <cstdint>
#include <functional>
#include <limits>

namespace lumora::test
{

class RandomCalls
{
public:
    /// `next` gives 32 random bits.
    explicit RandomCalls(std::function<std::uint32_t()> next) : next_(std::move(next))
    {
        const auto host = std::make_shared<automation::HostFace>();
        host->CallWith("ResizeWindow", {40, 30});
        const auto viewport = AsDispatchable(host->CallWith("CreateLive", {Variant{}}));
        const auto factory = AsDispatchable(host->Get("RetainedMode"));
        objects_ = {host,
                    viewport,
                    viewport,
                    factory,
                    AsDispatchable(factory->CallWith("CreateFrame", {Variant{}})),
                    AsDispatchable(factory->Call("CreateMeshBuilder"))};
        fixed_ = objects_.size();
    }

    /// One call. True when it was accepted.
    bool One()
    {
        const std::shared_ptr<Dispatchable> object = objects_[Below(objects_.size())];
        const auto members = object->Members();
        const MemberInfo* member = members.empty() || Below(16) == 0 ? nullptr : &members[Below(members.size())];
        const std::int32_t id = member != nullptr ? member->id : static_cast<std::int32_t>(next_());
        const std::uint32_t kinds = member != nullptr && Below(8) != 0 ? member->kinds : Below(16);
        std::vector<Variant> arguments(CountFor(member, kinds));
        for (Variant& argument : arguments)
            argument = Any();
        try
        {
            if (member != nullptr && TakesTooLong(*member, *object)) // a fault that was asked for may hit the question
                return false;
            Keep(object->Invoke(id, kinds, arguments));
            return true;
        }
        catch (const RuntimeError&)
        {
            return false;
        }
    }

private:
    std::size_t Below(std::size_t limit) { return next_() % limit; }

    // Meshes grow without bound when they are added to themselves, and a probe takes as many rays as it is told to.
    static bool TakesTooLong(const MemberInfo& member, Dispatchable& object)
    {
        if (member.name == "CollisionSamples")
            return true;
        return member.name == "AddMeshBuilder" && VariantToLong(object.Get("FaceCount")) > 100;
    }

    std::size_t CountFor(const MemberInfo* member, std::uint32_t kinds)
    {
        if (member == nullptr || Below(8) == 0)
            return Below(10);
        if ((kinds & invoke::Method) != 0)
            return member->arguments.size();
        return (kinds & invoke::Get) != 0 && Below(2) == 0 ? 0 : 1;
    }

    Variant Any()
    {
        using Long = std::numeric_limits<std::int32_t>;
        using Single = std::numeric_limits<float>;
        static const std::int32_t wholes[] = {0, 1, 2, 3, 4, -1, 7, 17, 40, 65, Long::max(), Long::min()};
        static const double reals[] = {0.5,   -0.25, 1e-30, 2.5, Single::max(), Single::infinity(), Single::quiet_NaN(),
                                       1e300, 3e9,   0.1,   -40};
        static const std::string texts[] = {"",
                                            "1",
                                            "-0.5",
                                            "x",
                                            "1e999",
                                            "\xFF",
                                            "3 0 1 2 0",
                                            "0 0 0 1 0 0 0 1 0",
                                            "/no/such/folder/x.png",
                                            "IID_IDirect3DRGBDevice",
                                            "Frame.SetPosition"};
        static float singles[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, Single::infinity()};
        static std::int32_t faces[] = {3, 0, 1, 2, 0, 3, 0};
        static double doubles[] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 0, 0, 1};
        static std::uint32_t pixels[] = {0xFFFF0000, 0x00FF00, 0, 7};
        const NumberBuffer buffers[] = {{ElementType::Single, singles, Below(11), false, {}},
                                        {ElementType::Long, faces, Below(8), true, {}},
                                        {ElementType::Double, doubles, Below(17), false, {}},
                                        {ElementType::UnsignedLong, pixels, Below(5), true, {}},
                                        {ElementType::Byte, pixels, Below(17), false, {}}};
        const auto one = [this](const auto& list) -> Variant { return list[Below(std::size(list))]; };
        switch (Below(10))
        {
        case 0:
            return {};
        case 1:
            return Below(2) == 0;
        case 2:
        case 3:
            return one(wholes);
        case 4:
            return static_cast<float>(std::get<double>(one(reals)));
        case 5:
            return one(reals);
        case 6:
            return one(texts);
        case 7:
            return one(buffers);
        default:
            return Below(6) == 0 ? ObjectReference{} : ObjectReference{objects_[Below(objects_.size())]};
        }
    }

    void Keep(const Variant& result)
    {
        constexpr std::size_t Most = 40;
        const auto* object = std::get_if<ObjectReference>(&result);
        const auto face = object != nullptr ? std::dynamic_pointer_cast<Dispatchable>(*object) : nullptr;
        if (!face)
            return;
        if (objects_.size() < Most)
            objects_.push_back(face);
        else
            objects_[fixed_ + Below(Most - fixed_)] = face;
    }

    std::function<std::uint32_t()> next_;
    std::vector<std::shared_ptr<Dispatchable>> objects_;
    std::size_t fixed_ = 0;
};

} // namespace lumora::test
