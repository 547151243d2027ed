// The tables of the classes that a scene is made of.
#pragma once

#include "automation/Faces.h"
#include "automation/GeometryKernel.h"
#include "platform/directdraw/DeviceContext.h"

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
template<> const MemberTable<DeviceContext>& TableOf<DeviceContext>();
template<> const MemberTable<Clipper>& TableOf<Clipper>();
template<> const MemberTable<Animation>& TableOf<Animation>();
template<> const MemberTable<PickedArray>& TableOf<PickedArray>();
template<> const MemberTable<GeometryKernel>& TableOf<GeometryKernel>();
template<> const MemberTable<MemoryPropertyBag>& TableOf<MemoryPropertyBag>();
template<> const MemberTable<Object>& TableOf<Object>();
// clang-format on

// Members that came after those of the tables' first edition.
std::vector<MemberRow<Frame>> FrameReadingRows();
std::vector<MemberRow<MeshBuilder>> MeshReadingRows();
std::vector<MemberRow<Face>> FaceReadingRows();
std::vector<MemberRow<RetainedMode>> FactoryRows();

/// Every class with a table; a class stands before those it is derived from.
template<typename... Targets>
struct Classes
{
};

using EveryClass =
    Classes<Frame, MeshBuilder, Face, Light, Material, Texture, RetainedMode, Picture, Surface, DirectDraw,
            MemoryPropertyBag, DeviceContext, Clipper, Animation, PickedArray, GeometryKernel, Object>;

} // namespace lumora::automation
