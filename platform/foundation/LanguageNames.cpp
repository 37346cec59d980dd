#include "platform/foundation/LanguageNames.h"

namespace Tessaron
{

QString ownNameOfLanguage(QLocale::Language language)
{
    switch (language) {
    case QLocale::Chinese:
        return QStringLiteral("中文");
    case QLocale::English:
        return QStringLiteral("English");
    case QLocale::Spanish:
        return QStringLiteral("español");
    default:
        return QLocale(language).nativeLanguageName();
    }
}

QString languageName(const QByteArray &code)
{
    const QLocale::Language language = QLocale::codeToLanguage(QString::fromLatin1(code));
    if (language == QLocale::AnyLanguage || language == QLocale::C)
        return {};
    const QLocale::Language users = QLocale().language();
    const QString own = ownNameOfLanguage(language);
    return users == QLocale::English || users == QLocale::C || own.isEmpty() ? QLocale::languageToString(language)
                                                                             : own;
}

} // namespace Tessaron
