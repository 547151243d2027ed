#include "automation/DispatchTable.h"

#include <iterator>

namespace lumora::automation
{

void RaiseArgumentCount(std::size_t wanted, std::size_t given)
{
    throw RuntimeError{error::WrongArgumentCount, "automation",
                       "Wrong number of arguments: " + std::to_string(given) + " were given, " +
                           std::to_string(wanted) + " are taken"};
}

std::vector<std::string> SplitNames(std::string_view names)
{
    constexpr std::string_view Separator = ", ";
    std::vector<std::string> split;
    while (!names.empty())
    {
        const std::size_t end = std::min(names.find(Separator), names.size());
        split.emplace_back(names.substr(0, end));
        names.remove_prefix(std::min(end + Separator.size(), names.size()));
    }
    return split;
}

std::uint32_t ChooseKind(const std::string& className, const MemberInfo& member, std::uint32_t wanted)
{
    constexpr std::uint32_t Writes = invoke::Put | invoke::PutReference;
    const std::uint32_t offered = member.kinds & wanted;
    for (const std::uint32_t kind : {invoke::Method, invoke::Get, invoke::Put, invoke::PutReference})
        if ((offered & kind) != 0)
            return kind;
    if ((wanted & Writes) != 0 && (member.kinds & (invoke::Get | Writes)) == invoke::Get)
        throw RuntimeError{error::ReadOnlyProperty, className, className + "." + member.name + " is read-only"};
    throw RuntimeError{error::DispatchIdNotFound, className,
                       className + "." + member.name + " cannot be used that way"};
}

void RaiseNoSuchId(const std::string& className, std::int32_t id)
{
    throw RuntimeError{error::DispatchIdNotFound, className, className + " has no member number " + std::to_string(id)};
}

} // namespace lumora::automation
