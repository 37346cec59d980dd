#include "platform/foundation/NSBundle.h"

#include "platform/foundation/StringsTable.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <dlfcn.h>

// Linked statically, a compiled-in resource must be asked for by name, and outside of any namespace.
static void registerCompiledInBundle()
{
    Q_INIT_RESOURCE(TessaronClasses);
}

namespace Tessaron
{

const QString frameworkBundleIdentifier = QStringLiteral("org.tessaron.TessaronClasses");

namespace
{

/// Where the library carries its own bundle.
const QString compiledInBundlePath = QStringLiteral(":/TessaronClasses.bundle");

/// What is known of bundles in this process.
struct Registry {
    QMutex mutex; ///< guards the members below
    QString mainBundlePath;
    QString systemRoot;
    std::shared_ptr<NSBundle> mainBundle;
    QHash<QString, std::shared_ptr<NSBundle>> byIdentifier;
};

Registry &registry()
{
    static Registry instance;
    return instance;
}

QString defaultMainBundlePath()
{
    const QFileInfo executable(QCoreApplication::applicationFilePath());
    return QDir(executable.absolutePath()).absoluteFilePath(QStringLiteral("../share/") + executable.fileName());
}

/// Where the library's helper programs lie: found from the library itself, so that an installation can be moved.
QStringList foldersOfHelperPrograms()
{
    Dl_info self;
    if (::dladdr(reinterpret_cast<const void *>(&compiledInBundlePath), &self) == 0 || !self.dli_fname)
        return {};
    QFileInfo library(QFile::decodeName(self.dli_fname));
    if (library.isRelative()) // Linked into the program, which knows only what it was called by.
        library.setFile(QCoreApplication::applicationFilePath());
    // The loader may have come to the library through a link: /lib is one to /usr/lib on Debian.
    QStringList folders;
    for (const QString &home : {library.canonicalPath(), library.absolutePath()}) {
        if (home.isEmpty()) // The library is gone.
            continue;
        // The last one is that of a helper program that the library is linked into.
        for (const char *way : {TESSARON_WAY_TO_HELPER_PROGRAMS, "../libexec/TessaronClasses", "../TessaronClasses"})
            folders << QDir::cleanPath(QDir(home).absoluteFilePath(QString::fromUtf8(way))) + u'/';
    }
    folders.removeDuplicates();
    return folders;
}

/// "de-AT" also asks for "de_AT" and "de": locale names come in both spellings.
QStringList folderNamesOfLanguages(const QStringList &languages)
{
    QStringList names;
    for (QString language : languages) {
        language.replace(u'-', u'_');
        names << language;
        if (const qsizetype region = language.indexOf(u'_'); region > 0)
            names << language.left(region);
    }
    names.removeDuplicates();
    return names;
}

} // namespace

NSBundle::NSBundle(const QString &path)
    : m_path(path)
    , m_languages(folderNamesOfLanguages(QLocale::system().uiLanguages()))
{
}

std::shared_ptr<NSBundle> NSBundle::mainBundle()
{
    Registry &known = registry();
    const QMutexLocker lock(&known.mutex);
    if (!known.mainBundle) {
        const QString path = known.mainBundlePath.isEmpty() ? defaultMainBundlePath() : known.mainBundlePath;
        known.mainBundle.reset(new NSBundle(path));
    }
    return known.mainBundle;
}

void NSBundle::setMainBundlePath(const QString &path)
{
    Registry &known = registry();
    const QMutexLocker lock(&known.mutex);
    known.mainBundlePath = path;
    known.mainBundle.reset();
}

std::shared_ptr<NSBundle> NSBundle::bundleWithPath(const QString &path)
{
    QString realPath = path;
    {
        Registry &known = registry();
        const QMutexLocker lock(&known.mutex);
        if (!known.systemRoot.isEmpty() && path.startsWith(u"/System/"))
            realPath = known.systemRoot + path;
    }
    if (!QFileInfo(realPath).isDir())
        return nullptr;
    return std::shared_ptr<NSBundle>(new NSBundle(realPath));
}

void NSBundle::setSystemRoot(const QString &path)
{
    Registry &known = registry();
    const QMutexLocker lock(&known.mutex);
    known.systemRoot = path;
}

QString NSBundle::systemRoot()
{
    Registry &known = registry();
    const QMutexLocker lock(&known.mutex);
    return known.systemRoot;
}

std::shared_ptr<NSBundle> NSBundle::bundleWithIdentifier(const QString &identifier)
{
    if (identifier == frameworkBundleIdentifier)
        return frameworkBundle();
    Registry &known = registry();
    const QMutexLocker lock(&known.mutex);
    return known.byIdentifier.value(identifier);
}

void NSBundle::registerBundle(const QString &identifier, const std::shared_ptr<NSBundle> &bundle)
{
    Registry &known = registry();
    const QMutexLocker lock(&known.mutex);
    known.byIdentifier.insert(identifier, bundle);
}

std::shared_ptr<NSBundle> NSBundle::frameworkBundle()
{
    Registry &known = registry();
    const QMutexLocker lock(&known.mutex);
    std::shared_ptr<NSBundle> &bundle = known.byIdentifier[frameworkBundleIdentifier];
    if (!bundle) {
        registerCompiledInBundle();
        bundle.reset(new NSBundle(compiledInBundlePath));
    }
    return bundle;
}

void NSBundle::setPreferredLanguages(const QStringList &languages)
{
    const QMutexLocker lock(&m_mutex);
    m_languages = folderNamesOfLanguages(languages);
    m_tables.clear();
}

QStringList NSBundle::foldersOfResources() const
{
    QStringList folders;
    // Without a resource in any of the user's languages, the one in the language of the sources serves.
    for (const QString &language : m_languages + QStringList{QStringLiteral("en")})
        folders << QStringLiteral("%1/Resources/%2.lproj/").arg(m_path, language);
    folders << m_path + QStringLiteral("/Resources/");
    return folders;
}

QString NSBundle::pathForResource(const QString &name, const QString &type) const
{
    const QString fileName = type.isEmpty() ? name : name + u'.' + type;
    QStringList folders;
    {
        const QMutexLocker lock(&m_mutex);
        folders = foldersOfResources();
    }
    if (this == mainBundle().get() || this == frameworkBundle().get())
        folders << foldersOfHelperPrograms();
    for (const QString &folder : std::as_const(folders)) {
        const QFileInfo file(folder + fileName);
        if (!name.isEmpty() && (file.isFile() || (file.isDir() && !type.isEmpty())))
            return file.absoluteFilePath();
    }
    return {};
}

NSBundle::Table NSBundle::loadTable(const QString &name) const
{
    const QStringList folders = foldersOfResources();
    for (const QString &folder : folders) {
        QFile file(folder + name + QStringLiteral(".strings"));
        if (file.open(QIODevice::ReadOnly))
            return parseStringsTable(file.readAll());
    }
    return {};
}

QString NSBundle::localizedString(const QString &key, const QString &value, const QString &table) const
{
    const QString name = table.isEmpty() ? QStringLiteral("Localizable") : table;
    const QMutexLocker lock(&m_mutex);
    auto found = m_tables.constFind(name);
    if (found == m_tables.constEnd())
        found = m_tables.insert(name, loadTable(name));
    const auto text = found->constFind(key);
    if (text != found->constEnd())
        return *text;
    return value.isEmpty() ? key : value;
}

} // namespace Tessaron
