#include "automation/PackedNumbers.h"

#include "base/RuntimeError.h"
#include "platform/pictures/Bitmap.h"

#include <algorithm>
#include <iterator>

namespace lumora::automation
{

namespace
{

constexpr std::size_t MatrixSide = 4;

[[noreturn]] void RaiseCount(std::size_t count, const char* what)
{
    throw RuntimeError{error::TypeMismatch, "automation",
                       "Type mismatch: " + std::to_string(count) + " numbers are " + what};
}

} // namespace

Vectors::Vectors(Numbers<float> numbers) : numbers_(std::move(numbers))
{
    if (numbers_.View().size() % 3 != 0)
        RaiseCount(numbers_.View().size(), "not whole vectors");
}

Variant Crossing<Matrix4>::Out(const Matrix4& matrix)
{
    std::vector<double> numbers;
    for (const auto& row : matrix.m)
        numbers.insert(numbers.end(), std::begin(row), std::end(row));
    return OwnedBuffer<double>(std::move(numbers));
}

Matrix4 Crossing<Matrix4>::In(const Variant& value)
{
    const Numbers<double> numbers = Crossing<Numbers<double>>::In(value);
    if (numbers.View().size() != MatrixSide * MatrixSide)
        RaiseCount(numbers.View().size(), "no transform, which has 16");
    Matrix4 matrix;
    for (std::size_t i = 0; i < MatrixSide * MatrixSide; ++i)
        matrix.m[i / MatrixSide][i % MatrixSide] = numbers.View()[i];
    return matrix;
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
