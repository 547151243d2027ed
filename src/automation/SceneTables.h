// The tables of the classes that a scene is made of.
#pragma once

#include "automation/Faces.h"

namespace lumora::automation
{

/// The members of a class, as callers see them.
template<typename Target>
const MemberTable<Target>& TableOf();

// clang-format off
template<> const MemberTable<Frame>& TableOf<Frame>();
template<> const MemberTable<MeshBuilder>& TableOf<MeshBuilder>();
template<> const MemberTable<Face>& TableOf<Face>();
template<> const MemberTable<Light>& TableOf<Light>();
template<> const MemberTable<Material>& TableOf<Material>();
template<> const MemberTable<Texture>& TableOf<Texture>();
template<> const MemberTable<RetainedMode>& TableOf<RetainedMode>();
template<> const MemberTable<Picture>& TableOf<Picture>();
template<> const MemberTable<Surface>& TableOf<Surface>();
template<> const MemberTable<DirectDraw>& TableOf<DirectDraw>();
template<> const MemberTable<headless::MemoryPropertyBag>& TableOf<headless::MemoryPropertyBag>();
template<> const MemberTable<Object>& TableOf<Object>();
// clang-format on

/// Every class with a table; a class stands before those it is derived from.
template<typename... Targets>
struct Classes
{
};

using EveryClass = Classes<Frame, MeshBuilder, Face, Light, Material, Texture, RetainedMode, Picture, Surface,
                           DirectDraw, headless::MemoryPropertyBag, Object>;

} // namespace lumora::automation
