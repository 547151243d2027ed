#include "automation/abi/ClassObject.h"

#include "automation/TypeLibrary.h"
#include "automation/abi/DispatchObject.h"
#include "automation/abi/Values.h"

#include <cstring>

namespace lumora::automation
{

namespace
{

struct HeldClass
{
    LumoraClassObject interface;
    std::uint32_t references;
    const CreatableClass* creatable;
};

std::size_t liveClasses = 0;
std::size_t locks = 0;

HeldClass& Held(LumoraClassObject* self)
{
    return *reinterpret_cast<HeldClass*>(self);
}

LumoraResult QueryInterface(LumoraClassObject* self, const LumoraId* interfaceId, void** object)
{
    constexpr LumoraId Offered[] = {LUMORA_INTERFACE_UNKNOWN, LUMORA_INTERFACE_CLASS_FACTORY,
                                    LUMORA_INTERFACE_CLASS_OBJECT};
    if (object == nullptr || interfaceId == nullptr)
        return LUMORA_POINTER;
    *object = nullptr;
    for (const LumoraId& offered : Offered)
        if (std::memcmp(&offered, interfaceId, sizeof offered) == 0)
        {
            ++Held(self).references;
            *object = self;
            return LUMORA_OK;
        }
    return LUMORA_NO_INTERFACE;
}

std::uint32_t AddRef(LumoraClassObject* self)
{
    return ++Held(self).references;
}

std::uint32_t Release(LumoraClassObject* self)
{
    HeldClass& held = Held(self);
    if (--held.references != 0)
        return held.references;
    delete &held;
    --liveClasses;
    return 0;
}

LumoraResult CreateInstance(LumoraClassObject* self, void* outer, const LumoraId* interfaceId, void** object)
{
    if (object == nullptr || interfaceId == nullptr)
        return LUMORA_POINTER;
    *object = nullptr;
    if (outer != nullptr)
        return LUMORA_NO_AGGREGATION;
    return Guarded(nullptr,
                   [&]
                   {
                       LumoraDispatch* created = DispatchObjectFor(Held(self).creatable->create());
                       const LumoraResult answer = created->functions->QueryInterface(created, interfaceId, object);
                       created->functions->Release(created);
                       return answer;
                   });
}

LumoraResult LockServer(LumoraClassObject*, int32_t lock)
{
    if (lock != 0)
        ++locks;
    else if (locks > 0)
        --locks;
    return LUMORA_OK;
}

LumoraResult GetTypeLibrary(LumoraClassObject*, LumoraText* document)
{
    if (document == nullptr)
        return LUMORA_POINTER;
    *document = nullptr;
    return Guarded(nullptr,
                   [&]() -> LumoraResult
                   {
                       *document = MakeText(TypeLibraryDocument());
                       return *document != nullptr ? LUMORA_OK : Report(nullptr, error::OutOfMemory, {}, {});
                   });
}

void FreeTextOf(LumoraClassObject*, LumoraText text)
{
    FreeText(text);
}

constexpr LumoraClassObjectFunctions Functions = {QueryInterface, AddRef,         Release,   CreateInstance,
                                                  LockServer,     GetTypeLibrary, FreeTextOf};

} // namespace

LumoraResult MakeClassObject(const CreatableClass& creatable, const LumoraId& interfaceId, void** object)
{
    auto* held = new HeldClass{{&Functions}, 1, &creatable};
    ++liveClasses;
    const LumoraResult answer = QueryInterface(&held->interface, &interfaceId, object);
    Release(&held->interface);
    return answer;
}

std::size_t LiveClassObjects()
{
    return liveClasses + locks;
}

} // namespace lumora::automation
