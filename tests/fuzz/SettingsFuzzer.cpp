// Random bytes as a settings file: read or refused, and what was read is read again as the same.
#include "base/RuntimeError.h"
#include "fuzz/Fuzzing.h"
#include "properties/JsonPropertyBag.h"
#include "properties/PropertyTable.h"

#include <cstdint>
#include <optional>

namespace
{

using lumora::fuzz::Require;

std::optional<lumora::JsonPropertyBag> BagOf(std::string_view text)
{
    try
    {
        return lumora::JsonPropertyBag::FromText(text, "fuzz");
    }
    catch (const lumora::RuntimeError& failure)
    {
        Require(failure.Number() == lumora::error::InvalidCall);
        return std::nullopt;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto bag = BagOf({reinterpret_cast<const char*>(data), size});
    // Indentation may make a text too long that was not.
    if (!bag || bag->Text().size() > lumora::LongestSettingsText)
        return 0;
    auto again = BagOf(bag->Text());
    Require(again.has_value());
    Require(again->Text() == bag->Text());
    for (const lumora::PropertyRow& row : lumora::PropertyTable())
    {
        const lumora::Variant value = bag->ReadProperty(row.name, row.defaultValue);
        Require(again->ReadProperty(row.name, row.defaultValue) == value);
        if (!row.saved || row.type == lumora::PropertyType::Object)
            continue;
        // Written, it is what it was.
        again->WriteProperty(row.name, value, row.defaultValue);
        Require(lumora::VariantsEqual(again->ReadProperty(row.name, row.defaultValue), value));
    }
    Require(BagOf(again->Text()).has_value());
    return 0;
}
