#pragma once

#include "platform/discimage/volume/VolumeReader.h"

#include <QByteArray>
#include <QString>

#include <string_view>

namespace Tessaron
{

/// True when a filesystem of this kind keeps names as they are, whatever their bytes.
[[nodiscard]] bool keepsEveryName(VolumeKind kind);

/// True when the filesystem cannot hold the source's name as it is, whatever its neighbours are called.
[[nodiscard]] bool mustChangeName(VolumeKind kind, std::string_view source);

/// The name in the form in which two names of the filesystem are compared: composed characters for HFS+, as it is for
/// the others.
[[nodiscard]] QByteArray comparableName(VolumeKind kind, const QByteArray &name);

/// What the filesystem makes of a source's name when it only replaces and cuts, in a form that is the same for the
/// recorded name: a key to look names up by. Not every name that mayBeNameOf() accepts has its source's key.
[[nodiscard]] QByteArray nameKey(VolumeKind kind, std::string_view source);

/// The recorded name without the number that told it from another of the same name; itself when it has none.
[[nodiscard]] QByteArray nameWithoutNumber(const QByteArray &recorded);

/// True when the filesystem may have had to give the source's name this form: forbidden characters replaced by '_', cut
/// to the length that it allows, numbered beside another of the same name, for plain ISO 9660 also written in capitals.
/// A name that needs no change may only be numbered.
[[nodiscard]] bool mayBeNameOf(VolumeKind kind, const QByteArray &recorded, std::string_view source);

} // namespace Tessaron
