#pragma once

#include <QByteArray>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace Tessaron::Desktop
{

// Questions for something that is there already. Each shows a dialog in front of the widget, whose child it is, and
// returns at once; the function gets the path (bytes) when one is chosen, and is not called otherwise.

void chooseFolder(QWidget &parent, const QString &title, QStandardPaths::StandardLocation beginning,
                  const std::function<void(const QByteArray &path)> &whenChosen);

/// `nameFilters` are those of QFileDialog.
void chooseFile(QWidget &parent, const QString &title, QStandardPaths::StandardLocation beginning,
                const QStringList &nameFilters, const std::function<void(const QByteArray &path)> &whenChosen);

} // namespace Tessaron::Desktop
