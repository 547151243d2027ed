// Lists of vectors, and pictures made of one color, as callers give them.
#pragma once

#include "automation/DispatchTable.h"
#include "base/Matrix.h"
#include "platform/pictures/Picture.h"

namespace lumora
{

// clang-format off
template<> struct NumberOf<Vector> { using Type = float; };
// clang-format on

namespace automation
{

/// Vectors from a caller: a buffer or a text of numbers, three a vector.
class Vectors
{
public:
    /// Error 13 for a count that three does not divide.
    explicit Vectors(Numbers<float> numbers);

    std::span<const Vector> View() const
    {
        return {reinterpret_cast<const Vector*>(numbers_.View().data()), numbers_.View().size() / 3};
    }

private:
    Numbers<float> numbers_;
};

template<>
struct Crossing<Vectors>
{
    static constexpr ValueType Kind = ValueType::Buffer;
    static constexpr const char* Name = BufferNameOf(ElementType::Single);
    static Vectors In(const Variant& value) { return Vectors{Crossing<Numbers<float>>::In(value)}; }
};

/// Transforms cross as 16 Doubles, row by row. Error 13 for another count.
template<>
struct Crossing<Matrix4>
{
    static constexpr ValueType Kind = ValueType::Buffer;
    static constexpr const char* Name = BufferNameOf(ElementType::Double);
    static Variant Out(const Matrix4& matrix);
    static Matrix4 In(const Variant& value);
};

/// A picture filled with 0xAARRGGBB. DDInvalidParams for sides that a bitmap cannot have, error 7 for more than 2^26
/// pixels.
std::shared_ptr<Picture> NewPicture(std::int32_t width, std::int32_t height, std::uint32_t color);

} // namespace automation

} // namespace lumora
