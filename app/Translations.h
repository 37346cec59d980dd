#pragma once

class QCoreApplication;
class QLocale;

namespace Tessaron::Desktop
{

/// The program's own texts and those of the dialogs that come with Qt, in the language of the locale; in English for a
/// language that has no translation. Before the first window.
void installTranslations(QCoreApplication &application, const QLocale &locale);

} // namespace Tessaron::Desktop
