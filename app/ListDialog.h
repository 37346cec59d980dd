#pragma once

#include <QDialog>

namespace Tessaron::Desktop
{

/// A sentence, and under it a list of what it speaks of, which can be copied.
class ListDialog final : public QDialog
{
    Q_OBJECT

public:
    ListDialog(const QString &text, const QStringList &lines, QWidget *parent = nullptr);
};

} // namespace Tessaron::Desktop
