#include "platform/disctracks/CdrdaoTocReader.h"

#include "platform/disctracks/CdrdaoTocParser.h"
#include "platform/disctracks/CueSheetErrors.h"
#include "platform/disctracks/DescribedFiles.h"
#include "platform/disctracks/TextEncodings.h"

namespace Tessaron
{

Result<CueSheet> cdrdaoTocOfText(const QByteArray &text, const CueSheetFiles &files)
{
    if (text.size() > maximumCueSheetSize)
        return cdrdaoError(0, QStringLiteral("The file has %1 bytes; no .toc file is so long.").arg(text.size()),
                           QStringLiteral("Choose a .toc file of cdrdao."));
    QString decoded = decodedText(text).text;
    decoded.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    CueSheet sheet;
    NSError error = CdrdaoTocParser(&sheet, files, cdrdaoWords(decoded)).parse();
    if (const NSError wrong = error ? NSError() : sheet.contents.check())
        error = cdrdaoError(0, wrong.localizedFailureReason(), QStringLiteral("Correct the lengths of that track."));
    return error ? Result<CueSheet>(error) : Result<CueSheet>(std::move(sheet));
}

Result<CueSheet> cdrdaoTocOfFile(const QByteArray &path, const SoundMeasure &otherSounds)
{
    const Result<QByteArray> text = textOfDescription(path);
    return text ? cdrdaoTocOfText(*text, filesBeside(path, otherSounds)) : Result<CueSheet>(text.error());
}

} // namespace Tessaron
