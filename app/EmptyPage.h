#pragma once

#include <QWidget>

namespace Tessaron::Desktop
{

/// What a view shows while nothing is open in it: what it is for, and a button that opens something.
class EmptyPage final : public QWidget
{
    Q_OBJECT

public:
    EmptyPage(const QString &title, const QString &text, const QString &buttonText, QWidget *parent = nullptr);

Q_SIGNALS:
    void pressed();
};

} // namespace Tessaron::Desktop
