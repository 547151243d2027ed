// What every object of the scene graph refuses, in one wording.
#pragma once

#include "base/Matrix.h"
#include "base/RuntimeError.h"

#include <initializer_list>
#include <memory>

namespace lumora
{

[[noreturn]] inline void RaiseBadValue(const char* source, const std::string& description)
{
    throw RuntimeError{error::RMBadValue, source, description};
}

inline void RequireFinite(const char* source, std::initializer_list<float> values)
{
    for (const float value : values)
        if (!std::isfinite(value))
            RaiseBadValue(source, "A number is infinite or not a number");
}

inline void RequireFinite(const char* source, Vector value)
{
    RequireFinite(source, {value.x, value.y, value.z});
}

inline void RequireFiniteNotNegative(const char* source, std::initializer_list<float> values)
{
    RequireFinite(source, values);
    for (const float value : values)
        if (value < 0)
            RaiseBadValue(source, "A number is negative where that has no meaning");
}

template<typename T>
void RequireObject(const char* source, const T& object, const char* what)
{
    if (!object)
        throw RuntimeError{error::RMBadObject, source, std::string{what} + " is nothing"};
}

inline bool IsFinite(const Matrix4& matrix)
{
    for (const auto& row : matrix.m)
        for (const double value : row)
            if (!std::isfinite(value))
                return false;
    return true;
}

} // namespace lumora
