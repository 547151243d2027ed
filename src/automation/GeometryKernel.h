// The geometry kernel as an object: its functions by name, on a root of their own.
#pragma once

#include "automation/Faces.h"

namespace lumora::automation
{

/// What the kernel's functions compute with. It has no state: one serves every caller.
class GeometryKernel : public Object
{
public:
    /// The one that is in use, or a new one.
    static std::shared_ptr<GeometryKernel> Shared();

    RetainedMode& Root() { return root_; }

private:
    GeometryKernel();
    RetainedMode root_;
};

template<>
inline constexpr const char* ClassNameOf<GeometryKernel> = "Geometry";

} // namespace lumora::automation
