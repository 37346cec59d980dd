#pragma once

#include "platform/discimage/volume/VolumeReader.h"

#include <QByteArray>
#include <QString>

#include <string_view>
#include <vector>

namespace Tessaron
{

/// What filesystems do to names. A name can be held against another when both have their form: names that a filesystem
/// has to take for the same have the same one.

/// True when a filesystem of this kind keeps names as they are, whatever their bytes.
[[nodiscard]] bool keepsEveryName(VolumeKind kind);

/// The source's name as the filesystem would record it had it room for any length: what it does not hold replaced by
/// '_', for HFS+ decomposed. The form of a recorded name is that name. For plain ISO 9660, whose writers agree on
/// little, only the letters and digits that they all keep, in capitals.
[[nodiscard]] QString formOfName(VolumeKind kind, std::string_view name);

/// True when a name of this form is too long for some writers of the filesystem, so that they cut it.
[[nodiscard]] bool mayBeCut(VolumeKind kind, const QString &form);

/// The beginning of a long name that no writer cuts away, numbers included.
[[nodiscard]] QString sureBeginning(VolumeKind kind, const QString &form);

/// The forms without a number that may have told the name from another of the same form: "a_1.b" gives "a.b".
[[nodiscard]] std::vector<QString> formsWithoutNumber(const QString &form);

/// A source's name, prepared to be held against many others.
struct ComparableName {
    ComparableName(VolumeKind kind, std::string_view name);

    QString text;
    QString form;
};

/// True when the filesystem may have had to give the source's name the recorded form: forbidden characters replaced by
/// '_', cut to the length that it allows, numbered beside another of the same name, for plain ISO 9660 also written in
/// capitals. A name that needs no change may only be numbered.
[[nodiscard]] bool mayBeNameOf(VolumeKind kind, const ComparableName &recorded, const ComparableName &source);

} // namespace Tessaron
