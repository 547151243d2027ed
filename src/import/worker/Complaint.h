// How the worker's parts say that a model cannot be handed over.
#pragma once

#include <stdexcept>

namespace lumora
{

/// The file cannot be shown; the text completes "the model cannot be read (...)".
class Unreadable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The result has no room within the limits.
class NoRoom : public std::runtime_error
{
public:
    NoRoom() : std::runtime_error("no room for the result") {}
};

} // namespace lumora
