// A program with windows as a user of the installed package writes it.
#include <QApplication>
#include <QTreeView>

#include <TessaronClassesUI/ImageSavePanel.h>
#include <TessaronClassesUI/OutlineViewSelection.h>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    int format = -1;
    const auto panel = Tessaron::ImageSavePanel::savePanelWithExtensions(
        QStringList{QStringLiteral("iso")}, QStringList{QStringLiteral("ISO image")}, &format);
    const QTreeView view;
    return panel && format == 0 && !Tessaron::selectedItems(view) ? 0 : 1;
}
