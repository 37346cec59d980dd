#pragma once

#include "platform/foundation/Export.h"

#include <QComboBox>
#include <QString>

namespace Tessaron
{

/// A pop-up button that shows a message where it has nothing to choose from, and only the title where it has one item.
/// On the main thread.
class TESSARON_EXPORT KRPopUpWithEmptyMessage : public QComboBox
{
    Q_OBJECT
    Q_PROPERTY(QString emptyMessage READ emptyMessage WRITE setEmptyMessage)

public:
    explicit KRPopUpWithEmptyMessage(QWidget *parent = nullptr);

    [[nodiscard]] QString emptyMessage() const { return m_emptyMessage; }
    void setEmptyMessage(const QString &message);

protected:
    /// Opens the menu only where there are two items or more.
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_emptyMessage;
};

} // namespace Tessaron
