#pragma once

#include <QFrame>
#include <QStringList>

class QLabel;
class QPushButton;
class QToolButton;

namespace Tessaron::Desktop
{

/// Says what happened, in the window and until it is closed: a sentence, and a list behind a button.
class NoticeBar final : public QFrame
{
    Q_OBJECT

public:
    explicit NoticeBar(QWidget *parent = nullptr);

    /// Shows a sentence; with details, those behind the button.
    void tell(const QString &text, const QStringList &details = {});
    void clear();
    [[nodiscard]] QString text() const;
    [[nodiscard]] const QStringList &details() const { return m_details; }

private:
    void showDetails();

    QLabel *const m_label;
    QPushButton *const m_more;
    QToolButton *const m_close;
    QStringList m_details;
};

} // namespace Tessaron::Desktop
