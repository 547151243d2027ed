#include "automation/PackedNumbers.h"

#include "platform/automation/RuntimeError.h"
#include "platform/directdraw/Bitmap.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace lumora::automation
{

namespace
{

bool IsSeparator(char c)
{
    return c == ' ' || c == ',' || c == '\t' || c == '\n' || c == '\r';
}

[[noreturn]] void RaiseNotNumbers(std::string_view where)
{
    throw RuntimeError{error::TypeMismatch, "automation",
                       "Type mismatch: not a number at \"" + std::string{where.substr(0, 20)} + "\""};
}

template<typename Number>
std::vector<Number> NumbersIn(std::string_view text)
{
    std::vector<Number> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    while ((at = std::find_if_not(at, end, IsSeparator)) != end)
    {
        Number number{};
        const auto [stop, problem] = std::from_chars(at, end, number);
        if (problem == std::errc::result_out_of_range)
            throw RuntimeError{error::Overflow, "automation", "Overflow: a number in the list is out of range"};
        if (problem != std::errc{} || (stop != end && !IsSeparator(*stop)))
            RaiseNotNumbers({at, static_cast<std::size_t>(end - at)});
        if constexpr (std::is_floating_point_v<Number>)
            if (!std::isfinite(number))
                RaiseNotNumbers({at, static_cast<std::size_t>(end - at)});
        numbers.push_back(number);
        at = stop;
    }
    return numbers;
}

} // namespace

std::vector<Vector> VectorsIn(std::string_view text)
{
    const std::vector<float> numbers = NumbersIn<float>(text);
    if (numbers.size() % 3 != 0)
        throw RuntimeError{error::TypeMismatch, "automation",
                           "Type mismatch: " + std::to_string(numbers.size()) + " numbers are not whole vectors"};
    std::vector<Vector> vectors;
    vectors.reserve(numbers.size() / 3);
    for (std::size_t i = 0; i < numbers.size(); i += 3)
        vectors.push_back({numbers[i], numbers[i + 1], numbers[i + 2]});
    return vectors;
}

std::vector<std::int32_t> WholeNumbersIn(std::string_view text)
{
    return NumbersIn<std::int32_t>(text);
}

std::shared_ptr<Picture> NewPicture(std::int32_t width, std::int32_t height, std::uint32_t color)
{
    constexpr std::int64_t MaximumPixels = std::int64_t{1} << 26;
    if (width > 0 && height > 0 && std::int64_t{width} * height > MaximumPixels)
        throw RuntimeError{error::OutOfMemory, "Picture", "A picture of so many pixels is too large"};
    auto bitmap = std::make_shared<Bitmap>(width, height);
    const PixelView pixels = bitmap->Pixels();
    std::fill_n(pixels.pixels, static_cast<std::size_t>(width) * static_cast<std::size_t>(height), color);
    return std::make_shared<Picture>(bitmap);
}

} // namespace lumora::automation
