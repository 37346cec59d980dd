#pragma once

#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"
#include <TessaronClasses/TessaronDiscImageFormat.h>

#include <QByteArray>
#include <QStringList>

#include <functional>

namespace Tessaron
{

/// Where the cue sheet of an image lies: beside it, with the extension "cue" in place of its own.
[[nodiscard]] QByteArray pathOfCueSheet(const QByteArray &imagePath);
/// Where the file of CD-TEXT that the sheet names lies: the same with the extension "cdt".
[[nodiscard]] QByteArray pathOfCDTextFile(const QByteArray &imagePath);

/// The table of an image of plain blocks of 2048 bytes: one track, as many blocks as `bytes` has whole ones.
[[nodiscard]] TableOfContents contentsOfPlainImage(std::uint64_t bytes);

/// True for what such an image holds: one track of blocks of 2048 bytes, without gaps, index points or flags. Its cue
/// sheet is the standard one.
[[nodiscard]] bool isOnePlainTrack(const TableOfContents &contents);

/// An image whose blocks are written, but nothing else. Descriptors stay the caller's.
struct UnfinishedImage {
    QByteArray path; ///< final; the cue sheet and errors name it
    int descriptor = -1; ///< open for writing
    int cueSheet = -1; ///< open for writing, empty; only for formats that have one
    /// Open for writing, empty; only where ImageFinisher::hasCDTextFile(). Without it the sheet says what it can.
    int cdTextFile = -1;
    int folder = -1; ///< that holds the final names, O_PATH is enough; -1 when nothing gets a name
    /// Gives the files their final names, all or none; 0 or an `errno` value. Empty when they have them already.
    std::function<int()> giveNames;
};

/// Makes an image file of the blocks of a disc: adds what the format needs besides (a cue sheet beside a BIN image, the
/// trailer behind a VANT image), gives the files their final names, and sees to it that files with a final name are on
/// the disk. Used by any one thread; waits for the disk.
///
/// Errors are of NSOSStatusErrorDomain, name the file and have a recovery suggestion. After one, nothing that is only
/// half made has a final name.
class ImageFinisher
{
public:
    /// `contents` describes the blocks. Its tracks must lie in the file as it says.
    ImageFinisher(TessaronDiscImageFormat format, TableOfContents contents);

    /// Whether each step waits until it is on the disk (fsync(2)): the files before they get their names, the folder
    /// after. It does unless told otherwise here. Without that, a crash can leave an incomplete file under the final
    /// name.
    void setWaitsForDisk(bool waits) { m_waitsForDisk = waits; }

    /// True when the format needs a cue sheet.
    [[nodiscard]] bool hasCueSheet() const;
    /// True when the cue sheet cannot say all of the CD-TEXT, so that a file beside it is needed.
    [[nodiscard]] bool hasCDTextFile() const;
    /// What the contents have that the format cannot say, in words; empty when all is said. The file of CD-TEXT is part
    /// of the format.
    [[nodiscard]] QStringList lost() const;

    /// Completes an image that was written elsewhere or into a stream. What the files hold after an error is of no use:
    /// the caller drops them, unless they have got their names already (the error then says that they are whole).
    [[nodiscard]] NSError finish(const UnfinishedImage &image) const;

    /// Completes an image that was written under its final name. When writing its cue sheet fails, no sheet is left;
    /// when writing its trailer fails, the image is left without a trailer.
    [[nodiscard]] NSError finishInPlace(const QByteArray &imagePath) const;

private:
    [[nodiscard]] NSError addTrailer(int descriptor, const QByteArray &imagePath) const;
    [[nodiscard]] Result<QByteArray> cdTextFor(const QByteArray &imagePath) const;
    [[nodiscard]] Result<QByteArray> cueSheetText(const QByteArray &imagePath, const QByteArray &cdTextFileName) const;
    [[nodiscard]] NSError writeCueSheet(int descriptor, const QByteArray &imagePath,
                                        const QByteArray &cdTextFileName = {}) const;
    [[nodiscard]] NSError writeSheetAndTexts(const UnfinishedImage &image) const;
    [[nodiscard]] NSError addCueSheetInPlace(const QByteArray &imagePath) const;
    [[nodiscard]] NSError addTrailerInPlace(const QByteArray &imagePath) const;
    [[nodiscard]] NSError sync(int descriptor, const QByteArray &path) const;
    [[nodiscard]] NSError syncFolder(int folder, int image, const QByteArray &imagePath) const;

    const TessaronDiscImageFormat m_format;
    const TableOfContents m_contents;
    bool m_waitsForDisk = true;
};

} // namespace Tessaron
