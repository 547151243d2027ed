// The classes by name: which of them a class factory creates, and under which identifiers.
#pragma once

#include "automation/Faces.h"

#include <array>
#include <cstdint>

namespace lumora::automation
{

/// An identifier as it lies in memory: 4, 2 and 2 bytes with the lowest first, then 8 bytes.
using ClassId = std::array<std::uint8_t, 16>;

/// "{6C756D6F-...}".
std::string TextOf(const ClassId& id);

struct CreatableClass
{
    std::string_view programName; ///< "LumoraViewport.Viewport"
    ClassId id;
    std::string_view help;
    ClassDescription (*describe)();
    std::shared_ptr<Dispatchable> (*create)();
};

/// In the order of registration.
std::span<const CreatableClass> CreatableClasses();

/// The class of this identifier or of this name (the case of A to Z does not count), or nothing.
const CreatableClass* FindClass(const ClassId& id);
const CreatableClass* FindClass(std::string_view programName);

/// Of the type library, fixed.
ClassId TypeLibraryId();

} // namespace lumora::automation
