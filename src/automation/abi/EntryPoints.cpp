// The four functions that the library exports, and what it writes down about itself.
#include "LumoraViewport.h"
#include "automation/Classes.h"
#include "automation/TypeLibrary.h"
#include "automation/abi/ClassObject.h"
#include "automation/abi/Ownership.h"
#include "automation/abi/Values.h"
#include "base/Registry.h"

#include <algorithm>
#include <dlfcn.h>

using namespace lumora;
using namespace lumora::automation;

namespace
{

std::string OwnPath()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&DllRegisterServer), &info) == 0 || info.dli_fname == nullptr)
        throw RuntimeError{error::FileNotFound, "Registry", "The library does not know its own file"};
    return std::filesystem::absolute(info.dli_fname).lexically_normal().string();
}

std::filesystem::path TypeLibraryPath(const std::filesystem::path& registry)
{
    return registry.parent_path() / "LumoraViewport.json";
}

void RemoveClasses(Registry& registry)
{
    for (const CreatableClass& creatable : CreatableClasses())
    {
        registry.RemoveKey("CLSID\\" + TextOf(creatable.id));
        registry.RemoveKey(creatable.programName);
    }
    registry.RemoveKey("TypeLib\\" + TextOf(TypeLibraryId()));
}

void AddClasses(Registry& registry, const std::string& library, const std::string& typeLibrary)
{
    const std::string typeLibraryId = TextOf(TypeLibraryId());
    registry.Set("TypeLib\\" + typeLibraryId, "", typeLibrary);
    registry.Set("TypeLib\\" + typeLibraryId, "Version", "2.0");
    for (const CreatableClass& creatable : CreatableClasses())
    {
        const std::string key = "CLSID\\" + TextOf(creatable.id);
        registry.Set(key, "", creatable.help);
        registry.Set(key + "\\InprocServer", "", library);
        registry.Set(key + "\\ProgID", "", creatable.programName);
        registry.Set(key + "\\TypeLib", "", typeLibraryId);
        registry.Set(std::string{creatable.programName} + "\\CLSID", "", TextOf(creatable.id));
    }
}

template<typename Step>
LumoraResult Registering(Step&& step)
{
    const LumoraResult answer = Guarded(nullptr,
                                        [&]
                                        {
                                            const OwnerCall call;
                                            return step();
                                        });
    return answer >= 0 || answer == LUMORA_WRONG_THREAD ? answer : LUMORA_REGISTRATION;
}

} // namespace

extern "C"
{

    LumoraResult DllGetClassObject(const LumoraId* classId, const LumoraId* interfaceId, void** object)
    {
        if (object == nullptr || classId == nullptr || interfaceId == nullptr)
            return LUMORA_POINTER;
        *object = nullptr;
        return Guarded(nullptr,
                       [&]
                       {
                           ClassId id{};
                           std::ranges::copy(classId->bytes, id.begin());
                           const CreatableClass* creatable = FindClass(id);
                           return creatable == nullptr ? LUMORA_NO_CLASS
                                                       : MakeClassObject(*creatable, *interfaceId, object);
                       });
    }

    LumoraResult DllCanUnloadNow(void)
    {
        OwnerCall::DestroyReleased();
        return LiveCount() + LockCount() == 0 ? LUMORA_OK : LUMORA_FALSE;
    }

    LumoraResult DllRegisterServer(void)
    {
        return Registering(
            []
            {
                const std::filesystem::path file = Registry::DefaultPath();
                Registry registry = Registry::Read(file);
                RemoveClasses(registry);
                AddClasses(registry, OwnPath(), TypeLibraryPath(file).string());
                ReplaceFile(TypeLibraryPath(file), TypeLibraryDocument());
                registry.Write(file);
                return LUMORA_OK;
            });
    }

    LumoraResult DllUnregisterServer(void)
    {
        return Registering(
            []
            {
                const std::filesystem::path file = Registry::DefaultPath();
                Registry registry = Registry::Read(file);
                RemoveClasses(registry);
                registry.Write(file);
                std::error_code ignored;
                std::filesystem::remove(TypeLibraryPath(file), ignored);
                return LUMORA_OK;
            });
    }

} // extern "C"
