// Names and texts with which the control raises errors.
#pragma once

#include "base/RuntimeError.h"

#include <string>

namespace lumora
{

/// Source of errors that methods and writers raise again.
inline constexpr const char* Source = "Viewport";

/// Source of the control's own errors.
inline constexpr const char* HaltSource = "vptVantixViewport";

inline constexpr const char* HaltDescription =
    "Unable to Configure DirectX. Please ensure that the most recent version of DirectX is installed, and that your "
    "Video Card drivers are up to date.";

/// A failure as a log or another failure's sentence tells it.
inline std::string Sentence(const RuntimeError& failure)
{
    return failure.Description() + " (error " + std::to_string(failure.Number()) + " from " + failure.Source() + ")";
}

} // namespace lumora
