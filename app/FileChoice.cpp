#include "app/FileChoice.h"

#include <QFileDialog>

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

QFileDialog *choosing(QWidget &parent, const QString &title, QStandardPaths::StandardLocation beginning,
                      const std::function<void(const QByteArray &path)> &whenChosen)
{
    auto *const dialog = new QFileDialog(&parent, title, QStandardPaths::writableLocation(beginning));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QFileDialog::fileSelected, &parent,
                     [whenChosen](const QString &path) { whenChosen(fileSystemRepresentation(path)); });
    return dialog;
}

} // namespace

void chooseFolder(QWidget &parent, const QString &title, QStandardPaths::StandardLocation beginning,
                  const std::function<void(const QByteArray &path)> &whenChosen)
{
    QFileDialog *const dialog = choosing(parent, title, beginning, whenChosen);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->open();
}

void chooseFile(QWidget &parent, const QString &title, QStandardPaths::StandardLocation beginning,
                const QStringList &nameFilters, const std::function<void(const QByteArray &path)> &whenChosen)
{
    QFileDialog *const dialog = choosing(parent, title, beginning, whenChosen);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilters(nameFilters);
    dialog->open();
}

} // namespace Tessaron::Desktop
