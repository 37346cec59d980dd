#include "platform/discrecording/names/UniqueNames.h"

namespace Tessaron
{

// The two unit types that disc filesystems have.
template std::size_t makeNamesUnique<char>(std::span<SiblingName<char>>, const NameLimits &, const ExactName<char> &,
                                           const std::stop_token &);
template std::size_t makeNamesUnique<char16_t>(std::span<SiblingName<char16_t>>, const NameLimits &,
                                               const ExactName<char16_t> &, const std::stop_token &);

} // namespace Tessaron
