#pragma once

#include "platform/foundation/Export.h"

#include <QHash>
#include <QMutex>
#include <QString>
#include <QStringList>

#include <memory>

namespace Tessaron
{

/// A folder of resources with text tables. On disk:
///
///     <bundle>/Resources/<language>.lproj/<table>.strings
///     <bundle>/Resources/<table>.strings  used when no language folder has the table
///
/// A table is UTF-8 text of entries in the form  "key" = "text";  with // and /* */ comments and the escapes
/// \" \\ \n \r \t and \Uxxxx. Tables are read on first use and kept. Thread-safe.
class TESSARON_EXPORT NSBundle
{
public:
    /// The application's own bundle: the folder set with setMainBundlePath(), else
    /// `<folder of the executable>/../share/<name of the executable>`. Never null; a missing folder is an empty bundle.
    [[nodiscard]] static std::shared_ptr<NSBundle> mainBundle();
    /// Names the folder of the main bundle. Call before its first use; a later call replaces it.
    static void setMainBundlePath(const QString &path);

    /// The bundle at a path, or null when there is no such folder. Paths below "/System/" are looked up below the
    /// folder given to setSystemRoot() when one was given.
    [[nodiscard]] static std::shared_ptr<NSBundle> bundleWithPath(const QString &path);
    /// Where paths below "/System/" really lie; empty (the default) means at the path itself.
    static void setSystemRoot(const QString &path);
    [[nodiscard]] static QString systemRoot();

    /// The bundle registered under an identifier, or null.
    [[nodiscard]] static std::shared_ptr<NSBundle> bundleWithIdentifier(const QString &identifier);
    static void registerBundle(const QString &identifier, const std::shared_ptr<NSBundle> &bundle);

    /// The framework's own bundle, identifier frameworkBundleIdentifier: compiled into the library. Never null.
    [[nodiscard]] static std::shared_ptr<NSBundle> frameworkBundle();

    [[nodiscard]] QString bundlePath() const { return m_path; }

    /// The path of a resource: `<bundle>/Resources/<name>`, with "." and the type behind it unless that is empty, in
    /// the folder of the first of the user's languages that has it, or beside these folders. With a type it may be a
    /// folder, too, as in "Helper.app". The main bundle and the framework's own also have what the library brings for
    /// every program: the helper programs in its private folder (`libexec/TessaronClasses` of the installation, or of
    /// the build). Empty when there is no such file.
    [[nodiscard]] QString pathForResource(const QString &name, const QString &type = {}) const;

    /// The text for `key` in `table` ("Localizable" when empty) in the first of the user's languages that has the
    /// table. A missing key or table yields `value`, or the key itself when `value` is empty.
    [[nodiscard]] QString localizedString(const QString &key, const QString &value = {},
                                          const QString &table = {}) const;

    /// The languages asked in turn, most wanted first, as in "de_AT", "de", "en". By default those of the system's
    /// locale.
    void setPreferredLanguages(const QStringList &languages);

private:
    explicit NSBundle(const QString &path);
    using Table = QHash<QString, QString>;
    [[nodiscard]] Table loadTable(const QString &name) const;
    [[nodiscard]] QStringList foldersOfResources() const;

    const QString m_path;
    mutable QMutex m_mutex; ///< guards the two members below
    mutable QHash<QString, Table> m_tables;
    QStringList m_languages;
};

/// Identifier of the framework's own bundle.
TESSARON_EXPORT extern const QString frameworkBundleIdentifier;

} // namespace Tessaron
