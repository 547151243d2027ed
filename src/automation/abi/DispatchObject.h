// Objects as callers of the binary interface hold them: a table of functions and a count of references.
#pragma once

#include "automation/Dispatch.h"

struct LumoraDispatch; // of LumoraViewport.h

namespace lumora::automation
{

/// The object that callers hold for a face, with a reference added: the same one while any reference is held. A host
/// gives its control to scripts by it: DispatchObjectFor(control's face). error::WrongThread on another thread than the
/// owner's (see docs/automation.md).
LumoraDispatch* DispatchObjectFor(const std::shared_ptr<Dispatchable>& face);

/// On the owner's thread: the face behind a pointer that a caller gave; nothing for a null pointer. Error 13 for a
/// pointer that is no object of this library (which is not looked into).
ObjectReference ObjectOf(const LumoraDispatch* object);

} // namespace lumora::automation
