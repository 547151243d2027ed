#include "automation/abi/ClassObject.h"

#include "automation/TypeLibrary.h"
#include "automation/abi/DispatchObject.h"
#include "automation/abi/Ownership.h"
#include "automation/abi/Values.h"

#include <atomic>
#include <cstring>

namespace lumora::automation
{

namespace
{

class HeldClass final : public LumoraClassObject, public Counted
{
public:
    HeldClass(const LumoraClassObjectFunctions* table, const CreatableClass& creatable)
        : LumoraClassObject{table}, creatable_(creatable)
    {
    }

    std::shared_ptr<Dispatchable> Create() const { return creatable_.create(); }

private:
    const CreatableClass& creatable_;
};

std::atomic<std::size_t> locks{0};

HeldClass& Held(LumoraClassObject* self)
{
    return static_cast<HeldClass&>(*self);
}

std::uint32_t AddRef(LumoraClassObject* self)
{
    return Held(self).AddReference();
}

std::uint32_t Release(LumoraClassObject* self)
{
    return Held(self).Release();
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
            AddRef(self);
            *object = self;
            return LUMORA_OK;
        }
    return LUMORA_NO_INTERFACE;
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
                       const OwnerCall call;
                       LumoraDispatch* created = DispatchObjectFor(Held(self).Create());
                       const LumoraResult answer = created->functions->QueryInterface(created, interfaceId, object);
                       created->functions->Release(created);
                       return answer;
                   });
}

LumoraResult LockServer(LumoraClassObject*, int32_t lock)
{
    return Guarded(nullptr,
                   [&]() -> LumoraResult
                   {
                       const OwnerCall call;
                       if (lock != 0)
                           ++locks;
                       else if (locks > 0)
                           --locks;
                       return LUMORA_OK;
                   });
}

LumoraResult GetTypeLibrary(LumoraClassObject*, LumoraText* document)
{
    if (document == nullptr)
        return LUMORA_POINTER;
    *document = nullptr;
    return Guarded(nullptr,
                   [&]() -> LumoraResult
                   {
                       const OwnerCall call;
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
    const OwnerCall call;
    auto* const held = new HeldClass{&Functions, creatable};
    const LumoraResult answer = QueryInterface(held, &interfaceId, object);
    Release(held);
    return answer;
}

std::size_t LockCount()
{
    return locks;
}

} // namespace lumora::automation
