#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace Tessaron
{

/// A text that says something of a sound: its key is a name ("title", "album_artist", …) or the four characters of a
/// QuickTime or MP4 file ("\251nam", "aART", …).
struct SoundText {
    QByteArray key;
    QString value;
};

/// A tag of ID3 version 2.3 (informal standard, id3v2.3.0) with these texts and a front cover, to stand in front of an
/// MP3 file: version 2.3 is what old players and cars know, too. Texts for which there is no frame go into frames TXXX
/// under their keys; what describes the file that they come from, and not the sound (its encoder, its brands), is left
/// out. Several texts of one kind are parted by slashes. Empty without a text and a cover.
///
/// A cover that is not a JPEG, PNG, GIF or BMP, or takes more room than a tag has (256 MB), is left out;
/// `isCoverLeftOut`, unless null, tells.
[[nodiscard]] QByteArray id3Tag(const std::vector<SoundText> &texts, const QByteArray &cover,
                                bool *isCoverLeftOut = nullptr);

} // namespace Tessaron
