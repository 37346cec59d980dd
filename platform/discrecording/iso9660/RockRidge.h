#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/iso9660/SystemUse.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Tessaron
{

/// What Rock Ridge says of an object beyond what the tree holds.
struct RockRidgeFacts {
    std::uint32_t linkCount = 1;
    std::uint32_t serialNumber = 0; ///< the same for all names of one file, never 0
};

/// Adds permissions, links, owner and serial number (PX, IEEE P1282 4.1.1), the device number (PN, 4.1.2) and the times
/// (TF, 4.1.6): what each record has, "." and ".." included. Without `facts` the entries have their true sizes, but no
/// contents.
void addRockRidgeAttributes(SystemUse &use, const ContentTree &tree, NodeIndex node, const RockRidgeFacts *facts);

/// Adds the object's name (NM, 4.1.4), in several entries where one is too short, and the target of a symbolic link
/// (SL, 4.1.3).
void addRockRidgeName(SystemUse &use, const ContentTree &tree, NodeIndex node);

/// Adds the entry by which the record in the place of a relocated folder leads to it (CL, 4.1.5.1) …
void addChildLink(SystemUse &use, std::uint32_t block);
/// … the one by which its ".." record leads back to its parent (PL, 4.1.5.2) …
void addParentLink(SystemUse &use, std::uint32_t block);
/// … and the mark of a folder that is not shown where it is recorded (RE, 4.1.5.3).
void addRelocatedMark(SystemUse &use);

/// Adds the entry that the "." record of the root begins with: SP (SUSP 5.3) …
void addSharingProtocolIndicator(SystemUse &use);
/// … and the one that says that Rock Ridge is in use: ER (SUSP 5.5), as IEEE P1282 4.3 words it.
void addRockRidgeReference(SystemUse &use);

/// The target that a reader makes of the recorded one: slashes in a row become one, and a slash at the end becomes
/// "/.".
[[nodiscard]] std::string recordedLinkTarget(std::string_view target);

} // namespace Tessaron
