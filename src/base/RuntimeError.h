// The one error that crosses every interface of this system, and the numbers it carries.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace lumora
{

/// Numbers of run-time errors, as hosts compare them.
namespace error
{
inline constexpr std::int32_t InvalidCall = 5;         ///< an argument that no implementation could accept
inline constexpr std::int32_t Overflow = 6;            ///< a number outside its type's range
inline constexpr std::int32_t OutOfMemory = 7;         ///< an allocation that was refused
inline constexpr std::int32_t SubscriptOutOfRange = 9; ///< an index outside its list
inline constexpr std::int32_t DivisionByZero = 11;
inline constexpr std::int32_t TypeMismatch = 13;
inline constexpr std::int32_t FileNotFound = 53;
inline constexpr std::int32_t PathFileAccess = 75;           ///< a file that cannot be written
inline constexpr std::int32_t ObjectNotSet = 91;             ///< nothing where an object is needed
inline constexpr std::int32_t InvalidPropertyValue = 380;    ///< a window attribute that the window refuses
inline constexpr std::int32_t MemberNotFound = 438;          ///< a late-bound name that the object lacks
inline constexpr std::int32_t InvalidPicture = 481;          ///< a picture file that cannot be decoded
inline constexpr std::int32_t Halted = -2147221503;          ///< 0x80040001, every live call on a halted control
inline constexpr std::int32_t NoDevice = -2147221502;        ///< 0x80040002, neither driver could be created
inline constexpr std::int32_t RMBadObject = -2005531891;     ///< 0x8876030D, nothing or a foreign object
inline constexpr std::int32_t RMBadAlloc = -2005531889;      ///< 0x8876030F, out of memory
inline constexpr std::int32_t RMFaceUsed = -2005531888;      ///< 0x88760310, a face that is in a mesh already
inline constexpr std::int32_t RMNotFound = -2005531887;      ///< 0x88760311, the object is not where it should be
inline constexpr std::int32_t RMBadDevice = -2005531883;     ///< 0x88760315, the device is lost; worth a retry
inline constexpr std::int32_t RMBadValue = -2005531882;      ///< 0x88760316, a value outside its range, or not finite
inline constexpr std::int32_t DDInvalidParams = -2147024809; ///< 0x80070057
inline constexpr std::int32_t DDInvalidRect = -2005532522;   ///< 0x88760096
inline constexpr std::int32_t DDNo3D = -2005532502;          ///< 0x887600AA, no 3D hardware on this machine
inline constexpr std::int32_t DDSurfaceLost = -2005532222;   ///< 0x887601C2
inline constexpr std::int32_t DDSurfaceBusy = -2005532242;   ///< 0x887601AE, a lock or device context is still held
} // namespace error

/// A failure with a number, the name of who raises it, and a sentence a person can act on.
class RuntimeError : public std::runtime_error
{
public:
    RuntimeError(std::int32_t number, std::string source, const std::string& description)
        : std::runtime_error(description), number_(number), source_(std::move(source))
    {
    }

    std::int32_t Number() const noexcept { return number_; }
    const std::string& Source() const noexcept { return source_; }
    std::string Description() const { return what(); }

    /// True once a trap has used up its retries on this error: every trap above takes it for failed.
    bool RetriesExhausted() const noexcept { return exhausted_; }

    /// The same failure as raised again by `source`.
    RuntimeError RaisedBy(std::string source, bool retriesExhausted) const
    {
        RuntimeError copy{number_, std::move(source), what()};
        copy.exhausted_ = exhausted_ || retriesExhausted;
        return copy;
    }

private:
    std::int32_t number_;
    std::string source_;
    bool exhausted_ = false;
};

} // namespace lumora
