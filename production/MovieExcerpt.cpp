#include "production/MovieExcerpt.h"

#include "imaging/ProcessFolder.h"
#include "platform/coreservices/FSRef.h"
#include "platform/coreservices/LaunchServices.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/PathBytes.h"

#include <cstdlib>
#include <filesystem>
#include <tuple>
#include <unistd.h>

namespace Tessaron
{

MovieExcerpt::~MovieExcerpt()
{
    std::error_code ignored;
    if (!m_folder.isEmpty())
        std::filesystem::remove_all(m_folder.toStdString(), ignored);
}

std::unique_ptr<MovieExcerpt> MovieExcerpt::ofFile(const QString &source)
{
    std::unique_ptr<MovieExcerpt> excerpt(new MovieExcerpt);
    if (source.isNull() || !excerpt->makeFolder())
        return nullptr;
    QByteArray path = fileSystemRepresentation(source);
    if (extensionOfName(lastPathComponent(path)).compare("bin", Qt::CaseInsensitive) == 0)
        path = excerpt->linkTo(path);
    excerpt->m_source = QTMovie::initWithAttributes(
        {{QTMovieFileNameAttribute, stringWithFileSystemRepresentation(path)}, {QTMovieOpenAsyncOKAttribute, false}});
    if (!excerpt->m_source || excerpt->duration().timeScale <= 0)
        return nullptr;
    return excerpt;
}

bool MovieExcerpt::makeFolder()
{
    const QByteArray parent = ProcessFolder::ofThisProcess().path();
    QByteArray name = parent + "/excerpt-XXXXXX";
    if (parent.isEmpty() || !::mkdtemp(name.data()))
        return false;
    m_folder = name;
    return true;
}

/// A hard link where one filesystem holds both, else a symbolic one.
QByteArray MovieExcerpt::linkTo(const QByteArray &source)
{
    QByteArray link = pathOf("tempWavFile.wav");
    if (::link(source.constData(), link.constData()) != 0)
        std::ignore = ::symlink(source.constData(), link.constData()); // without it, opening fails
    return link;
}

bool MovieExcerpt::write(std::int64_t start, std::int64_t length, const QByteArray &name)
{
    const std::shared_ptr<QTMovie> movie = QTMovie::newMovie();
    if (InsertMovieSegment(*m_source, *movie, start, length))
        return false;
    const QByteArray path = pathOf(name);
    Result<MovieStorageHandle> storage = CreateMovieStorage(path);
    if (!storage)
        return false;
    const NSError failure = AddMovieToStorage(*movie, **storage);
    if (CloseMovieStorage(*std::move(storage)) || failure)
        return false;
    m_path = stringWithFileSystemRepresentation(path);
    return true;
}

} // namespace Tessaron
