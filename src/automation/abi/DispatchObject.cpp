#include "automation/abi/DispatchObject.h"

#include "LumoraViewport.h"
#include "automation/abi/Ownership.h"
#include "automation/abi/Values.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace lumora::automation
{

namespace
{

class HeldObject;

struct LiveTable
{
    std::unordered_map<const Dispatchable*, HeldObject*> byFace;
    std::unordered_map<const LumoraDispatch*, HeldObject*> byPointer;
};

// The owner's. Never destroyed: objects may be released while the process ends.
LiveTable& Live()
{
    static auto& table = *new LiveTable;
    return table;
}

// What a LumoraDispatch* of ours points to.
class HeldObject final : public LumoraDispatch, public Counted
{
public:
    HeldObject(const LumoraDispatchFunctions* table, std::shared_ptr<Dispatchable> target)
        : LumoraDispatch{table}, face_(std::move(target))
    {
    }

    // The face goes after the tables forgot it: its end may end a control, and that may call back.
    ~HeldObject() override
    {
        Live().byFace.erase(face_.get());
        Live().byPointer.erase(this);
    }

    const std::shared_ptr<Dispatchable>& Face() const { return face_; }

private:
    std::shared_ptr<Dispatchable> face_;
};

HeldObject& Held(LumoraDispatch* self)
{
    return static_cast<HeldObject&>(*self);
}

std::uint32_t AddRef(LumoraDispatch* self)
{
    return Held(self).AddReference();
}

std::uint32_t Release(LumoraDispatch* self)
{
    return Held(self).Release();
}

// The owner's call of an object, which is kept for as long, whatever the call lets go of.
class ObjectCall
{
public:
    explicit ObjectCall(LumoraDispatch* self) : self_(self) { AddRef(self_); }
    ~ObjectCall() { Release(self_); }
    ObjectCall(const ObjectCall&) = delete;
    ObjectCall& operator=(const ObjectCall&) = delete;
    Dispatchable& Face() const { return *Held(self_).Face(); }

private:
    OwnerCall owner_; // begins before the reference and ends after it
    LumoraDispatch* self_;
};

LumoraResult QueryInterface(LumoraDispatch* self, const LumoraId* interfaceId, void** object)
{
    constexpr LumoraId Offered[] = {LUMORA_INTERFACE_UNKNOWN, LUMORA_INTERFACE_DISPATCH};
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

const char* ClassNameOfObject(LumoraDispatch* self)
{
    return Held(self).Face()->ClassName().data(); // tables end their names by 0
}

LumoraResult DescribeMember(std::span<const MemberInfo> members, std::int32_t index, LumoraMember* described)
{
    if (described == nullptr)
        return LUMORA_POINTER;
    *described = {};
    if (index < 0 || static_cast<std::size_t>(index) >= members.size())
        return LUMORA_FALSE;
    const MemberInfo& member = members[static_cast<std::size_t>(index)];
    *described = {member.name.c_str(),
                  member.typeName.c_str(),
                  member.help.c_str(),
                  member.id,
                  static_cast<int32_t>(member.type),
                  member.kinds,
                  static_cast<int32_t>(member.arguments.size())};
    return LUMORA_OK;
}

LumoraResult DescribeArgument(std::span<const MemberInfo> members, std::int32_t index, std::int32_t place,
                              LumoraArgument* described)
{
    if (described == nullptr)
        return LUMORA_POINTER;
    *described = {};
    if (index < 0 || static_cast<std::size_t>(index) >= members.size())
        return LUMORA_FALSE;
    const auto& arguments = members[static_cast<std::size_t>(index)].arguments;
    if (place < 0 || static_cast<std::size_t>(place) >= arguments.size())
        return LUMORA_FALSE;
    const ArgumentInfo& argument = arguments[static_cast<std::size_t>(place)];
    *described = {argument.name.c_str(), argument.typeName.c_str(), static_cast<int32_t>(argument.type),
                  argument.byReference ? 1 : 0};
    return LUMORA_OK;
}

LumoraResult GetMember(LumoraDispatch* self, int32_t index, LumoraMember* member)
{
    return Guarded(nullptr, [&] { return DescribeMember(ObjectCall{self}.Face().Members(), index, member); });
}

LumoraResult GetMemberArgument(LumoraDispatch* self, int32_t index, int32_t argument, LumoraArgument* info)
{
    return Guarded(nullptr, [&] { return DescribeArgument(ObjectCall{self}.Face().Members(), index, argument, info); });
}

LumoraResult GetEvent(LumoraDispatch* self, int32_t index, LumoraMember* event)
{
    return Guarded(nullptr, [&] { return DescribeMember(ObjectCall{self}.Face().Events(), index, event); });
}

LumoraResult GetEventArgument(LumoraDispatch* self, int32_t index, int32_t argument, LumoraArgument* info)
{
    return Guarded(nullptr, [&] { return DescribeArgument(ObjectCall{self}.Face().Events(), index, argument, info); });
}

LumoraResult GetIdOfName(LumoraDispatch* self, const char* name, int32_t* id, LumoraError* error)
{
    return Guarded(error,
                   [&]() -> LumoraResult
                   {
                       if (name == nullptr || id == nullptr)
                           return LUMORA_POINTER;
                       *id = -1;
                       *id = ObjectCall{self}.Face().IdOf(name);
                       return LUMORA_OK;
                   });
}

// Gives the caller what a member wrote into its arguments, and the result: all of it or nothing.
void HandOver(std::span<const Variant> before, std::span<const Variant> after, LumoraValue* arguments,
              const Variant& answer, LumoraValue* result)
{
    OwnedValues fresh;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < after.size(); ++i)
        if (before[i] != after[i])
        {
            places.push_back(i);
            fresh.Add(after[i]);
        }
    fresh.Add(answer);
    for (std::size_t k = 0; k < places.size(); ++k)
    {
        LumoraValue old = std::exchange(arguments[places[k]], fresh.Take(k));
        ClearValue(old);
    }
    if (result != nullptr)
        *result = fresh.Take(places.size());
}

LumoraResult Invoke(LumoraDispatch* self, int32_t id, uint32_t kinds, LumoraValue* arguments, int32_t count,
                    LumoraValue* result, LumoraError* error)
{
    constexpr std::int32_t MaximumArguments = 64;
    if (result != nullptr)
        *result = LumoraValue{};
    return Guarded(error,
                   [&]() -> LumoraResult
                   {
                       const ObjectCall call{self};
                       if (count < 0 || (count > 0 && arguments == nullptr))
                           return LUMORA_POINTER;
                       if (count > MaximumArguments)
                           throw RuntimeError{error::WrongArgumentCount, "automation", "Wrong number of arguments"};
                       std::vector<Variant> before;
                       for (std::int32_t i = 0; i < count; ++i)
                           before.push_back(ReadValue(arguments[i]));
                       std::vector<Variant> given = before;
                       const Variant answer = call.Face().Invoke(id, kinds, given);
                       HandOver(before, given, arguments, answer, result);
                       return LUMORA_OK;
                   });
}

// A caller's sink.
class ForeignSink : public EventSink
{
public:
    explicit ForeignSink(const LumoraSink& sink) : sink_(sink) {}
    ~ForeignSink() override
    {
        if (sink_.Released != nullptr)
            sink_.Released(sink_.context);
    }
    ForeignSink(const ForeignSink&) = delete;
    ForeignSink& operator=(const ForeignSink&) = delete;

    void OnEvent(std::int32_t id, std::span<Variant> arguments) override
    {
        OwnedValues values;
        for (const Variant& argument : arguments)
            values.Add(argument);
        LumoraError error{};
        const LumoraResult answer =
            sink_.OnEvent(sink_.context, id, values.Data(), static_cast<int32_t>(values.Size()), &error);
        if (answer < 0)
            RaiseForeign(answer, error);
        FreeTexts(error);
        std::vector<Variant> changed;
        for (std::size_t i = 0; i < arguments.size(); ++i)
            changed.push_back(Kept(ReadValue(values.Data()[i])));
        std::ranges::move(changed, arguments.begin());
    }

private:
    // What a sink lent is its own again as soon as it has returned.
    static Variant Kept(Variant value)
    {
        if (const auto* buffer = std::get_if<NumberBuffer>(&value))
            return KeptBuffer(*buffer);
        return value;
    }

    static void FreeTexts(LumoraError& error)
    {
        FreeText(error.source);
        FreeText(error.description);
        error = {};
    }

    [[noreturn]] static void RaiseForeign(LumoraResult answer, LumoraError& error)
    {
        const RuntimeError failure{error.number != 0 ? error.number : answer, ReadText(error.source),
                                   ReadText(error.description)};
        FreeTexts(error);
        throw failure;
    }

    LumoraSink sink_;
};

LumoraResult Advise(LumoraDispatch* self, const LumoraSink* sink, uint32_t* connection, LumoraError* error)
{
    return Guarded(error,
                   [&]() -> LumoraResult
                   {
                       const ObjectCall call{self};
                       if (sink == nullptr || sink->OnEvent == nullptr || connection == nullptr)
                           return LUMORA_POINTER;
                       *connection = 0;
                       if (call.Face().Events().empty()) // before the sink is ours to release
                           call.Face().Connect(nullptr);
                       *connection =
                           static_cast<std::uint32_t>(call.Face().Connect(std::make_shared<ForeignSink>(*sink)));
                       return LUMORA_OK;
                   });
}

LumoraResult Unadvise(LumoraDispatch* self, uint32_t connection)
{
    return Guarded(nullptr,
                   [&]() -> LumoraResult
                   { return ObjectCall{self}.Face().Disconnect(connection) ? LUMORA_OK : LUMORA_NO_CONNECTION; });
}

LumoraText MakeTextOf(LumoraDispatch*, const uint16_t* units, uint32_t count)
{
    if (count > LUMORA_MAXIMUM_TEXT || (units == nullptr && count != 0))
        return nullptr;
    return MakeText(std::u16string_view{reinterpret_cast<const char16_t*>(units), count});
}

LumoraText MakeTextFromUtf8(LumoraDispatch*, const char* text)
{
    return text == nullptr ? nullptr : MakeText(std::string_view{text});
}

void FreeTextOf(LumoraDispatch*, LumoraText text)
{
    FreeText(text);
}

void ClearValueOf(LumoraDispatch*, LumoraValue* value)
{
    if (value != nullptr)
        ClearValue(*value);
}

constexpr LumoraDispatchFunctions Functions = {
    QueryInterface, AddRef, Release, ClassNameOfObject, GetMember,  GetMemberArgument, GetEvent,   GetEventArgument,
    GetIdOfName,    Invoke, Advise,  Unadvise,          MakeTextOf, MakeTextFromUtf8,  FreeTextOf, ClearValueOf};

} // namespace

LumoraDispatch* DispatchObjectFor(const std::shared_ptr<Dispatchable>& face)
{
    const OwnerCall call;
    if (const auto known = Live().byFace.find(face.get()); known != Live().byFace.end())
    {
        known->second->AddReference();
        return known->second;
    }
    auto* const held = new HeldObject{&Functions, face};
    try
    {
        Live().byPointer.emplace(held, held);
        Live().byFace.emplace(face.get(), held);
    }
    catch (...)
    {
        held->Release();
        throw;
    }
    return held;
}

ObjectReference ObjectOf(const LumoraDispatch* object)
{
    if (object == nullptr)
        return nullptr;
    const auto known = Live().byPointer.find(object);
    if (known == Live().byPointer.end() || !known->second->IsHeld())
        throw RuntimeError{error::TypeMismatch, "automation", "Type mismatch: this is no object of this library"};
    return known->second->Face();
}

} // namespace lumora::automation
