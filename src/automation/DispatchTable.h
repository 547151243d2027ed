// Tables of members: one row binds a name to a C++ function, and the function's own signature says the rest.
//
//     const MemberTable<Light> table{"Light", {
//         Property("Range", &Light::Range, &Light::SetRange, "how far it reaches, scene units"),
//         Method("SetCone", "Umbra, Penumbra", &Light::SetCone, "full angles, radians"),
//     }};
//
// Functions are members of the target's class, or functions whose first parameter is a reference to it. Parameters that
// are references to something that is not const are results: they are written back.
#pragma once

#include "automation/Dispatch.h"
#include "base/Numbers.h"

#include <functional>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace lumora::automation
{

// How each C++ type crosses to a Variant and back. Enumerations cross as Long; what other names their types have,
// EnumerationName knows.

template<typename Type>
inline constexpr const char* EnumerationName = "Long";

/// The name of the class that a scripting caller sees; specialised by whoever gives a C++ class a face.
template<typename Type>
inline constexpr const char* ClassNameOf = "Object";

template<typename Type>
struct Crossing
{
    static_assert(std::is_enum_v<Type>, "this type has no automation counterpart");
    static constexpr ValueType Kind = ValueType::Long;
    static constexpr const char* Name = EnumerationName<Type>;
    static Variant Out(Type value) { return static_cast<std::int32_t>(value); }
    static Type In(const Variant& value) { return static_cast<Type>(VariantToLong(value)); }
};

template<typename Type, ValueType kind, Type (*convert)(const Variant&)>
struct PlainCrossing
{
    static constexpr ValueType Kind = kind;
    static constexpr const char* Name = nullptr; // the type's own
    static Variant Out(Type value) { return Variant{std::move(value)}; }
    static Type In(const Variant& value) { return convert(value); }
};

// clang-format off
template<> struct Crossing<bool> : PlainCrossing<bool, ValueType::Boolean, VariantToBoolean> {};
template<> struct Crossing<std::int16_t> : PlainCrossing<std::int16_t, ValueType::Integer, VariantToInteger> {};
template<> struct Crossing<std::int32_t> : PlainCrossing<std::int32_t, ValueType::Long, VariantToLong> {};
template<> struct Crossing<float> : PlainCrossing<float, ValueType::Single, VariantToSingle> {};
template<> struct Crossing<double> : PlainCrossing<double, ValueType::Double, VariantToDouble> {};
template<> struct Crossing<std::string> : PlainCrossing<std::string, ValueType::String, VariantToString> {};
// clang-format on

/// Colours and clock readings: 32 bits, whatever their sign. A caller gets a Long and may give either.
template<>
struct Crossing<std::uint32_t>
{
    static constexpr ValueType Kind = ValueType::Long;
    static constexpr const char* Name = nullptr;
    static Variant Out(std::uint32_t value) { return static_cast<std::int32_t>(value); }
    static std::uint32_t In(const Variant& value) { return ToBits(VariantToDouble(value)); }
};

/// Many numbers from a caller: a buffer or a text of them; nothing is none at all.
template<typename Number>
struct Crossing<Numbers<Number>>
{
    static constexpr ValueType Kind = ValueType::Buffer;
    static constexpr const char* Name = BufferNameOf(ElementTypeOf<Number>);
    static Numbers<Number> In(const Variant& value)
    {
        if (const auto* buffer = std::get_if<NumberBuffer>(&value))
            return NumbersIn<Number>(*buffer);
        if (const auto* text = std::get_if<std::string>(&value))
            return NumbersIn<Number>(*text);
        if (VariantToObject(value))
            throw RuntimeError{error::TypeMismatch, "automation", "Type mismatch: an object is no list of numbers"};
        return {};
    }
};

/// Many numbers for a caller, who becomes their owner. What an argument held before its result is not looked at.
template<typename Element>
struct Crossing<std::vector<Element>>
{
    using Number = typename NumberOf<Element>::Type;
    static constexpr ValueType Kind = ValueType::Buffer;
    static constexpr const char* Name = BufferNameOf(ElementTypeOf<Number>);
    static Variant Out(std::vector<Element> elements) { return OwnedBuffer<Number>(std::move(elements)); }
    static std::vector<Element> In(const Variant&) { return {}; }
};

/// Memory that is shared with the caller, such as the pixels of a locked surface.
template<typename Number>
struct Crossing<SharedNumbers<Number>>
{
    static constexpr ValueType Kind = ValueType::Buffer;
    static constexpr const char* Name = BufferNameOf(ElementTypeOf<Number>);
    static Variant Out(const SharedNumbers<Number>& numbers)
    {
        return NumberBuffer{ElementTypeOf<Number>, numbers.view.data(), numbers.view.size(), true, numbers.owner};
    }
};

/// Anything at all. A face stands for its object, and what is kept is no caller's memory.
template<>
struct Crossing<Variant>
{
    static constexpr ValueType Kind = ValueType::Any;
    static constexpr const char* Name = nullptr;
    static Variant Out(Variant value) { return value; }
    static Variant In(const Variant& value)
    {
        if (const auto* object = std::get_if<ObjectReference>(&value))
            if (const auto* face = dynamic_cast<const Dispatchable*>(object->get()))
                if (ObjectReference target = face->Target())
                    return target;
        if (const auto* buffer = std::get_if<NumberBuffer>(&value))
            return KeptBuffer(*buffer);
        return value;
    }
};

template<typename Type>
struct Crossing<std::shared_ptr<Type>>
{
    static constexpr ValueType Kind = ValueType::Object;
    static constexpr const char* Name = ClassNameOf<Type>;
    static Variant Out(std::shared_ptr<Type> value) { return ObjectReference{std::move(value)}; }
    static std::shared_ptr<Type> In(const Variant& value)
    {
        const ObjectReference object = VariantToObject(Crossing<Variant>::In(value));
        auto wanted = std::dynamic_pointer_cast<Type>(object);
        if (object && !wanted)
            throw RuntimeError{error::TypeMismatch, "automation",
                               std::string{"Type mismatch: this is another kind of object than "} + Name};
        return wanted;
    }
};

template<typename Type>
std::string TypeNameOf()
{
    if constexpr (std::is_void_v<Type>)
        return "Nothing";
    else if constexpr (Crossing<Type>::Name != nullptr)
        return Crossing<Type>::Name;
    else
        return std::string{NameOf(Crossing<Type>::Kind)};
}

template<typename Type>
constexpr ValueType KindOf()
{
    if constexpr (std::is_void_v<Type>)
        return ValueType::Nothing;
    else
        return Crossing<Type>::Kind;
}

// What a function takes and answers.

template<typename Function>
struct Signature : Signature<decltype(&Function::operator())> // a lambda
{
};

template<typename Answer, typename Owner, typename... Parameters>
struct Parts
{
    using Target = Owner;
    using Result = std::remove_cvref_t<Answer>;
    using Arguments = std::tuple<Parameters...>;
};

// clang-format off
template<typename R, typename Lambda, typename T, typename... A>
struct Signature<R (Lambda::*)(T&, A...) const> : Parts<R, std::remove_const_t<T>, A...> {};
template<typename R, typename T, typename... A>
struct Signature<R (*)(T&, A...)> : Parts<R, std::remove_const_t<T>, A...> {};
// clang-format on

// Members of the class itself: a lambda's target is its first parameter, theirs the class.
template<typename Function, bool = std::is_member_function_pointer_v<Function>>
struct Bound : Signature<Function>
{
};

template<typename Function>
struct MemberParts;
// clang-format off
template<typename R, typename T, typename... A> struct MemberParts<R (T::*)(A...)> : Parts<R, T, A...> {};
template<typename R, typename T, typename... A> struct MemberParts<R (T::*)(A...) const> : Parts<R, T, A...> {};
// clang-format on

template<typename Function>
struct Bound<Function, true> : MemberParts<Function>
{
};

template<typename Parameter>
inline constexpr bool IsResult =
    std::is_lvalue_reference_v<Parameter> && !std::is_const_v<std::remove_reference_t<Parameter>>;

template<typename Target>
using Action = std::function<Variant(Target&, std::span<Variant>)>;

[[noreturn]] void RaiseArgumentCount(std::size_t wanted, std::size_t given);

/// The function as something that takes Variants. All arguments are converted before it is called, and results written
/// back after it returned.
template<typename Target, typename Function, typename... Parameters>
Action<Target> MakeAction(Function function, std::type_identity<std::tuple<Parameters...>>)
{
    return [function](Target& target, std::span<Variant> given) -> Variant
    {
        if (given.size() != sizeof...(Parameters))
            RaiseArgumentCount(sizeof...(Parameters), given.size());
        return [&]<std::size_t... index>(std::index_sequence<index...>)->Variant
        {
            std::tuple<std::remove_cvref_t<Parameters>...> values{
                Crossing<std::remove_cvref_t<Parameters>>::In(given[index])...};
            const auto writeBack = [&]
            {
                [[maybe_unused]] const auto one = [&]<std::size_t i>(std::integral_constant<std::size_t, i>)
                {
                    using Parameter = std::tuple_element_t<i, std::tuple<Parameters...>>;
                    if constexpr (IsResult<Parameter>)
                        given[i] = Crossing<std::remove_cvref_t<Parameter>>::Out(std::move(std::get<i>(values)));
                };
                (one(std::integral_constant<std::size_t, index>{}), ...);
            };
            using Result = std::invoke_result_t<const Function&, Target&, std::remove_cvref_t<Parameters>&...>;
            if constexpr (std::is_void_v<Result>)
            {
                std::invoke(function, target, std::get<index>(values)...);
                writeBack();
                return {};
            }
            else
            {
                Variant result = Crossing<std::remove_cvref_t<Result>>::Out(
                    std::invoke(function, target, std::get<index>(values)...));
                writeBack();
                return result;
            }
        }
        (std::index_sequence_for<Parameters...>{});
    };
}

/// One member: what callers are told of it, and what it does.
template<typename Target>
struct MemberRow
{
    MemberInfo info;
    Action<Target> get;
    Action<Target> put;
    Action<Target> call;
};

/// The names in "Left, Top", one after another.
std::vector<std::string> SplitNames(std::string_view names);

template<typename... Parameters>
std::vector<ArgumentInfo> DescribeArguments(std::string_view names, std::type_identity<std::tuple<Parameters...>>)
{
    std::vector<ArgumentInfo> arguments = {ArgumentInfo{{},
                                                        Crossing<std::remove_cvref_t<Parameters>>::Kind,
                                                        TypeNameOf<std::remove_cvref_t<Parameters>>(),
                                                        IsResult<Parameters>}...};
    const std::vector<std::string> split = SplitNames(names);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        arguments[i].name = i < split.size() ? split[i] : "Value";
    return arguments;
}

/// A method. `arguments` are their names, separated by ", ". `id` 0 lets the table choose.
template<typename Function, typename Target = typename Bound<Function>::Target>
MemberRow<Target> Method(const char* name, const char* arguments, Function function, const char* help,
                         std::int32_t id = 0)
{
    using Parts = Bound<Function>;
    constexpr std::type_identity<typename Parts::Arguments> list;
    using Result = typename Parts::Result;
    return {{name,
             id,
             invoke::Method,
             DescribeArguments(arguments, list),
             KindOf<Result>(),
             TypeNameOf<Result>(),
             help,
             {}},
            {},
            {},
            MakeAction<Target>(std::move(function), list)};
}

/// A property that is only read.
template<typename Reader, typename Target = typename Bound<Reader>::Target>
MemberRow<Target> Property(const char* name, Reader reader, const char* help)
{
    using Parts = Bound<Reader>;
    constexpr std::type_identity<typename Parts::Arguments> list;
    using Result = typename Parts::Result;
    return {{name, 0, invoke::Get, {}, KindOf<Result>(), TypeNameOf<Result>(), help, {}},
            MakeAction<Target>(std::move(reader), list),
            {},
            {}};
}

template<typename Reader, typename Writer, typename Target = typename Bound<Reader>::Target>
requires(!std::is_convertible_v<Writer, const char*>) MemberRow<Target> Property(const char* name, Reader reader,
                                                                                 Writer writer, const char* help)
{
    MemberRow<Target> row = Property(name, std::move(reader), help);
    constexpr std::type_identity<typename Bound<Writer>::Arguments> list;
    row.info.kinds |= invoke::Put | (row.info.type == ValueType::Object ? invoke::PutReference : 0U);
    row.put = MakeAction<Target>(std::move(writer), list);
    return row;
}

/// The member to use of those a row offers: its kind, or an error that says why there is none.
std::uint32_t ChooseKind(const std::string& className, const MemberInfo& member, std::uint32_t wanted);
[[noreturn]] void RaiseNoSuchId(const std::string& className, std::int32_t id);

/// The members of a class.
template<typename Target>
class MemberTable
{
public:
    /// Rows without an id get 1, 2, 3 and so on, by their place.
    MemberTable(std::string className, std::vector<MemberRow<Target>> rows)
        : className_(std::move(className)), rows_(std::move(rows))
    {
        for (std::size_t i = 0; i < rows_.size(); ++i)
        {
            MemberRow<Target>& row = rows_[i];
            if (row.info.id == 0)
                row.info.id = static_cast<std::int32_t>(i) + 1;
            infos_.push_back(row.info);
            places_.emplace(row.info.id, i);
        }
    }

    const std::string& ClassName() const { return className_; }
    std::span<const MemberInfo> Members() const { return infos_; }

    Variant Invoke(Target& target, std::int32_t id, std::uint32_t kinds, std::span<Variant> arguments) const
    {
        const auto found = places_.find(id);
        if (found == places_.end())
            RaiseNoSuchId(className_, id);
        const MemberRow<Target>& row = rows_[found->second];
        switch (ChooseKind(className_, row.info, kinds))
        {
        case invoke::Method:
            return row.call(target, arguments);
        case invoke::Get:
            return row.get(target, arguments);
        default:
            return row.put(target, arguments);
        }
    }

private:
    std::string className_;
    std::vector<MemberRow<Target>> rows_;
    std::vector<MemberInfo> infos_;
    std::unordered_map<std::int32_t, std::size_t> places_;
};

} // namespace lumora::automation
