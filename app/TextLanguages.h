#pragma once

#include "app/AudioDisc.h"

#include <QList>
#include <QString>

#include <cstdint>

namespace Tessaron::Desktop
{

// The languages of CD-TEXT, by the numbers of EBU Tech 3264 annex 1.

/// The most languages in which a disc can have texts.
inline constexpr qsizetype mostTextLanguages = 8;

/// The language's own name for itself; its number for one that is not known.
[[nodiscard]] QString textLanguageName(std::uint8_t language);

/// Those whose texts CD-TEXT can write: Japanese, and those that get along with ISO 8859-1. In the order of their
/// names.
[[nodiscard]] const QList<std::uint8_t> &writableTextLanguages();

/// Those of the disc and its tracks, English first; English alone where there are no texts.
[[nodiscard]] QList<std::uint8_t> textLanguagesOf(const AudioDisc &disc);

/// The one that players show first, and in which a list shows the texts: the first of textLanguagesOf().
[[nodiscard]] std::uint8_t firstTextLanguageOf(const AudioDisc &disc);

/// Files do not say the language of their texts: where the disc has texts, but none in English, those that a file has
/// in English alone become texts of the disc's first language.
void adaptTextLanguage(AudioTrackRow &track, const AudioDisc &disc);

/// Takes all texts of the language away.
void removeTextLanguage(AudioDisc &disc, std::uint8_t language);

} // namespace Tessaron::Desktop
