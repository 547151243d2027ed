// Objects as callers of the binary interface hold them: a table of functions and a count of references.
#pragma once

#include "LumoraViewport.h"
#include "platform/automation/Dispatch.h"

namespace lumora::automation
{

/// The object that callers hold for a face, with a reference added: the same one while any reference is held.
LumoraDispatch* DispatchObjectFor(const std::shared_ptr<Dispatchable>& face);

/// The face behind a pointer that a caller gave; nothing for a null pointer. Error 13 for a pointer that is no object
/// of this library (which is not looked into).
ObjectReference ObjectOf(const LumoraDispatch* object);

/// How many objects callers hold.
std::size_t LiveObjects();

} // namespace lumora::automation
