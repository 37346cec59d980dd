#include "dvd/player/PlayerTexts.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/LanguageNames.h"
#include "platform/foundation/NSBundle.h"

#include <array>

namespace Tessaron
{

namespace
{

QString formatName(DVDAudioFormat format)
{
    switch (format) {
    case DVDAudioFormat::AC3:
        return QStringLiteral("Dolby Digital");
    case DVDAudioFormat::MPEG1:
    case DVDAudioFormat::MPEG2:
        return QStringLiteral("MPEG");
    case DVDAudioFormat::LPCM:
        return QStringLiteral("PCM");
    case DVDAudioFormat::DTS:
        return QStringLiteral("DTS");
    case DVDAudioFormat::SDDS:
        return QStringLiteral("SDDS");
    case DVDAudioFormat::Unknown:
        break;
    }
    return {};
}

QString channelsName(int channels)
{
    switch (channels) {
    case 0:
        return {};
    case 1:
        return playerText("mono");
    case 2:
        return playerText("stereo");
    case 6:
        return QStringLiteral("5.1");
    case 7:
        return QStringLiteral("6.1");
    case 8:
        return QStringLiteral("7.1");
    default:
        return playerText("%1 channels").arg(channels);
    }
}

QString purposeName(DVDStreamPurpose purpose)
{
    switch (purpose) {
    case DVDStreamPurpose::Unstated:
    case DVDStreamPurpose::Normal:
        return {};
    case DVDStreamPurpose::VisuallyImpaired:
        return playerText("with descriptions");
    case DVDStreamPurpose::Comments:
    case DVDStreamPurpose::OtherComments:
        return playerText("comments");
    case DVDStreamPurpose::Large:
        return playerText("large");
    case DVDStreamPurpose::Children:
        return playerText("for children");
    case DVDStreamPurpose::HardOfHearing:
        return playerText("for the hard of hearing");
    case DVDStreamPurpose::Forced:
        return playerText("forced");
    }
    return {};
}

QString joined(QStringList parts)
{
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace

QString playerText(const char *english)
{
    return NSBundle::frameworkBundle()->localizedString(QString::fromUtf8(english), {}, QStringLiteral("dvd-player"));
}

QString reasonForNotOpening(OSStatus status, const QByteArray &path)
{
    switch (status) {
    case kDVDErrorInitializingLib:
        return playerText("another program plays a DVD at the moment");
    case kDVDErrorEncryptedMedia:
        return playerText("it is copy-protected: its contents are scrambled, and are not unscrambled here");
    case kDVDErrordRegionCodeUninitialized:
        return playerText("it is not for the region that the drive is set to");
    default:
        break;
    }
    const Result<DVDDescription> described = describeDVD(path, {});
    if (!described && !described.error().localizedFailureReason().isEmpty())
        return described.error().localizedFailureReason();
    switch (status) {
    case kDVDErrorNoValidMedia:
        return playerText("there is no video DVD");
    case kDVDErrorDamagedMedia:
        return playerText("it is damaged: its tables make no sense");
    default:
        return playerText("it cannot be read (%1)").arg(status);
    }
}

QString reasonForStopping(OSStatus status)
{
    switch (status) {
    case kDVDErrorDamagedMedia:
        return playerText("The disc is damaged, and cannot be played on");
    case kDVDErrorEncryptedMedia:
        return playerText("The disc is copy-protected: its contents are scrambled, and are not unscrambled here");
    default:
        return playerText("The disc cannot be played on (%1)").arg(status);
    }
}

QString shortTime(std::chrono::milliseconds time)
{
    constexpr qint64 millisecondsInSecond = 1000;
    const qint64 seconds = std::max<qint64>(time.count(), 0) / millisecondsInSecond;
    const QString minutesAndSeconds = QStringLiteral("%1:%2")
                                          .arg(seconds / 60 % 60, seconds < 3600 ? 1 : 2, 10, QLatin1Char('0'))
                                          .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return seconds < 3600 ? minutesAndSeconds : QStringLiteral("%1:").arg(seconds / 3600) + minutesAndSeconds;
}

QString audioStreamName(const DVDAudioStream &stream, int number)
{
    const QString language = languageName(stream.language);
    const QString form =
        QStringLiteral("%1 %2").arg(formatName(stream.format), channelsName(stream.channels)).trimmed();
    return joined(
        {language.isEmpty() ? playerText("Sound %1").arg(number) : language, form, purposeName(stream.purpose)});
}

QString subtitleStreamName(const DVDSubtitleStream &stream, int number)
{
    const QString language = languageName(stream.language);
    return joined(
        {language.isEmpty() ? playerText("Subtitles %1").arg(number) : language, purposeName(stream.purpose)});
}

} // namespace Tessaron
