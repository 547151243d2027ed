// The list of Direct3D drivers that a control chooses from.
#pragma once

#include "platform/drivers/Driver.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumora
{

/// A Direct3D driver identifier.
struct Guid
{
    std::uint32_t data1 = 0;
    std::uint16_t data2 = 0;
    std::uint16_t data3 = 0;
    std::array<std::uint8_t, 8> data4{};

    friend bool operator==(const Guid&, const Guid&) = default;
};

/// The drivers of the default display, indexed from 0. A list names what could be had; whether this machine has it
/// shows when the driver is created. Hosts may build lists of their own.
class DriverList
{
public:
    struct Entry
    {
        std::string identifierName; ///< for example "IID_IDirect3DRGBDevice"
        Guid guid;
        std::string name;
        std::string description;
        std::function<std::unique_ptr<Driver>()> create; ///< raises an error where the driver cannot be had
    };

    DriverList() = default;
    explicit DriverList(std::vector<Entry> entries) : entries_(std::move(entries)) {}

    int Count() const { return static_cast<int>(entries_.size()); }

    /// Error 9 outside 0 .. Count() - 1.
    const Entry& At(int index) const;

    /// A new driver. Error DDInvalidParams when no entry has this identifier, else what the entry's own creation
    /// raises.
    std::unique_ptr<Driver> Create(const Guid& guid) const;

private:
    std::vector<Entry> entries_;
};

/// The names by which drivers are asked for.
namespace drivername
{
inline constexpr const char* Ramp = "IID_IDirect3DRampDevice";
inline constexpr const char* RGB = "IID_IDirect3DRGBDevice";
inline constexpr const char* HAL = "IID_IDirect3DHALDevice";
inline constexpr const char* Reference = "IID_IDirect3DRefDevice";
inline constexpr const char* Default = "IID_IDirect3DDefaultDevice";
} // namespace drivername

} // namespace lumora
