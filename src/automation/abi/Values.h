// Values and texts as they cross the binary interface, and errors in place of exceptions.
#pragma once

#include "LumoraViewport.h"
#include "automation/Dispatch.h"

#include <string>
#include <string_view>

namespace lumora::automation
{

/// UTF-16 and back; what is not well-formed becomes U+FFFD.
std::u16string ToUtf16(std::string_view text);
std::string ToUtf8(std::u16string_view text);

/// Nothing when there is no memory or the text is too long.
LumoraText MakeText(std::u16string_view text) noexcept;
LumoraText MakeText(std::string_view utf8) noexcept;
void FreeText(LumoraText text) noexcept;

/// Error 14 for a text longer than LUMORA_MAXIMUM_TEXT.
std::string ReadText(LumoraText text);

/// What a caller gave; a buffer is still the caller's. Error 13 for a type there is not, for an object that is none of
/// this library's and for a buffer without memory, error 7 for one that is too large.
Variant ReadValue(const LumoraValue& value);

/// A value of the receiver's own. Errors 7 and 14 when it cannot be made.
LumoraValue MakeValue(const Variant& value);
void ClearValue(LumoraValue& value) noexcept;

/// Values of ours until somebody takes them: cleared at the end.
class OwnedValues
{
public:
    OwnedValues() = default;
    ~OwnedValues()
    {
        for (LumoraValue& value : values_)
            ClearValue(value);
    }
    OwnedValues(const OwnedValues&) = delete;
    OwnedValues& operator=(const OwnedValues&) = delete;

    void Add(const Variant& value)
    {
        values_.reserve(values_.size() + 1); // a value is never made that could not be kept
        values_.push_back(MakeValue(value));
    }
    LumoraValue Take(std::size_t index) noexcept { return std::exchange(values_[index], LumoraValue{}); }
    LumoraValue* Data() { return values_.data(); }
    std::size_t Size() const { return values_.size(); }

private:
    std::vector<LumoraValue> values_;
};

/// Describes a failure to a caller and answers the result that goes with its number.
LumoraResult Report(LumoraError* error, std::int32_t number, std::string_view source,
                    std::string_view description) noexcept;

/// Runs `step` and answers what it answers; whatever it throws becomes a result.
template<typename Step>
LumoraResult Guarded(LumoraError* error, Step&& step) noexcept
{
    if (error != nullptr)
        *error = LumoraError{};
    try
    {
        return step();
    }
    catch (const RuntimeError& failure)
    {
        return Report(error, failure.Number(), failure.Source(), failure.what());
    }
    catch (const std::bad_alloc&)
    {
        return Report(error, error::OutOfMemory, "automation", "Out of memory");
    }
    catch (const std::exception& failure)
    {
        return Report(error, error::InvalidCall, "automation", failure.what());
    }
    catch (...)
    {
        return Report(error, error::InvalidCall, "automation", "A failure without a description");
    }
}

} // namespace lumora::automation
