#pragma once

#include <QObject>

namespace Tessaron::Desktop
{

/// Opens the context menu of what has the keyboard by Shift+F10, as keyboards without a menu key need it: Qt does so
/// on some platforms only. To be installed as an event filter of the application.
class ContextMenuKey final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace Tessaron::Desktop
