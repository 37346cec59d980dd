#include "platform/coreservices/MimeGlobs.h"

#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <fnmatch.h>
#include <tuple>

namespace Tessaron
{

namespace
{

constexpr QByteArrayView noEarlierGlobs("__NOGLOBS__");

bool hasWildcard(QByteArrayView text)
{
    return text.contains('*') || text.contains('?') || text.contains('[');
}

bool isSuffixPattern(const QByteArray &pattern)
{
    return pattern.startsWith("*.") && !hasWildcard(QByteArrayView(pattern).sliced(1));
}

MimeGlobs readInstalledGlobs()
{
    MimeGlobs globs;
    QStringList paths = QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, QStringLiteral("mime/globs2"));
    std::reverse(paths.begin(), paths.end());
    for (const QString &path : paths) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            globs.addFile(file.readAll());
    }
    return globs;
}

} // namespace

const MimeGlobs &MimeGlobs::shared()
{
    static const auto *const globs = new MimeGlobs(readInstalledGlobs()); // never deleted: used until the very end
    return *globs;
}

void MimeGlobs::addFile(const QByteArray &text)
{
    std::vector<Glob> globs;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(':');
        if (line.startsWith('#') || fields.size() < 3 || fields[1].isEmpty() || fields[2].isEmpty())
            continue;
        if (fields[2] == noEarlierGlobs)
            removeType(fields[1]);
        else
            globs.push_back({fields[0].toInt(), fields.value(3).split(',').contains("cs"), fields[1], fields[2]});
    }
    for (Glob &glob : globs)
        add(std::move(glob));
}

void MimeGlobs::add(Glob glob)
{
    if (isSuffixPattern(glob.pattern))
        m_bySuffix[glob.pattern.mid(1).toLower()].push_back(std::move(glob));
    else if (!hasWildcard(glob.pattern))
        m_byName[glob.pattern.toLower()].push_back(std::move(glob));
    else
        m_others.push_back(std::move(glob));
}

void MimeGlobs::removeType(const QByteArray &type)
{
    const auto isOfType = [&type](const Glob &glob) { return glob.type == type; };
    for (Globs *const globs : {&m_bySuffix, &m_byName}) {
        for (std::vector<Glob> &sameKey : *globs)
            std::erase_if(sameKey, isOfType);
    }
    std::erase_if(m_others, isOfType);
}

void MimeGlobs::Best::consider(const Glob &other, bool isOtherExact)
{
    if (other.isCaseSensitive && !isOtherExact)
        return;
    const auto rank = [](const Glob &of, bool isOfExact) {
        return std::tuple(isOfExact, of.weight, of.pattern.size());
    };
    if (!glob || rank(other, isOtherExact) > rank(*glob, isExact)) {
        glob = &other;
        isExact = isOtherExact;
    }
}

void MimeGlobs::consider(const Globs &globs, const QByteArray &key, QByteArrayView tail, Best &best)
{
    const auto found = globs.constFind(key);
    if (found == globs.constEnd())
        return;
    for (const Glob &glob : *found)
        best.consider(glob, glob.pattern.endsWith(tail));
}

QByteArray MimeGlobs::typeOfName(QByteArrayView name) const
{
    Best best;
    const QByteArray whole = name.toByteArray();
    const QByteArray lower = whole.toLower();
    consider(m_byName, lower, name, best);
    for (qsizetype dot = lower.indexOf('.'); dot >= 0; dot = lower.indexOf('.', dot + 1))
        consider(m_bySuffix, lower.mid(dot), name.sliced(dot), best);
    for (const Glob &glob : m_others) {
        if (::fnmatch(glob.pattern.constData(), whole.constData(), FNM_CASEFOLD) == 0)
            best.consider(glob, ::fnmatch(glob.pattern.constData(), whole.constData(), 0) == 0);
    }
    return best.glob ? best.glob->type : QByteArray();
}

} // namespace Tessaron
