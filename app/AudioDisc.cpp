#include "app/AudioDisc.h"

#include <QRegularExpression>

namespace Tessaron::Desktop
{

QString textOfKind(const SpokenTexts &texts, CDTextKind kind)
{
    const auto language = texts.find(CDTextBlock::english);
    if (language == texts.end())
        return {};
    const auto text = language->second.find(kind);
    return text == language->second.end() ? QString() : text->second;
}

void setTextOfKind(SpokenTexts &texts, CDTextKind kind, const QString &text)
{
    std::map<CDTextKind, QString> &ofLanguage = texts[CDTextBlock::english];
    if (text.isEmpty())
        ofLanguage.erase(kind);
    else
        ofLanguage[kind] = text;
    if (ofLanguage.empty())
        texts.erase(CDTextBlock::english);
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
