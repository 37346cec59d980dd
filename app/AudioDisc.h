#pragma once

#include <TessaronClasses/AudioTracks.h>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <cstdint>

namespace Tessaron::Desktop
{

inline constexpr std::uint32_t soundFramesPerSecond = 75;

/// A track of an audio CD that is being put together. A value.
struct AudioTrackRow {
    std::uint64_t id = 0; ///< stays with the track wherever it is moved; given by the model
    AudioTrackOrder order;
    double seconds = 0; ///< of its sound, and of what comes in front of it out of files; 0 where nothing tells
    QString format; ///< of its file, for people
    bool isMissing = false; ///< a project could not find its files
    QHash<QByteArray, QByteArray> lostAliases; ///< of missing files by path: kept for the next saving

    /// Of the file in which it begins.
    [[nodiscard]] QByteArray path() const { return order.sound.empty() ? QByteArray() : order.sound.front().path; }

    friend bool operator==(const AudioTrackRow &, const AudioTrackRow &) = default;
};

/// An audio CD that is being put together. A value.
struct AudioDisc {
    QList<AudioTrackRow> tracks;
    SpokenTexts texts; ///< of the disc
    QByteArray mediaCatalogNumber;
    std::uint32_t gap = 0; ///< frames in front of tracks that are added
    bool isGapless = true;
    bool isNormalized = false;
    bool hasCDText = true;
    int minutes = 80; ///< of the disc that it is meant for

    friend bool operator==(const AudioDisc &, const AudioDisc &) = default;
};

/// The text of a kind in a language; empty for none.
[[nodiscard]] QString textOfKind(const SpokenTexts &texts, CDTextKind kind,
                                 std::uint8_t language = CDTextBlock::english);
/// Sets it; an empty one takes it away.
void setTextOfKind(SpokenTexts &texts, CDTextKind kind, const QString &text,
                   std::uint8_t language = CDTextBlock::english);

/// A code as discs have it, without dashes; empty for what is not an ISRC.
[[nodiscard]] QByteArray validIsrc(const QString &code);

/// Seconds that the disc takes.
[[nodiscard]] double secondsOfDisc(const AudioDisc &disc);

} // namespace Tessaron::Desktop
