#include "app/TextLanguages.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <array>
#include <platform/foundation/LanguageNames.h>
#include <set>

namespace Tessaron::Desktop
{

namespace
{

struct TextLanguage {
    std::uint8_t number;
    QLocale::Language language;
    bool isWritable;
};

constexpr std::array textLanguages = {
    TextLanguage{0x01, QLocale::Albanian, true},      TextLanguage{0x02, QLocale::Breton, true},
    TextLanguage{0x03, QLocale::Catalan, true},       TextLanguage{0x04, QLocale::Croatian, false},
    TextLanguage{0x05, QLocale::Welsh, false},        TextLanguage{0x06, QLocale::Czech, false},
    TextLanguage{0x07, QLocale::Danish, true},        TextLanguage{0x08, QLocale::German, true},
    TextLanguage{0x09, QLocale::English, true},       TextLanguage{0x0A, QLocale::Spanish, true},
    TextLanguage{0x0C, QLocale::Estonian, false},     TextLanguage{0x0D, QLocale::Basque, true},
    TextLanguage{0x0E, QLocale::Faroese, true},       TextLanguage{0x0F, QLocale::French, true},
    TextLanguage{0x11, QLocale::Irish, true},         TextLanguage{0x12, QLocale::Gaelic, true},
    TextLanguage{0x13, QLocale::Galician, true},      TextLanguage{0x14, QLocale::Icelandic, true},
    TextLanguage{0x15, QLocale::Italian, true},       TextLanguage{0x18, QLocale::Latvian, false},
    TextLanguage{0x19, QLocale::Luxembourgish, true}, TextLanguage{0x1A, QLocale::Lithuanian, false},
    TextLanguage{0x1B, QLocale::Hungarian, false},    TextLanguage{0x1C, QLocale::Maltese, false},
    TextLanguage{0x1D, QLocale::Dutch, true},         TextLanguage{0x1E, QLocale::NorwegianBokmal, true},
    TextLanguage{0x20, QLocale::Polish, false},       TextLanguage{0x21, QLocale::Portuguese, true},
    TextLanguage{0x22, QLocale::Romanian, false},     TextLanguage{0x23, QLocale::Romansh, true},
    TextLanguage{0x24, QLocale::Serbian, false},      TextLanguage{0x25, QLocale::Slovak, false},
    TextLanguage{0x26, QLocale::Slovenian, false},    TextLanguage{0x27, QLocale::Finnish, true},
    TextLanguage{0x28, QLocale::Swedish, true},       TextLanguage{0x29, QLocale::Turkish, false},
    TextLanguage{0x49, QLocale::Ukrainian, false},    TextLanguage{0x4F, QLocale::Swahili, true},
    TextLanguage{0x56, QLocale::Russian, false},      TextLanguage{0x61, QLocale::Malay, true},
    TextLanguage{0x65, QLocale::Korean, false},       TextLanguage{0x69, QLocale::Japanese, true},
    TextLanguage{0x6A, QLocale::Indonesian, true},    TextLanguage{0x6C, QLocale::Hebrew, false},
    TextLanguage{0x70, QLocale::Greek, false},        TextLanguage{0x75, QLocale::Chinese, false},
    TextLanguage{0x77, QLocale::Bulgarian, false},    TextLanguage{0x7E, QLocale::Arabic, false},
};

} // namespace

QString textLanguageName(std::uint8_t language)
{
    const auto found = std::find_if(textLanguages.begin(), textLanguages.end(),
                                    [language](const TextLanguage &each) { return each.number == language; });
    if (found == textLanguages.end())
        return QCoreApplication::translate("TextLanguages", "Language %1").arg(language);
    QString name = ownNameOfLanguage(found->language);
    if (!name.isEmpty())
        name.front() = name.front().toUpper();
    return name.isEmpty() ? QLocale::languageToString(found->language) : name;
}

const QList<std::uint8_t> &writableTextLanguages()
{
    static const QList<std::uint8_t> languages = [] {
        QList<std::uint8_t> writable;
        for (const TextLanguage &each : textLanguages) {
            if (each.isWritable)
                writable << each.number;
        }
        std::sort(writable.begin(), writable.end(), [](std::uint8_t one, std::uint8_t other) {
            return textLanguageName(one).localeAwareCompare(textLanguageName(other)) < 0;
        });
        return writable;
    }();
    return languages;
}

QList<std::uint8_t> textLanguagesOf(const AudioDisc &disc)
{
    std::set<std::uint8_t> found;
    for (const auto &[language, texts] : disc.texts)
        found.insert(language);
    for (const AudioTrackRow &track : disc.tracks) {
        for (const auto &[language, texts] : track.order.texts)
            found.insert(language);
    }
    QList<std::uint8_t> languages(found.begin(), found.end());
    if (languages.isEmpty())
        languages << CDTextBlock::english;
    std::stable_partition(languages.begin(), languages.end(),
                          [](std::uint8_t language) { return language == CDTextBlock::english; });
    return languages;
}

std::uint8_t firstTextLanguageOf(const AudioDisc &disc)
{
    return textLanguagesOf(disc).front();
}

void adaptTextLanguage(AudioTrackRow &track, const AudioDisc &disc)
{
    SpokenTexts &texts = track.order.texts;
    const std::uint8_t language = firstTextLanguageOf(disc);
    if (language == CDTextBlock::english || texts.size() != 1 || !texts.contains(CDTextBlock::english))
        return;
    auto own = texts.extract(CDTextBlock::english);
    own.key() = language;
    texts.insert(std::move(own));
}

void removeTextLanguage(AudioDisc &disc, std::uint8_t language)
{
    disc.texts.erase(language);
    for (AudioTrackRow &track : disc.tracks)
        track.order.texts.erase(language);
}

} // namespace Tessaron::Desktop
