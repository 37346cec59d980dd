#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

#include <TessaronClassesUI/DVDController.h>
#include <memory>

class QMenu;
class QWidget;

namespace Tessaron
{

/// The windows of the interface file "dvdWin": a ControlWindow with the player's controls and menu bar, a VideoWindow
/// with the same menu items under the right mouse button. A control or menu item that does something names it in its
/// property "action"; a window that is shown as soon as it is loaded has the property "visibleAtLaunch". On the main
/// thread.
struct DVDWindowFile {
    /// Null, with a line in the log, when the file cannot be loaded or lacks one of the outlets.
    [[nodiscard]] static std::unique_ptr<DVDWindowFile> load();
    DVDWindowFile() = default;
    ~DVDWindowFile(); ///< the windows vanish at once, and end with the next turn of the event loop
    DVDWindowFile(const DVDWindowFile &) = delete;
    DVDWindowFile &operator=(const DVDWindowFile &) = delete;

    /// Tells the windows that everything is connected, and shows those that are to be seen at once.
    void awaken() const;

    DVDControllerOutlets outlets;
    QList<QPointer<QObject>> controls; ///< those that do something
    QList<QPointer<QMenu>> menus;
};

} // namespace Tessaron
