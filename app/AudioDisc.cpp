#include "app/AudioDisc.h"

#include <QRegularExpression>

namespace Tessaron::Desktop
{

QString textOfKind(const SpokenTexts &texts, CDTextKind kind, std::uint8_t language)
{
    const auto ofLanguage = texts.find(language);
    if (ofLanguage == texts.end())
        return {};
    const auto text = ofLanguage->second.find(kind);
    return text == ofLanguage->second.end() ? QString() : text->second;
}

void setTextOfKind(SpokenTexts &texts, CDTextKind kind, const QString &text, std::uint8_t language)
{
    std::map<CDTextKind, QString> &ofLanguage = texts[language];
    if (text.isEmpty())
        ofLanguage.erase(kind);
    else
        ofLanguage[kind] = text;
    if (ofLanguage.empty())
        texts.erase(language);
}

QByteArray validIsrc(const QString &code)
{
    static const QRegularExpression form(QStringLiteral("^[A-Z]{2}[A-Z0-9]{3}[0-9]{7}$"));
    const QString plain = QString(code).remove(u'-').remove(u' ').toUpper();
    return form.match(plain).hasMatch() ? plain.toLatin1() : QByteArray();
}

double secondsOfDisc(const AudioDisc &disc)
{
    double seconds = 0;
    for (qsizetype row = 0; row < disc.tracks.size(); ++row) {
        const AudioTrackRow &track = disc.tracks[row];
        const std::uint64_t silence = track.order.postgap + (row == 0 ? 0 : track.order.gap);
        seconds += track.seconds + double(silence) / soundFramesPerSecond;
    }
    return seconds;
}

} // namespace Tessaron::Desktop
