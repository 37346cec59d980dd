#include "dvd/player/ResumeStore.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace Tessaron
{

namespace
{

/// More than any bookmark has.
constexpr qint64 longestBookmark = 64 << 10;

QString folderOfState()
{
    // A relative path is to be passed over, says the XDG Base Directory Specification.
    const QString named = QFile::decodeName(qgetenv("XDG_STATE_HOME"));
    const QString folder = QDir::isAbsolutePath(named) ? named : QDir::homePath() + QStringLiteral("/.local/state");
    return folder + QStringLiteral("/tessaron/dvd/");
}

} // namespace

ResumeStore::ResumeStore()
    : ResumeStore(folderOfState())
{
}

ResumeStore::ResumeStore(QString folder)
    : m_folder(std::move(folder))
{
}

QString ResumeStore::pathOf(const QByteArray &identity) const
{
    return m_folder + QString::fromLatin1(identity.toHex());
}

QByteArray ResumeStore::bookmarkOf(const QByteArray &identity) const
{
    QFile file(pathOf(identity));
    return file.open(QIODevice::ReadOnly) ? file.read(longestBookmark) : QByteArray();
}

bool ResumeStore::keep(const QByteArray &identity, const QByteArray &bookmark) const
{
    constexpr QFileDevice::Permissions ownersOnly =
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
    if (const QDir folder(m_folder); !folder.exists()
        && (!QDir().mkpath(QDir::cleanPath(m_folder + QStringLiteral("/.."))) || !QDir().mkdir(m_folder, ownersOnly)))
        return false;
    QSaveFile file(pathOf(identity));
    return file.open(QIODevice::WriteOnly) && file.write(bookmark) == bookmark.size() && file.commit();
}

void ResumeStore::forget(const QByteArray &identity) const
{
    QFile::remove(pathOf(identity));
}

} // namespace Tessaron
