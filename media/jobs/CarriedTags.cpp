#include "media/jobs/CarriedTags.h"

#include "media/jobs/Id3Tag.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/CDSound.h"
#include "platform/quicktime/MovieDescription.h"

#include <memory>
#include <vector>

namespace Tessaron
{

namespace
{

/// Empty for a file without a cover. One that cannot be read is a note, and empty as well.
QByteArray coverOf(const QByteArray &source, QStringList *notes, const std::stop_token &stop)
{
    const Result<MovieDescription> movie = describeMovie(source, stop);
    if (movie && !movie->cover)
        return {};
    const Result<QByteArray> picture =
        movie ? pictureOfCover(source, *movie->cover, stop) : Result<QByteArray>(movie.error());
    if (picture)
        return *picture;
    *notes << QStringLiteral("the cover of %1 cannot be read: %2")
                  .arg(quoted(source), picture.error().localizedFailureReason());
    return {};
}

} // namespace

CarriedTags carriedTags(const QByteArray &source, SoundHelpers &helpers, const std::stop_token &stop)
{
    CarriedTags result;
    CDSoundOptions options;
    options.helpers = &helpers;
    const Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(source, stop, options);
    if (!sound) {
        result.notes << QStringLiteral("the tags of %1 cannot be read: %2")
                            .arg(quoted(source), sound.error().localizedFailureReason());
        return result;
    }
    std::vector<SoundText> texts;
    const QMap<QString, QString> tags = (*sound)->tags();
    for (auto tag = tags.begin(); tag != tags.end(); ++tag)
        texts.push_back({tag.key().toUtf8(), tag.value()});
    bool isCoverLeftOut = false;
    result.bytes = id3Tag(texts, coverOf(source, &result.notes, stop), &isCoverLeftOut);
    if (isCoverLeftOut)
        result.notes << QStringLiteral("the cover of %1 is not a picture that MP3 files can have").arg(quoted(source));
    return result;
}

} // namespace Tessaron
