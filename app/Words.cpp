#include "app/Words.h"

#include <TessaronClasses/SizeFormatting.h>

#include <QCoreApplication>
#include <QLocale>

#include <platform/discrecording/objects/DRFilesystems.h>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/NSError.h>

namespace Tessaron::Desktop
{

namespace
{

struct Words {
    Q_DECLARE_TR_FUNCTIONS(Words)
};

QString withCapital(const QString &sentence)
{
    return sentence.isEmpty() ? sentence : sentence.at(0).toUpper() + sentence.mid(1);
}

QString withFullStop(const QString &sentence)
{
    return sentence.isEmpty() || sentence.endsWith(u'.') ? sentence : sentence + u'.';
}

} // namespace

QString sizeText(std::uint64_t bytes)
{
    if (bytes < 1000)
        return Words::tr("%n bytes", nullptr, int(bytes));
    const unsigned long long value = bytes;
    QString text = sizeFormatForUnsignedLongLong(&value);
    const QString point = QLocale().decimalPoint();
    return text.replace(u'.', point);
}

QString durationText(std::chrono::seconds duration)
{
    const auto seconds = int(duration.count());
    constexpr int hour = 3600;
    if (seconds >= hour)
        return time(seconds);
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

QString phaseText(DiscJobPhase phase, bool isForDrive)
{
    switch (phase) {
    case DiscJobPhase::Preparing:
        return Words::tr("Preparing");
    case DiscJobPhase::Scanning:
        return Words::tr("Reading folders");
    case DiscJobPhase::Planning:
        return Words::tr("Laying out the disc");
    case DiscJobPhase::Measuring:
        return Words::tr("Measuring the loudness");
    case DiscJobPhase::Writing:
        return Words::tr("Writing");
    case DiscJobPhase::Comparing:
        return Words::tr("Comparing");
    case DiscJobPhase::Finishing:
        return isForDrive ? Words::tr("Ending the disc, which can take minutes") : Words::tr("Waiting for the disk");
    case DiscJobPhase::Done:
        return Words::tr("Done");
    }
    return {};
}

QString progressText(const DiscJobProgress &progress, bool isForDrive)
{
    QString text = phaseText(progress.phase, isForDrive);
    if (progress.bytesTotal == 0) {
        if (progress.files > 0)
            text += QStringLiteral(": ") + Words::tr("%n file(s)", nullptr, int(progress.files));
        return text;
    }
    text +=
        QStringLiteral(": ") + Words::tr("%1 of %2").arg(sizeText(progress.bytesDone), sizeText(progress.bytesTotal));
    if (progress.bytesPerSecond && *progress.bytesPerSecond >= 1)
        text += QStringLiteral(" · ") + Words::tr("%1/s").arg(sizeText(std::uint64_t(*progress.bytesPerSecond)));
    if (progress.remaining)
        text += QStringLiteral(" · ") + Words::tr("%1 left").arg(durationText(*progress.remaining));
    return text;
}

QString optionsText(const _TessaronAttributes &options)
{
    QStringList texts;
    if (options.invisible)
        texts << Words::tr("Hidden on the disc.");
    if (options.useBasicFSInclusion) {
        if (options.hasBasicFSInclusion && options.basicFSInclusion == 1)
            texts << Words::tr("Only for Macs: UDF and HFS+.");
        if (options.hasBasicFSInclusion && options.basicFSInclusion == 2)
            texts << Words::tr("Only for PCs: ISO 9660 and Joliet.");
        return texts.join(u'\n');
    }
    constexpr std::uint32_t allFilesystems = 15;
    if (!options.hasAdvancedFSInclusion || options.advancedFSInclusion == 0
        || options.advancedFSInclusion == allFilesystems)
        return texts.join(u'\n');
    QStringList names;
    if (options.advancedFSInclusion & DRFilesystemInclusionMaskISO9660)
        names << QStringLiteral("ISO 9660");
    if (options.advancedFSInclusion & DRFilesystemInclusionMaskJoliet)
        names << QStringLiteral("Joliet");
    if (options.advancedFSInclusion & DRFilesystemInclusionMaskUDF)
        names << QStringLiteral("UDF");
    if (options.advancedFSInclusion & DRFilesystemInclusionMaskHFSPlus)
        names << QStringLiteral("HFS+");
    texts << Words::tr("Only in %1.").arg(names.join(QStringLiteral(", ")));
    return texts.join(u'\n');
}

QString errorText(const NSError &error)
{
    const QString text = withFullStop(withCapital(displayableText(error.localizedDescription())));
    const QString advice = withFullStop(displayableText(error.localizedRecoverySuggestion()));
    return advice.isEmpty() ? text : text + u' ' + advice;
}

QString untitledDiscName()
{
    return Words::tr("untitled disc");
}

QString untitledFolderName()
{
    return Words::tr("untitled folder");
}

QString fileNameFor(const QString &name)
{
    QString result = name.trimmed();
    result.replace(u'/', u'-');
    while (result.startsWith(u'.'))
        result.remove(0, 1);
    return result.isEmpty() ? Words::tr("disc") : result;
}

} // namespace Tessaron::Desktop
