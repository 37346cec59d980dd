#pragma once

#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QLocale>
#include <QString>

namespace Tessaron
{

// What people call languages. Thread-safe.

/// The language's own name for itself, without the country that Qt adds to some; empty for none.
[[nodiscard]] TESSARON_EXPORT QString ownNameOfLanguage(QLocale::Language language);

/// For people, by a code of ISO 639-1 such as "fr": in English for whom that is the language or none is set, else the
/// language's own name. Empty for a code that stands for no language.
[[nodiscard]] TESSARON_EXPORT QString languageName(const QByteArray &code);

} // namespace Tessaron
