#pragma once

#include <TessaronClasses/KRAudioConverter.h>

#include <QByteArray>
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

/// The paths of a conversion.
struct ToolPaths {
    QByteArray source; ///< as the programs were given it
    QByteArray destination; ///< the same
    QByteArray result; ///< where the destination goes when it is whole
};

/// How the programs of the last file of a converter have ended, which the converter passes over without a word. What
/// they say is told without the path of the source, and without that of the destination, which people do not know.
[[nodiscard]] ToolReport reportOfTools(const KRAudioConverter &converter, const ToolPaths &paths);

} // namespace Tessaron
