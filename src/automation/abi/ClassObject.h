// Class objects: what the library's entry point hands out to create objects with.
#pragma once

#include "LumoraViewport.h"
#include "automation/Classes.h"

namespace lumora::automation
{

/// A class object with one reference, as the interface that is asked for; LUMORA_NO_INTERFACE for another one.
/// error::WrongThread on another thread than the owner's.
LumoraResult MakeClassObject(const CreatableClass& creatable, const LumoraId& interfaceId, void** object);

/// Locks that keep the library loaded. On any thread.
std::size_t LockCount();

} // namespace lumora::automation
