// Memory of a surface.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumora
{

/// Black pixels. Large ones come from the system page by page as they are written, so that a surface that nobody draws
/// into or looks at costs nothing.
class ZeroedPixels
{
public:
    ZeroedPixels() = default;
    /// Nothing where the memory cannot be had.
    explicit ZeroedPixels(std::size_t count);
    ~ZeroedPixels();
    ZeroedPixels(const ZeroedPixels&) = delete;
    ZeroedPixels(ZeroedPixels&& other) noexcept;
    ZeroedPixels& operator=(ZeroedPixels other) noexcept;

    std::uint32_t* Data() const { return pixels_; }

private:
    std::uint32_t* pixels_ = nullptr;
    std::size_t bytes_ = 0;
};

} // namespace lumora
