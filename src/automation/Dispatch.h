// Late binding: objects whose members are reached by name or number, whatever language the caller is written in.
#pragma once

#include "base/Event.h"
#include "base/RuntimeError.h"
#include "base/Variant.h"

#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lumora
{

namespace error
{
inline constexpr std::int32_t OutOfStringSpace = 14;            ///< a text longer than anything here needs
inline constexpr std::int32_t ReadOnlyProperty = 383;           ///< a write to a property without a writer
inline constexpr std::int32_t WrongArgumentCount = 450;         ///< more or fewer arguments than the member takes
inline constexpr std::int32_t NoEvents = 459;                   ///< a sink for an object that raises no events
inline constexpr std::int32_t DispatchIdNotFound = -2147352573; ///< 0x80020003, no member of this id and kind
inline constexpr std::int32_t WrongThread = -2147417842;        ///< 0x8001010E, another thread owns the library
} // namespace error

/// What is done with a member. Bits: a caller that cannot tell a method from a property asks for both.
namespace invoke
{
inline constexpr std::uint32_t Method = 1;
inline constexpr std::uint32_t Get = 2;
inline constexpr std::uint32_t Put = 4;
inline constexpr std::uint32_t PutReference = 8; ///< an object property's reference
} // namespace invoke

/// Types as callers see them, with the numbers that automation gives them.
enum class ValueType : std::int32_t
{
    Nothing = 0,
    Integer = 2,
    Long = 3,
    Single = 4,
    Double = 5,
    String = 8,
    Object = 9,
    Boolean = 11,
    Any = 12,
    Buffer = 0x2000, ///< many numbers of one type
};

/// The type's name in documents: "Long", "Object" and so on.
std::string_view NameOf(ValueType type);

struct ArgumentInfo
{
    std::string name;
    ValueType type = ValueType::Nothing;
    std::string typeName;     ///< an enumeration's or a class's name, or the type's
    bool byReference = false; ///< the member writes a result back into it
};

/// One member, or one event, of a class.
struct MemberInfo
{
    std::string name;
    std::int32_t id = 0;
    std::uint32_t kinds = 0; ///< bits of `invoke`; 0 for events
    std::vector<ArgumentInfo> arguments;
    ValueType type = ValueType::Nothing; ///< the property's, or of the method's result
    std::string typeName;
    std::string help;
    Variant defaultValue; ///< of a property that has one
    bool hidden = false;  ///< browsers of members leave it out
};

/// Told of an object's events.
class EventSink
{
public:
    virtual ~EventSink() = default;

    /// Arguments are by reference: what a sink assigns, later sinks and the object that raised the event see. A sink
    /// may call back, connect and disconnect; what it throws leaves the raise as it came.
    virtual void OnEvent(std::int32_t id, std::span<Variant> arguments) = 0;
};

/// An object that is driven by names. Whoever calls Invoke holds a reference to it for as long as the call lasts.
///
/// Errors of all calls are RuntimeError: 438 for a name that no member has; DispatchIdNotFound for an id that has no
/// member of the wanted kind; 383 for a write to a read-only property; 450, 13 and 6 for arguments that are too many or
/// too few, of another type, out of range; and what the member itself raises. Nothing was done then.
class Dispatchable : public Object
{
public:
    virtual std::string_view ClassName() const = 0;

    /// In the order of their declaration; valid as long as the process.
    virtual std::span<const MemberInfo> Members() const = 0;
    virtual std::span<const MemberInfo> Events() const { return {}; }

    /// The id of a member; the case of A to Z does not count.
    std::int32_t IdOf(std::string_view name) const;

    /// Calls a member with as many arguments as it takes (a write takes one). Results of by-reference arguments are
    /// written back, converted to the argument's type; all others stay as they are. `kinds` are bits of `invoke`.
    virtual Variant Invoke(std::int32_t id, std::uint32_t kinds, std::span<Variant> arguments) = 0;

    /// The object that this is the face of, or nothing.
    virtual ObjectReference Target() const { return nullptr; }

    // The same by name, for C++ callers.

    Variant Get(std::string_view name);
    void Put(std::string_view name, Variant value);
    Variant Call(std::string_view name, std::span<Variant> arguments = {});
    Variant CallWith(std::string_view name, std::initializer_list<Variant> arguments);

    /// Sinks are told in the order of connection. error::NoEvents for an object without events.
    EventConnection Connect(std::shared_ptr<EventSink> sink);

    /// False when no such sink is connected.
    bool Disconnect(EventConnection connection);

protected:
    void RaiseEvent(std::int32_t id, std::span<Variant> arguments) { sinks_.Raise(id, arguments); }
    bool HasSinks() const { return sinks_.HasHandlers(); }

private:
    Event<std::int32_t, std::span<Variant>> sinks_;
    std::vector<EventConnection> connections_;
};

/// Equal but for the case of A to Z: how members' names are compared.
bool EqualNames(std::string_view left, std::string_view right);

/// The object as something that has members; error 91 for nothing, 438 for an object that has none.
std::shared_ptr<Dispatchable> AsDispatchable(const Variant& value);

} // namespace lumora
