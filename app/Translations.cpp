#include "app/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace Tessaron::Desktop
{

void installTranslations(QCoreApplication &application, const QLocale &locale)
{
    const QString folder = QStringLiteral(":/i18n");
    const QString name = QStringLiteral("tessaron-desktop");
    // English has a file, too: the forms of "1 file" and "2 files" are in it. What comes last is asked first.
    auto *const english = new QTranslator(&application);
    if (english->load(name + QStringLiteral("_en"), folder))
        QCoreApplication::installTranslator(english);
    auto *const qtsOwn = new QTranslator(&application);
    if (qtsOwn->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                     QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(qtsOwn);
    auto *const own = new QTranslator(&application);
    if (own->load(locale, name, QStringLiteral("_"), folder))
        QCoreApplication::installTranslator(own);
}

} // namespace Tessaron::Desktop
