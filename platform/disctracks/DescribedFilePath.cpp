#include "platform/disctracks/DescribedFilePath.h"

#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QString>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace Tessaron
{

namespace
{

/// What sounds are kept in under these names; a picture or a text beside a sound is not taken for it.
constexpr std::array soundEndings = {"wav",  "flac", "ape",  "wv",  "m4a", "mp4", "mp3", "ogg", "oga",
                                     "opus", "aif",  "aiff", "tta", "tak", "wma", "mpc", "mka", "aac",
                                     "ac3",  "dts",  "caf",  "w64", "au",  "shn", "wave"};

bool isThere(const QByteArray &path)
{
    struct stat status;
    return ::stat(path.constData(), &status) == 0;
}

bool isRegularFile(const QByteArray &path)
{
    struct stat status;
    return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
}

/// A name, and the folder in which it is looked for: with a slash at its end, or empty for where the program runs.
struct Place {
    QByteArray folder;
    QByteArray name;

    [[nodiscard]] QByteArray path() const { return folder + name; }

    friend bool operator==(const Place &, const Place &) = default;
};

QByteArray afterLast(const QByteArray &name, char separator)
{
    return name.sliced(name.lastIndexOf(separator) + 1);
}

/// All places where a description may mean the file to be, the one that it says first.
std::vector<Place> placesOf(const QByteArray &folder, const QByteArrayList &names)
{
    std::vector<Place> places;
    const auto add = [&](const QByteArray &inFolder, const QByteArray &name) {
        const Place place = {inFolder, name};
        if (!name.isEmpty() && std::ranges::count(places, place) == 0)
            places.push_back(place);
    };
    const auto addPath = [&](const QByteArray &path) {
        const QByteArray whole = path.startsWith('/') ? path : folder + path;
        const qsizetype nameAt = whole.lastIndexOf('/') + 1;
        add(whole.first(nameAt), whole.sliced(nameAt));
    };
    for (const QByteArray &name : names)
        addPath(name);
    for (QByteArray name : names) // folders as another system separates them
        addPath(name.replace('\\', '/'));
    for (const QByteArray &name : names)
        add(folder, afterLast(afterLast(name, '/'), '\\'));
    return places;
}

/// What is the same in any letter case, and however accents are put together.
QString folded(const QByteArray &name)
{
    return QString::fromUtf8(name).normalized(QString::NormalizationForm_C).toCaseFolded();
}

/// A name cut in front of its ending.
struct CutName {
    explicit CutName(const QByteArray &name)
        : stem(name.first(std::max<qsizetype>(name.lastIndexOf('.'), 0)))
        , ending(afterLast(name, '.').toLower())
    {
    }
    [[nodiscard]] bool isSound() const
    {
        return !stem.isEmpty() && std::ranges::any_of(soundEndings, [&](const char *one) { return ending == one; });
    }

    QByteArray stem; ///< empty for a name without an ending
    QByteArray ending; ///< in small letters
};

using IsAlike = bool (*)(const QByteArray &wanted, const QByteArray &name);

bool isSameInAnyCase(const QByteArray &wanted, const QByteArray &name)
{
    return folded(name) == folded(wanted);
}

bool isSameSound(const QByteArray &wanted, const QByteArray &name)
{
    const CutName cut(name);
    return cut.isSound() && cut.stem == CutName(wanted).stem;
}

bool isSameSoundInAnyCase(const QByteArray &wanted, const QByteArray &name)
{
    const CutName cut(name);
    return cut.isSound() && folded(cut.stem) == folded(CutName(wanted).stem);
}

/// The paths of the regular files in the place's folder that are alike, by name.
QByteArrayList filesAlike(const Place &place, IsAlike isAlike)
{
    QByteArrayList found;
    const QByteArray folder = place.folder.isEmpty() ? QByteArray(".") : place.folder;
    const DirectoryStream stream =
        directoryStream(UniqueDescriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    while (const dirent *const entry = stream ? ::readdir(stream.get()) : nullptr) {
        const QByteArray path = place.folder + entry->d_name;
        if (isAlike(place.name, entry->d_name) && isRegularFile(path))
            found << path;
    }
    std::ranges::sort(found);
    return found;
}

NSError moreThanOne(const QByteArrayList &found)
{
    QStringList names;
    for (const QByteArray &path : found)
        names << quoted(lastComponent(path));
    const QString last = names.takeLast();
    return NSError(
        NSOSStatusErrorDomain, fnfErr,
        {{NSLocalizedFailureReasonErrorKey,
          QStringLiteral("it is not there, and %1 or %2 could be meant").arg(names.join(QStringLiteral(", ")), last)},
         {NSLocalizedRecoverySuggestionErrorKey,
          QStringLiteral("Write the name of the right one into the description.")}});
}

} // namespace

Result<QByteArray> pathOfDescribedFile(const QByteArray &folder, const QByteArrayList &names, bool isSound)
{
    const std::vector<Place> places = placesOf(folder, names);
    for (const Place &place : places) {
        if (isThere(place.path()))
            return place.path();
    }
    std::vector<IsAlike> searches = {isSameInAnyCase};
    if (isSound)
        searches.insert(searches.end(), {isSameSound, isSameSoundInAnyCase});
    for (const IsAlike isAlike : searches) {
        for (const Place &place : places) {
            const QByteArrayList found = filesAlike(place, isAlike);
            if (found.size() > 1)
                return moreThanOne(found);
            if (!found.isEmpty())
                return found.front();
        }
    }
    return QByteArray();
}

QString noteOfOtherName(const CueFile &file)
{
    const QByteArray taken = lastComponent(file.path);
    const auto isTaken = [&](const QByteArray &name) {
        const QByteArray last = afterLast(name, '/');
        return last == taken || afterLast(last, '\\') == taken;
    };
    if (taken.isEmpty() || isTaken(file.name) || isTaken(file.nameAsWritten))
        return {};
    return QStringLiteral("%1 is not there; %2 was taken in its place.").arg(quoted(file.name), quoted(taken));
}

} // namespace Tessaron
