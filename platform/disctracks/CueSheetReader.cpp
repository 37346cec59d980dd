#include "platform/disctracks/CueSheetReader.h"

#include "platform/disctracks/CueSheetErrors.h"
#include "platform/disctracks/CueSheetPlacer.h"
#include "platform/disctracks/TextEncodings.h"

namespace Tessaron
{

namespace
{

QString nameOfEncoding(TextFileEncoding encoding)
{
    return encoding == TextFileEncoding::ShiftJis ? QStringLiteral("Shift-JIS") : QStringLiteral("Windows-1252");
}

} // namespace

Result<CueSheet> cueSheetOfText(const QByteArray &text, const CueSheetFiles &files)
{
    if (text.size() > maximumCueSheetSize)
        return cueSheetError(0, QStringLiteral("The file has %1 bytes; no cue sheet is so long.").arg(text.size()),
                             QStringLiteral("Choose a cue sheet."));
    CueSheet sheet;
    const DecodedText decoded = decodedText(text);
    if (decoded.encoding == TextFileEncoding::ShiftJis || decoded.encoding == TextFileEncoding::Windows1252)
        sheet.notes.push_back(
            {0, QStringLiteral("The sheet is not UTF-8 and was read as %1.").arg(nameOfEncoding(decoded.encoding))});
    CueSheetParser parser(&sheet, files, decoded.encoding == TextFileEncoding::Utf16 ? QByteArray() : text);
    NSError error = parser.parse(decoded.text);
    if (error)
        return error;
    parser.putTexts();
    error = CueSheetPlacer(&sheet, parser.tracks(), parser.fileLines(), files).place();
    return error ? Result<CueSheet>(error) : Result<CueSheet>(std::move(sheet));
}

} // namespace Tessaron
