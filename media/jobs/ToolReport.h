#pragma once

#include <TessaronClasses/KRAudioConverter.h>

#include <QString>
#include <QStringList>

namespace Tessaron
{

/// What the programs that have converted a file say of it.
struct ToolReport {
    QString failure; ///< why there is no result, as a clause; empty when all went well
    bool isDamaged = false; ///< something in the source is broken, and silence stands for it
    QStringList damage; ///< where and what, a place each
};

/// How the programs of the last file of a converter have ended, which the converter passes over without a word.
[[nodiscard]] ToolReport reportOfTools(const KRAudioConverter &converter);

} // namespace Tessaron
