#include "base/Variant.h"

#include "base/Numbers.h"
#include "base/RuntimeError.h"

#include <charconv>
#include <cmath>
#include <optional>

namespace lumora
{

namespace
{

[[noreturn]] void RaiseTypeMismatch(const char* wanted)
{
    throw RuntimeError{error::TypeMismatch, "automation", std::string{"Type mismatch: this is not "} + wanted};
}

double NumberIn(const std::string& text)
{
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, problem] = std::from_chars(text.data(), end, number);
    // "inf" and "nan" are words, not numbers.
    if (stop != end || problem == std::errc::invalid_argument || !std::isfinite(number))
        RaiseTypeMismatch("a number");
    if (problem == std::errc::result_out_of_range)
        throw RuntimeError{error::Overflow, "automation", "Overflow: " + text};
    return number;
}

std::optional<double> AsNumber(const Variant& value)
{
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean ? -1.0 : 0.0;
    if (const auto* integer = std::get_if<std::int16_t>(&value))
        return *integer;
    if (const auto* whole = std::get_if<std::int32_t>(&value))
        return *whole;
    if (const auto* single = std::get_if<float>(&value))
        return *single;
    if (const auto* real = std::get_if<double>(&value))
        return *real;
    return std::nullopt;
}

std::string ShortestText(auto number)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    return {buffer, result.ptr};
}

} // namespace

double VariantToDouble(const Variant& value)
{
    if (const auto number = AsNumber(value))
        return *number;
    if (std::holds_alternative<std::monostate>(value))
        return 0.0;
    if (const auto* text = std::get_if<std::string>(&value))
        return NumberIn(*text);
    RaiseTypeMismatch("a number");
}

std::int16_t VariantToInteger(const Variant& value)
{
    return ToInteger(VariantToDouble(value));
}

std::int32_t VariantToLong(const Variant& value)
{
    return ToLong(VariantToDouble(value));
}

float VariantToSingle(const Variant& value)
{
    if (const auto* single = std::get_if<float>(&value))
        return *single;
    return ToSingle(VariantToDouble(value));
}

bool VariantToBoolean(const Variant& value)
{
    if (const auto* text = std::get_if<std::string>(&value))
    {
        if (*text == "True" || *text == "true")
            return true;
        if (*text == "False" || *text == "false")
            return false;
    }
    return VariantToDouble(value) != 0.0;
}

std::string VariantToString(const Variant& value)
{
    if (const auto* text = std::get_if<std::string>(&value))
        return *text;
    if (std::holds_alternative<std::monostate>(value))
        return {};
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean ? "True" : "False";
    if (const auto* single = std::get_if<float>(&value))
        return ShortestText(*single);
    if (const auto number = AsNumber(value))
        return ShortestText(*number);
    RaiseTypeMismatch("a text");
}

ObjectReference VariantToObject(const Variant& value)
{
    if (const auto* object = std::get_if<ObjectReference>(&value))
        return *object;
    if (std::holds_alternative<std::monostate>(value))
        return nullptr;
    RaiseTypeMismatch("an object");
}

bool VariantsEqual(const Variant& left, const Variant& right)
{
    const auto leftNumber = AsNumber(left);
    const auto rightNumber = AsNumber(right);
    if (leftNumber && rightNumber)
        return *leftNumber == *rightNumber;
    return left == right;
}

} // namespace lumora
