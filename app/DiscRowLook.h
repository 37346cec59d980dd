#pragma once

#include "app/DiscNode.h"

#include <QCoreApplication>
#include <QHash>
#include <QIcon>
#include <QString>

#include <cstdint>

namespace Tessaron::Desktop
{

/// What filesystems of the disc make of an object.
struct DiscMark {
    enum class Severity : std::uint8_t {
        Told, ///< known, and no reason to look twice
        Changed, ///< another name, or something of it is not as it was
        Lost, ///< no filesystem holds it as it stands
    };
    QString text; ///< a line for each filesystem
    Severity severity = Severity::Told;
};
using DiscMarks = QHash<const DiscNode *, DiscMark>;

/// The words and pictures of a row of the disc's tree. Never touches the disk. On the main thread.
class DiscRowLook
{
    Q_DECLARE_TR_FUNCTIONS(DiscRowLook)

public:
    DiscRowLook();

    [[nodiscard]] QString kindText(const DiscNode &node) const;
    [[nodiscard]] QIcon icon(const DiscNode &node, DiscMark::Severity severity) const;
    [[nodiscard]] QString toolTip(const DiscNode &node, const QString &markText) const;

private:
    // Looked up once for each extension; asking for a type by a name costs microseconds, a frame shows hundreds.
    struct TypeOfFile {
        QString text;
        QIcon icon;
    };
    [[nodiscard]] const TypeOfFile &typeOf(const DiscNode &node) const;

    mutable QHash<QString, TypeOfFile> m_types;
    QIcon m_folderIcon;
    QIcon m_warningIcon;
    QIcon m_changedIcon;
};

} // namespace Tessaron::Desktop
