#include "automation/Faces.h"

#include "automation/SceneTables.h"
#include "platform/drivers/standard/StandardDrivers.h"

#include <unordered_map>

namespace lumora::automation
{

namespace
{

// Which object has which face. One thread calls everything here.
std::unordered_map<const Object*, std::weak_ptr<Dispatchable>>& FacesByObject()
{
    static auto& faces = *new std::unordered_map<const Object*, std::weak_ptr<Dispatchable>>;
    return faces;
}

template<typename Type>
class ObjectFace : public Dispatchable
{
public:
    explicit ObjectFace(std::shared_ptr<Type> target) : target_(std::move(target)) {}
    ~ObjectFace() override { FacesByObject().erase(target_.get()); }
    ObjectFace(const ObjectFace&) = delete;
    ObjectFace& operator=(const ObjectFace&) = delete;

    std::string_view ClassName() const override { return TableOf<Type>().ClassName(); }
    std::span<const MemberInfo> Members() const override { return TableOf<Type>().Members(); }
    Variant Invoke(std::int32_t id, std::uint32_t kinds, std::span<Variant> arguments) override
    {
        return InvokeWrapped(TableOf<Type>(), *target_, id, kinds, arguments);
    }
    ObjectReference Target() const override { return target_; }

private:
    std::shared_ptr<Type> target_;
};

template<typename Target>
bool TryFace(const ObjectReference& object, std::shared_ptr<Dispatchable>& face)
{
    auto target = std::dynamic_pointer_cast<Target>(object);
    if (target)
        face = std::make_shared<ObjectFace<Target>>(std::move(target));
    return face != nullptr;
}

template<typename... Targets>
std::shared_ptr<Dispatchable> MakeFace(const ObjectReference& object, Classes<Targets...>)
{
    std::shared_ptr<Dispatchable> face;
    (TryFace<Targets>(object, face) || ...);
    return face;
}

template<typename... Targets>
std::vector<ClassDescription> Describe(Classes<Targets...>)
{
    return {ClassDescription{TableOf<Targets>().ClassName(), TableOf<Targets>().Members(), {}}...};
}

} // namespace

std::shared_ptr<Dispatchable> FaceOf(const ObjectReference& object)
{
    if (!object)
        return nullptr;
    if (auto itself = std::dynamic_pointer_cast<Dispatchable>(object))
        return itself;
    std::weak_ptr<Dispatchable>& known = FacesByObject()[object.get()];
    if (auto face = known.lock())
        return face;
    auto face = MakeFace(object, EveryClass{});
    known = face;
    return face;
}

void WrapObject(Variant& value)
{
    auto* object = std::get_if<ObjectReference>(&value);
    if (object != nullptr && *object)
        *object = FaceOf(*object);
}

std::vector<ClassDescription> SceneClasses()
{
    return Describe(EveryClass{});
}

std::shared_ptr<Dispatchable> NewSceneFactory()
{
    auto factory = std::make_shared<RetainedMode>(StandardDrivers());
    factory->Initialise();
    return FaceOf(factory);
}

} // namespace lumora::automation
