// Faces: what a script sees of the objects of this system. An object has one face while anybody holds it, so the same
// object is always the same face.
#pragma once

#include "automation/DispatchTable.h"
#include "platform/container/MemoryPropertyBag.h"
#include "platform/directdraw/DirectDraw.h"
#include "platform/pictures/Picture.h"
#include "platform/scenegraph/RetainedMode.h"

namespace lumora::automation
{

// clang-format off
template<> inline constexpr const char* ClassNameOf<Frame> = "Frame";
template<> inline constexpr const char* ClassNameOf<Visual> = "MeshBuilder";
template<> inline constexpr const char* ClassNameOf<MeshBuilder> = "MeshBuilder";
template<> inline constexpr const char* ClassNameOf<Face> = "Face";
template<> inline constexpr const char* ClassNameOf<Light> = "Light";
template<> inline constexpr const char* ClassNameOf<Material> = "Material";
template<> inline constexpr const char* ClassNameOf<Texture> = "Texture";
template<> inline constexpr const char* ClassNameOf<Picture> = "Picture";
template<> inline constexpr const char* ClassNameOf<Surface> = "Surface";
template<> inline constexpr const char* ClassNameOf<DirectDraw> = "DirectDraw";
template<> inline constexpr const char* ClassNameOf<MemoryPropertyBag> = "PropertyBag";
template<> inline constexpr const char* ClassNameOf<RetainedMode> = "RetainedMode";
template<> inline constexpr const char* ClassNameOf<DeviceContext> = "DeviceContext";
template<> inline constexpr const char* ClassNameOf<Clipper> = "Clipper";
template<> inline constexpr const char* ClassNameOf<Animation> = "Animation";
template<> inline constexpr const char* ClassNameOf<PickedArray> = "PickedArray";
// clang-format on

/// The face of an object: itself when it is one, nothing for nothing. An object that no class here knows has a face
/// without members.
std::shared_ptr<Dispatchable> FaceOf(const ObjectReference& object);

/// Puts a face in the place of an object that is none.
void WrapObject(Variant& value);

/// Invokes a member of a table; objects in the result and in what is written back are faces.
template<typename Target>
Variant InvokeWrapped(const MemberTable<Target>& table, Target& target, std::int32_t id, std::uint32_t kinds,
                      std::span<Variant> arguments)
{
    Variant result = table.Invoke(target, id, kinds, arguments);
    WrapObject(result);
    for (Variant& argument : arguments)
        WrapObject(argument);
    return result;
}

/// What callers are told of a class.
struct ClassDescription
{
    std::string_view name;
    std::span<const MemberInfo> members;
    std::span<const MemberInfo> events;
    std::string_view interfaceName = {};      ///< of the members, where it has a name of its own
    std::string_view eventInterfaceName = {}; ///< of the events
};

/// The classes of the scene graph, of pictures, surfaces and property bags.
std::vector<ClassDescription> SceneClasses();

/// A new RetainedMode face: the factory of everything a scene is made of.
std::shared_ptr<Dispatchable> NewSceneFactory();

} // namespace lumora::automation
